#include "MeasureOptions.h"

#include "Command.h"

#include <array>
#include <cmath>
#include <limits>

namespace veltor::tool {
namespace {

Ellipsoid parseEllipsoid(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    bool okA = false;
    bool okRf = false;
    Ellipsoid ellipsoid;
    if (parts.size() == 2) {
        ellipsoid.a = parts[0].toDouble(&okA);
        ellipsoid.rf = parts[1].toDouble(&okRf);
    }
    const bool isSphere = std::fabs(ellipsoid.rf) <= 1e-12;
    // A flattening of 1 or more leaves no ellipsoid; a negative one is a prolate ellipsoid.
    const bool valid = okA && okRf && std::isfinite(ellipsoid.a) && ellipsoid.a > 0 &&
                       std::isfinite(ellipsoid.rf) && (isSphere || 1 / ellipsoid.rf < 1);
    if (!valid) {
        throw UsageError(
            QStringLiteral("veltor: --ellipsoid takes the semi-major axis in metres and the inverse "
                           "flattening, as in 6378137,298.257223563 (0: a sphere), not '%1'")
                .arg(text));
    }
    if (isSphere) {
        ellipsoid.rf = std::numeric_limits<double>::infinity();
    }
    return ellipsoid;
}

int parseLargest(const QString& text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < 1) {
        throw UsageError(QStringLiteral("veltor: --largest takes a number above 0, not '%1'").arg(text));
    }
    return number;
}

template <typename Value>
struct Named
{
    const char* name;
    Value value;
};

using json::EndOfLine;
using json::JsonFormatter;

/// The value that @p word names in @p table.
template <typename Table>
auto choose(const Table& table, const char* option, const QString& word)
{
    QStringList names;
    for (const auto& row : table) {
        if (word == QLatin1String(row.name)) {
            return row.value;
        }
        names << QLatin1String(row.name);
    }
    throw UsageError(QStringLiteral("veltor: %1 takes one of %2, not '%3'")
                         .arg(QLatin1String(option), names.join(QLatin1String(", ")), word));
}

const json::Format* parseLayout(const QString& word)
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
    return choose(layouts, "--layout", word);
}

EndOfLine parseLineEnd(const QString& word)
{
    constexpr std::array lineEnds{
        Named<EndOfLine>{"lf", EndOfLine::Lf},
        Named<EndOfLine>{"crlf", EndOfLine::CrLf},
        Named<EndOfLine>{"cr", EndOfLine::Cr},
    };
    return choose(lineEnds, "--eol", word);
}

} // namespace

MeasureOptions parseMeasureOptions(QStringList arguments, const QString& usage, bool measures)
{
    MeasureOptions options;
    const auto value = [&] {
        if (arguments.isEmpty()) {
            throw UsageError(usage);
        }
        return arguments.takeFirst();
    };
    while (!arguments.isEmpty()) {
        const QString word = arguments.takeFirst();
        if (word == QLatin1String("--json")) {
            options.json = true;
        } else if (word == QLatin1String("--ellipsoid")) {
            options.ellipsoid = parseEllipsoid(value());
            options.hasEllipsoid = true;
        } else if (measures && word == QLatin1String("--mode")) {
            options.mode = value();
        } else if (measures && word == QLatin1String("--largest")) {
            options.largest = parseLargest(value());
        } else if (measures && word == QLatin1String("--layout")) {
            options.layout = parseLayout(value());
            options.json = true;
        } else if (measures && word == QLatin1String("--eol")) {
            options.endOfLine = parseLineEnd(value());
            options.json = true;
        } else if (word == QLatin1String("--help")) {
            options.help = true;
        } else if (word.startsWith(QLatin1String("--"))) {
            throw UsageError(QStringLiteral("veltor: there is no option '%1'\n\n").arg(word) + usage);
        } else {
            options.words << word;
        }
    }
    return options;
}

} // namespace veltor::tool
