// The options of veltor measure: their help and their values.

#include "MeasureOptions.h"

#include "Command.h"
#include "TerminalText.h"
#include "Text.h"

#include <array>

namespace veltor::tool {
namespace {

using core::CalcMode;
using json::EndOfLine;
using json::JsonFormatter;

constexpr std::array units{
    Named<Unit>{"m", {"m", "m²", 1, 1}},
    Named<Unit>{"km", {"km", "km²", 1e3, 1e6}},
    Named<Unit>{"ha", {"m", "ha", 1, 1e4}},
    Named<Unit>{"mi", {"mi", "mi²", 1609.344, 1609.344 * 1609.344}},
    Named<Unit>{"nmi", {"nmi", "nmi²", 1852, 1852.0 * 1852.0}},
    Named<Unit>{"ft", {"ft", "ft²", 0.3048, 0.3048 * 0.3048}},
};
constexpr std::array formats{
    Named<OutputFormat>{"table", OutputFormat::Table},
    Named<OutputFormat>{"csv", OutputFormat::Csv},
    Named<OutputFormat>{"json", OutputFormat::Json},
    Named<OutputFormat>{"geojson", OutputFormat::GeoJson},
};
constexpr std::array edges{
    Named<Edges>{"geodesic", Edges::Geodesic},
    Named<Edges>{"straight", Edges::Straight},
};
constexpr std::array sortKeys{
    Named<SortKey>{"name", SortKey::Name},
    Named<SortKey>{"area", SortKey::Area},
    Named<SortKey>{"perimeter", SortKey::Perimeter},
    Named<SortKey>{"length", SortKey::Length},
};
constexpr std::array lineEnds{
    Named<EndOfLine>{"lf", EndOfLine::Lf},
    Named<EndOfLine>{"crlf", EndOfLine::CrLf},
    Named<EndOfLine>{"cr", EndOfLine::Cr},
};

const json::Format* layoutOf(const Arguments& arguments, const json::Format* preset)
{
    // Built at run time: on Windows the address of another library's object is no constant.
    const std::array layouts{
        Named<const json::Format*>{"compact", &JsonFormatter::formatCompact},
        Named<const json::Format*>{"squeeze", &JsonFormatter::formatSqueeze},
        Named<const json::Format*>{"indented", &JsonFormatter::formatIndented},
        Named<const json::Format*>{"unindented", &JsonFormatter::formatUnindented},
        Named<const json::Format*>{"brackets-indented", &JsonFormatter::formatBracketsIndented},
        Named<const json::Format*>{"comma-first", &JsonFormatter::formatCommaFirst},
        Named<const json::Format*>{"delimited", &JsonFormatter::formatDelimited},
    };
    return arguments.choice("layout", layouts, preset);
}

/// The mode that a word of the user names; nothing and "auto" are the ellipsoid.
CalcMode modeOf(const QString& word)
{
    const CalcMode mode = core::findCalcMode(word);
    if (mode == CalcMode::Invalid) {
        Arguments::refuse("mode",
                          {QStringLiteral("cartesian"), QStringLiteral("spherical"),
                           QStringLiteral("ellipsoidal"), QStringLiteral("auto"), QStringLiteral("''"),
                           QStringLiteral("sphere"), QStringLiteral("ellipsoid"), QStringLiteral("default"),
                           QStringLiteral("ellipse"), QStringLiteral("plane")},
                          word);
    }
    return mode == CalcMode::Auto ? CalcMode::Ellipsoidal : mode;
}

void setSurface(const Arguments& arguments, MeasureOptions& options)
{
    options.mode = modeOf(arguments.value("mode"));
    if (options.mode == CalcMode::Cartesian) {
        for (const char* name : {"edges", "ellipsoid", "unit"}) {
            if (arguments.isSet(name)) {
                throw UsageError(Text::tr("--%1 не имеет смысла на плоскости").arg(QLatin1String(name)));
            }
        }
    }
    options.edges = arguments.choice("edges", edges, options.edges);
    if (arguments.isSet("ellipsoid")) {
        options.ellipsoid = parseEllipsoid(arguments.value("ellipsoid"));
    } else if (options.mode == CalcMode::Spherical) {
        options.ellipsoid.a = 6370997; // the library's sphere
    }
    if (options.mode == CalcMode::Spherical) {
        options.ellipsoid.rf = std::numeric_limits<double>::infinity();
    }
}

} // namespace

void addMeasureOptions(Arguments& arguments)
{
    const QString word = Text::tr("СЛОВО");
    arguments.addOption("mode", word,
                        Text::tr("поверхность: cartesian, plane; spherical, sphere; ellipsoidal, ellipsoid, "
                                 "ellipse; auto, default и '' — эллипсоид"));
    arguments.addOption(
        "edges", word,
        Text::tr("что соединяет точки: geodesic — кратчайшие линии (так и без ключа), straight "
                 "— прямые по долготе и широте, как в RFC 7946"));
    arguments.addOption("ellipsoid", QStringLiteral("A,RF"),
                        Text::tr("большая полуось и обратное сжатие (0 — сфера); без ключа WGS 84, для сферы "
                                 "радиус 6370997"));
    arguments.addOption("name", Text::tr("СВОЙСТВО"),
                        Text::tr("свойство с именем объекта; без ключа name или NAME; иначе id или номер"));
    arguments.addOption("largest", QStringLiteral("N"),
                        Text::tr("N объектов наибольшей площади, затем длины, в этом порядке"));
    arguments.addOption("sort", word, Text::tr("порядок: name, area, perimeter, length; числа по убыванию"));
    arguments.addOption("format", word, Text::tr("вид вывода: table (так и без ключа), csv, json, geojson"));
    arguments.addOption(
        "unit", word,
        Text::tr("единица: m, km, ha (длины в m), mi, nmi, ft; без ключа m, в таблице больших "
                 "объектов km"));
    arguments.addOption("precision", QStringLiteral("N"),
                        Text::tr("знаков после точки; без ключа в таблице 3, иначе все"));
    arguments.addFlag("json", Text::tr("то же, что --format json"));
    arguments.addOption("layout", word,
                        Text::tr("вид текста JSON: compact, squeeze, indented (так и без ключа), unindented, "
                                 "brackets-indented, comma-first, delimited; включает --json"));
    arguments.addOption("eol", word,
                        Text::tr("концы строк JSON и CSV: lf, crlf, cr; без ключа lf, в CSV crlf; включает "
                                 "--json, если нет --format"));
    arguments.addOption("report", Text::tr("ФАЙЛ.html"),
                        Text::tr("куда записать страницу о том, что не измерено и почему"));
    arguments.addOption(
        "trace", Text::tr("ФАЙЛ"),
        Text::tr("куда записать, когда какой поток что делал: события для просмотра в браузере"));
}

MeasureOptions measureOptions(const Arguments& arguments)
{
    MeasureOptions options;
    setSurface(arguments, options);
    options.layout = layoutOf(arguments, options.layout);
    const bool isJson = arguments.isSet("json") || arguments.isSet("layout") || arguments.isSet("eol");
    options.format = arguments.choice("format", formats, isJson ? OutputFormat::Json : OutputFormat::Table);
    if (options.format != OutputFormat::Json && (arguments.isSet("json") || arguments.isSet("layout"))) {
        throw UsageError(
            Text::tr("--json и --layout не сочетаются с --format %1").arg(arguments.value("format")));
    }
    if (arguments.isSet("eol")) {
        options.endOfLine = arguments.choice("eol", lineEnds, EndOfLine::Lf);
    }
    if (arguments.isSet("unit")) {
        options.unit = arguments.choice("unit", units, units[0].value);
    }
    options.precision = arguments.number("precision", options.precision, 0, 17);
    options.largest = arguments.number("largest", 0, 1, 1000000000);
    options.sort = arguments.choice("sort", sortKeys, options.sort);
    options.nameProperty = arguments.value("name");
    return options;
}

} // namespace veltor::tool
