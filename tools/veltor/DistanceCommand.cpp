#include "Command.h"
#include "MeasureOptions.h"

#include <veltor/utils/Distance.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace veltor::tool {
namespace {

constexpr auto usage =
    "Usage: veltor distance [LON1 LAT1 LON2 LAT2] [--ellipsoid A,RF] [--json]\n\n"
    "Distances between two positions in degrees by every formula, in metres (cartesian: in degrees), and\n"
    "the azimuth at the first one. Without coordinates it reads a pair a line from standard input,\n"
    "separated by blanks or commas, and prints a line for each, the values in the order\n"
    "  cartesian spherical ellipsoid vincenty lambert azimuth\n"
    "--json prints an object for each pair, with 17 significant digits. The ellipsoid is WGS 84 unless\n"
    "its semi-major axis and inverse flattening are given (an inverse flattening of 0 is a sphere).\n";

constexpr size_t formulas = 6;
constexpr std::array<std::string_view, formulas> names{"cartesian", "spherical", "ellipsoid",
                                                       "vincenty",  "lambert",   "azimuth"};

using Pair = std::array<double, 4>;

std::array<double, formulas> measure(const Pair& pair, const Ellipsoid& e)
{
    const QPointF p1(pair[0], pair[1]);
    const QPointF p2(pair[2], pair[3]);
    const auto [distance, azimuth] = utils::backGeodesicProblem(p1, p2, e.a, e.rf);
    return {utils::cartesianDistance(p1, p2),           utils::sphericalDistance(p1, p2),          distance,
            utils::vincentyDistance(p1, p2, e.a, e.rf), utils::lambertDistance(p1, p2, e.a, e.rf), azimuth};
}

template <typename... Format>
void append(std::string& text, double value, Format... format)
{
    std::array<char, 400> digits; // the longest fixed double has 309 before the point
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value, format...);
    text.append(digits.data(), result.ptr);
}

void appendValue(std::string& text, size_t formula, double value)
{
    const bool isAngle = formula == 0 || formula == formulas - 1;
    append(text, value, std::chars_format::fixed, isAngle ? 9 : 4);
}

/// By hand: the numbers of the library's JSON writer have 15 significant digits, these take 17.
void appendJson(std::string& text, const std::array<double, formulas>& values)
{
    for (size_t i = 0; i < formulas; ++i) {
        text += i == 0 ? "{\"" : ",\"";
        text += names[i];
        text += "\":";
        if (std::isfinite(values[i])) {
            append(text, values[i], std::chars_format::general, 17);
        } else {
            text += "null";
        }
    }
    text += "}\n";
}

void appendLine(std::string& text, const std::array<double, formulas>& values)
{
    for (size_t i = 0; i < formulas; ++i) {
        appendValue(text, i, values[i]);
        text += i + 1 < formulas ? ' ' : '\n';
    }
}

void appendList(std::string& text, const std::array<double, formulas>& values)
{
    for (size_t i = 0; i < formulas; ++i) {
        std::string value;
        appendValue(value, i, values[i]);
        text += names[i];
        text.append(11 - names[i].size(), ' ');
        // Points stand below each other: angles have five digits more behind theirs.
        const size_t width = i == 0 || i == formulas - 1 ? 22 : 17;
        text.append(value.size() < width ? width - value.size() : 0, ' ');
        text += value;
        text += '\n';
    }
}

bool isSeparator(char c)
{
    return c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n';
}

/// Four numbers with two latitudes among them, or nothing.
std::optional<Pair> parsePair(std::string_view line)
{
    Pair pair{};
    const char* at = line.data();
    const char* const end = at + line.size();
    for (double& number : pair) {
        while (at != end && isSeparator(*at)) {
            ++at;
        }
        if (at != end && *at == '+') {
            ++at;
        }
        const auto [next, error] = std::from_chars(at, end, number);
        if (error != std::errc() || !std::isfinite(number) || (next != end && !isSeparator(*next))) {
            return std::nullopt;
        }
        at = next;
    }
    while (at != end && isSeparator(*at)) {
        ++at;
    }
    const bool complete = at == end && std::fabs(pair[1]) <= 90 && std::fabs(pair[3]) <= 90;
    return complete ? std::optional(pair) : std::nullopt;
}

bool isBlank(std::string_view line)
{
    return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// fgets() and not a stream: this loop is to keep up with millions of lines, and standard output is still
/// flushed line by line when both ends are a terminal.
int measureLines(const MeasureOptions& options)
{
    std::array<char, 4096> line;
    std::string text;
    for (qint64 number = 1; std::fgets(line.data(), static_cast<int>(line.size()), stdin) != nullptr;
         ++number) {
        const std::string_view words(line.data());
        if (isBlank(words)) {
            continue;
        }
        const std::optional<Pair> pair = parsePair(words);
        if (!pair) {
            std::fflush(stdout);
            printError(QStringLiteral("veltor: line %1 is not LON1 LAT1 LON2 LAT2 in degrees: %2")
                           .arg(number)
                           .arg(QString::fromUtf8(line.data()).trimmed()));
            return Failed;
        }
        text.clear();
        (options.json ? appendJson : appendLine)(text, measure(*pair, options.ellipsoid));
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
            throw std::runtime_error("standard output cannot be written");
        }
    }
    if (std::ferror(stdin) != 0) {
        throw std::runtime_error("standard input cannot be read");
    }
    return std::fflush(stdout) == 0 ? Done : Failed;
}

} // namespace

int runDistance(const QStringList& words)
{
    Arguments arguments(QStringLiteral("distance"), {QString()}, QString::fromUtf8(usage));
    arguments.addOption("ellipsoid", QStringLiteral("A,RF"), QString());
    arguments.addFlag("json", QString());
    if (!arguments.parse(words)) {
        return Done;
    }
    MeasureOptions options;
    options.json = arguments.isSet("json");
    if (arguments.isSet("ellipsoid")) {
        options.ellipsoid = parseEllipsoid(arguments.value("ellipsoid"));
    }
    if (arguments.words().isEmpty()) {
        return measureLines(options);
    }
    arguments.expectWords(4, 4);
    const std::optional<Pair> pair = parsePair(arguments.words().join(QLatin1Char(' ')).toStdString());
    if (!pair) {
        throw UsageError(QStringLiteral("no"));
    }
    std::string text;
    (options.json ? appendJson : appendList)(text, measure(*pair, options.ellipsoid));
    print(QString::fromStdString(text));
    return Done;
}

} // namespace veltor::tool
