// veltor distance: pairs of positions measured by every formula.

#include "Arguments.h"
#include "Command.h"
#include "Coordinates.h"
#include "Ellipsoid.h"
#include "Records.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/Distance.h>

#include <array>
#include <cmath>

namespace veltor::tool {
namespace {

enum Formula : unsigned
{
    Cartesian,
    Spherical,
    Geodesic,
    Vincenty,
    Lambert,
    Azimuth,
    FormulaCount
};

constexpr std::array<std::string_view, FormulaCount> names{"cartesian", "spherical", "ellipsoid",
                                                           "vincenty",  "lambert",   "azimuth"};

struct Pair
{
    QPointF from, to;
};

class Measurer
{
public:
    Measurer(std::vector<Formula> formulas, const Ellipsoid& ellipsoid)
        : m_formulas(std::move(formulas))
        , m_ellipsoid(ellipsoid)
    {}

    void measure(const Pair& pair)
    {
        fields.clear();
        doubtful.clear();
        double distance = NAN;
        double azimuth = NAN;
        for (const Formula formula : m_formulas) {
            if ((formula == Geodesic || formula == Azimuth) && std::isnan(distance)) {
                std::tie(distance, azimuth) =
                    utils::backGeodesicProblem(pair.from, pair.to, m_ellipsoid.a, m_ellipsoid.rf);
            }
            const bool isAngle = formula == Cartesian || formula == Azimuth;
            const double value = formula == Geodesic  ? distance
                                 : formula == Azimuth ? azimuth
                                                      : by(formula, pair);
            fields.push_back({names[formula], value, isAngle ? 9 : 4});
        }
        findDoubtful(pair, distance);
    }

    std::vector<Field> fields;
    std::vector<std::string_view> doubtful;

private:
    [[nodiscard]] double by(Formula formula, const Pair& pair) const
    {
        const auto& [from, to] = pair;
        switch (formula) {
        case Cartesian:
            return utils::cartesianDistance(from, to);
        case Spherical:
            return utils::sphericalDistance(from, to);
        case Vincenty:
            return utils::vincentyDistance(from, to, m_ellipsoid.a, m_ellipsoid.rf);
        default:
            return utils::lambertDistance(from, to, m_ellipsoid.a, m_ellipsoid.rf);
        }
    }

    /// Near the antipode some formulas are tens of kilometres off, which only the geodesic tells.
    void findDoubtful(const Pair& pair, double distance)
    {
        constexpr double farAway = 15e6; // metres on the library's sphere
        constexpr double far = 100;      // metres between a formula and the geodesic
        if (!(utils::sphericalDistance(pair.from, pair.to) > farAway)) {
            return;
        }
        if (std::isnan(distance)) {
            distance = utils::ellipsoidDistance(pair.from, pair.to, m_ellipsoid.a, m_ellipsoid.rf);
        }
        for (const Field& field : fields) {
            const bool isMarked = field.name == names[Vincenty] || field.name == names[Lambert];
            if (isMarked && !(std::fabs(field.value - distance) <= far)) {
                doubtful.push_back(field.name);
            }
        }
    }

    std::vector<Formula> m_formulas;
    Ellipsoid m_ellipsoid;
};

std::vector<Formula> parseFormulas(const QString& text)
{
    std::vector<Formula> formulas;
    const QStringList words = text.split(QLatin1Char(','));
    for (const QString& word : words) {
        const auto name = std::find(names.begin(), names.end(), word.toStdString());
        if (name == names.end()) {
            QStringList choices;
            for (const std::string_view choice : names) {
                choices << QString::fromLatin1(choice.data(), static_cast<int>(choice.size()));
            }
            Arguments::refuse("formula", choices, word);
        }
        formulas.push_back(static_cast<Formula>(name - names.begin()));
    }
    return formulas;
}

std::optional<Pair> parsePair(const std::vector<std::string_view>& words)
{
    if (words.size() != 4) {
        return std::nullopt;
    }
    const std::optional<QPointF> from = parsePosition(words[0], words[1]);
    const std::optional<QPointF> to = parsePosition(words[2], words[3]);
    return from && to ? std::optional(Pair{*from, *to}) : std::nullopt;
}

int measureLines(Measurer& measurer, Records& records, bool goesOn)
{
    std::string line;
    std::vector<std::string_view> words;
    qint64 doubtfulLines = 0;
    qint64 firstDoubtful = 0;
    int code = Done;
    for (qint64 number = 1; readLine(line); ++number) {
        splitWords(line, words);
        if (words.empty()) {
            continue;
        }
        const std::optional<Pair> pair = parsePair(words);
        if (!pair) {
            constexpr std::size_t shownBytes = 200;
            const QString shown = shownLine(QString::fromStdString(line.substr(0, shownBytes)).trimmed());
            printError(Text::tr("veltor: строка %1: ожидаются LON1 LAT1 LON2 LAT2 в градусах: %2")
                           .arg(number)
                           .arg(shown));
            code = Failed;
            if (!goesOn) {
                return code;
            }
            continue;
        }
        measurer.measure(*pair);
        records.add(measurer.fields, measurer.doubtful);
        if (!measurer.doubtful.empty() && ++doubtfulLines == 1) {
            firstDoubtful = number;
        }
    }
    if (doubtfulLines > 0) {
        printError(Text::tr("veltor: строка %1: рядом с антиподом vincenty и lambert расходятся с ellipsoid "
                            "больше чем на 100 м (всего таких строк: %2)")
                       .arg(firstDoubtful)
                       .arg(doubtfulLines));
    }
    return code;
}

void declareOptions(Arguments& arguments)
{
    arguments.addOption("ellipsoid", QStringLiteral("A,RF"),
                        Text::tr("большая полуось и обратное сжатие (0 — сфера); без ключа WGS 84"));
    arguments.addOption(
        "formula", Text::tr("СПИСОК"),
        Text::tr("через запятую: cartesian, spherical, ellipsoid, vincenty, lambert, azimuth; "
                 "без ключа все"));
    arguments.addOption("format", Text::tr("СЛОВО"),
                        Text::tr("вид вывода: text (так и без ключа), csv, json"));
    arguments.addFlag("json", Text::tr("то же, что --format json: объект в строке, числа со всеми знаками"));
    arguments.addFlag("header", Text::tr("перед строками — строка с названиями столбцов"));
    arguments.addFlag("continue", Text::tr("о неверной строке сообщить и читать дальше; код завершения 1"));
}

} // namespace

int runDistance(const QStringList& words)
{
    Arguments arguments(QStringLiteral("distance"), {Text::tr("[LON1 LAT1 LON2 LAT2] [КЛЮЧИ...]")},
                        Text::tr("Расстояния между двумя точками в градусах по всем формулам, в метрах "
                                 "(cartesian — в градусах), и азимут в первой точке. Без координат читает со "
                                 "стандартного ввода по паре в строке, через пробелы или запятые, и печатает "
                                 "по строке на пару. Годятся и градусы, минуты и секунды: 37°37'4.8\""));
    declareOptions(arguments);
    if (!arguments.parse(words)) {
        return Done;
    }
    constexpr std::array formats{Named<RecordFormat>{"text", RecordFormat::Text},
                                 Named<RecordFormat>{"csv", RecordFormat::Csv},
                                 Named<RecordFormat>{"json", RecordFormat::Json}};
    const RecordFormat format = arguments.choice(
        "format", formats, arguments.isSet("json") ? RecordFormat::Json : RecordFormat::Text);
    const std::vector<Formula> formulas =
        parseFormulas(arguments.isSet("formula")
                          ? arguments.value("formula")
                          : QStringLiteral("cartesian,spherical,ellipsoid,vincenty,lambert,azimuth"));
    const Ellipsoid ellipsoid =
        arguments.isSet("ellipsoid") ? parseEllipsoid(arguments.value("ellipsoid")) : Ellipsoid();
    std::vector<std::string_view> columns;
    columns.reserve(formulas.size() + 1);
    for (const Formula formula : formulas) {
        columns.push_back(names[formula]);
    }
    columns.emplace_back("doubtful");
    Measurer measurer(formulas, ellipsoid);
    Records records(format, columns, arguments.isSet("header"));
    if (arguments.words().isEmpty()) {
        return measureLines(measurer, records, arguments.isSet("continue"));
    }
    arguments.expectWords(4, 4);
    const std::string line = arguments.words().join(QLatin1Char(' ')).toStdString();
    std::vector<std::string_view> parts;
    splitWords(line, parts);
    const std::optional<Pair> pair = parsePair(parts);
    if (!pair) {
        throw UsageError(Text::tr("ожидаются LON1 LAT1 LON2 LAT2 в градусах, а не '%1'")
                             .arg(shownLine(QString::fromStdString(line))));
    }
    measurer.measure(*pair);
    records.addList(measurer.fields, measurer.doubtful);
    return Done;
}

} // namespace veltor::tool
