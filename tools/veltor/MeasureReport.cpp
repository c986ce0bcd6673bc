// The output of veltor measure: table, CSV, JSON and GeoJSON.

#include "MeasureReport.h"

#include "Console.h"
#include "Table.h"
#include "TerminalText.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace veltor::tool {
namespace {

/// What does not compare (the plane may overflow to NaN) stands last.
double ranked(double value)
{
    return std::isnan(value) ? -std::numeric_limits<double>::infinity() : value;
}

bool isLarger(const MeasuredFeature& left, const MeasuredFeature& right)
{
    const auto key = [](const Measures& m) { return std::pair(ranked(m.area), ranked(m.length)); };
    return key(left.measures) > key(right.measures);
}

bool isBefore(SortKey key, const MeasuredFeature& left, const MeasuredFeature& right)
{
    switch (key) {
    case SortKey::Area:
        return ranked(left.measures.area) > ranked(right.measures.area);
    case SortKey::Perimeter:
        return ranked(left.measures.perimeter) > ranked(right.measures.perimeter);
    case SortKey::Length:
        return ranked(left.measures.length) > ranked(right.measures.length);
    case SortKey::Name:
        return left.name < right.name;
    case SortKey::None:
        break;
    }
    return false;
}

const char* nameOf(core::CalcMode mode)
{
    switch (mode) {
    case core::CalcMode::Cartesian:
        return "cartesian";
    case core::CalcMode::Spherical:
        return "spherical";
    default:
        return "ellipsoidal";
    }
}

/// "m²" in plain letters.
std::string plainUnit(const char* unit)
{
    std::string text = unit;
    const std::size_t square = text.find("²");
    return square == std::string::npos ? text : text.substr(0, square) + '2';
}

} // namespace

MeasureReport::MeasureReport(const MeasureOptions& options)
    : m_options(options)
{
    if (isStreamed()) {
        begin();
    }
}

bool MeasureReport::isStreamed() const
{
    const bool isLong = m_options.format == OutputFormat::Csv || m_options.format == OutputFormat::GeoJson;
    return isLong && m_options.largest == 0 && m_options.sort == SortKey::None;
}

void MeasureReport::add(MeasuredFeature&& feature)
{
    const bool isMeasured = feature.hasArea || feature.hasLength;
    m_measured += isMeasured ? 1 : 0;
    m_total.area += feature.measures.area;
    m_total.perimeter += feature.measures.perimeter;
    m_total.length += feature.measures.length;
    if (!isMeasured && m_options.format != OutputFormat::GeoJson) {
        return;
    }
    if (isStreamed()) {
        printRow(feature);
    } else {
        m_features.push_back(std::move(feature));
    }
}

void MeasureReport::finish()
{
    if (isStreamed()) {
        end();
        return;
    }
    order();
    switch (m_options.format) {
    case OutputFormat::Table:
        printTable();
        return;
    case OutputFormat::Json:
        printJson();
        return;
    default:
        begin();
        for (const MeasuredFeature& feature : m_features) {
            printRow(feature);
        }
        end();
    }
}

void MeasureReport::order()
{
    if (m_options.largest > 0) {
        std::stable_sort(m_features.begin(), m_features.end(), &isLarger);
        m_features.resize(std::min(m_features.size(), static_cast<std::size_t>(m_options.largest)));
    }
    if (m_options.sort != SortKey::None) {
        const auto less = [this](const MeasuredFeature& left, const MeasuredFeature& right) {
            return isBefore(m_options.sort, left, right);
        };
        std::stable_sort(m_features.begin(), m_features.end(), less);
    }
}

double MeasureReport::inUnit(double value, bool isArea) const
{
    const Unit unit = m_options.unit.value_or(Unit{"", "", 1, 1});
    return value / (isArea ? unit.squareMetres : unit.metres);
}

void MeasureReport::appendValue(std::string& text, double value) const
{
    if (m_options.precision < 0) {
        appendNumber(text, value);
        return;
    }
    std::array<char, 400> digits; // the longest fixed double has 309 before the point
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                      std::chars_format::fixed, m_options.precision);
    text.append(digits.data(), result.ptr);
}

const char* MeasureReport::lineEnd(json::EndOfLine preset) const
{
    switch (m_options.endOfLine.value_or(preset)) {
    case json::EndOfLine::CrLf:
        return "\r\n";
    case json::EndOfLine::Cr:
        return "\r";
    default:
        return "\n";
    }
}

void MeasureReport::begin()
{
    if (m_options.format == OutputFormat::GeoJson) {
        print(std::string_view("{\"type\":\"FeatureCollection\",\"features\":["));
        return;
    }
    std::string header = "name,area,perimeter,length";
    if (m_options.mode != core::CalcMode::Cartesian) {
        const Unit unit = m_options.unit.value_or(Unit{"m", "m²", 1, 1});
        const std::string length = plainUnit(unit.length);
        header = "name,area_" + plainUnit(unit.area) + ",perimeter_" + length + ",length_" + length;
    }
    print(header + lineEnd(json::EndOfLine::CrLf));
}

void MeasureReport::printRow(const MeasuredFeature& feature)
{
    if (m_options.format == OutputFormat::Csv) {
        csvRow(feature);
    } else {
        geoJsonRow(feature);
    }
    ++m_count;
}

void MeasureReport::end()
{
    if (m_options.format == OutputFormat::GeoJson) {
        print(std::string_view("\n]}\n"));
    }
}

void MeasureReport::csvRow(const MeasuredFeature& feature) const
{
    std::string row = csvField(feature.name);
    const auto column = [&](bool isThere, double value, bool isArea) {
        row += ',';
        if (isThere) {
            appendValue(row, inUnit(value, isArea));
        }
    };
    column(feature.hasArea, feature.measures.area, true);
    column(feature.hasArea, feature.measures.perimeter, false);
    column(feature.hasLength, feature.measures.length, false);
    printData(row + lineEnd(json::EndOfLine::CrLf));
}

/// The feature's own text with the measures first among its properties, in the place of those of their names.
void MeasureReport::geoJsonRow(const MeasuredFeature& feature)
{
    std::string measures;
    const auto member = [&](const char* name, double value, bool isArea) {
        measures += (measures.empty() ? "\"" : ",\"") + std::string(name) + "\":";
        if (std::isfinite(value)) {
            appendValue(measures, inUnit(value, isArea));
        } else {
            measures += "null";
        }
    };
    if (feature.hasArea) {
        member("area", feature.measures.area, true);
        member("perimeter", feature.measures.perimeter, false);
    }
    if (feature.hasLength) {
        member("length", feature.measures.length, false);
    }
    const std::string& text = feature.text;
    const PropertiesPlace& place = feature.properties;
    for (const PropertiesPlace::Member& old : place.members) {
        if (old.isMeasure && (feature.hasArea || feature.hasLength)) {
            continue;
        }
        const std::size_t first = text.find_first_not_of(", \t\r\n", old.begin);
        measures += (measures.empty() ? "" : ",") + text.substr(first, old.end - first);
    }
    std::string row = m_count == 0 ? "\n" : ",\n";
    if (feature.isBareGeometry) {
        row += "{\"type\":\"Feature\",\"properties\":{" + measures + "},\"geometry\":" + text + '}';
    } else if (place.end == 0) {
        row += "{\"properties\":{" + measures + "}," + text.substr(1);
    } else {
        row += text.substr(0, place.begin) + '{' + measures + '}' + text.substr(place.end);
    }
    printData(row);
}

void MeasureReport::jsonMeasures(JsonText& json, const Measures& measures, bool hasArea, bool hasLength) const
{
    const auto rounded = [this](double value) {
        if (m_options.precision < 0 || !std::isfinite(value)) {
            return value;
        }
        std::string text;
        appendValue(text, value);
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    };
    if (hasArea) {
        json.key("area");
        json.value(rounded(inUnit(measures.area, true)));
    }
    if (hasLength) {
        json.key("length");
        json.value(rounded(inUnit(measures.length, false)));
    }
}

void MeasureReport::printJson() const
{
    JsonText json(*m_options.layout, m_options.endOfLine.value_or(json::EndOfLine::Lf));
    const auto members = [&](const Measures& m, bool hasArea, bool hasLength, const QString* name) {
        json.beginObject();
        jsonMeasures(json, m, hasArea, hasLength);
        if (name) {
            json.key("name");
            json.value(*name);
        }
        if (hasArea) {
            json.key("perimeter");
            json.value(inUnit(m.perimeter, false));
        }
        json.end();
    };
    json.beginObject();
    if (m_options.edges == Edges::Straight) {
        json.key("edges");
        json.value(QStringLiteral("straight"));
    }
    json.key("features");
    json.beginArray();
    for (const MeasuredFeature& feature : m_features) {
        members(feature.measures, feature.hasArea, feature.hasLength, &feature.name);
        print(json.take());
    }
    json.end();
    json.key("mode");
    json.value(QString::fromLatin1(nameOf(m_options.mode)));
    json.key("total");
    members(m_total, true, true, nullptr);
    if (m_options.unit) {
        json.key("unit");
        json.beginObject();
        json.key("area");
        json.value(QString::fromStdString(plainUnit(m_options.unit->area)));
        json.key("length");
        json.value(QString::fromUtf8(m_options.unit->length));
        json.end();
    }
    json.end();
    print(json.take() + lineEnd(json::EndOfLine::Lf));
}

void MeasureReport::printTable() const
{
    // Kilometres once there is a square kilometre to show, or a line as long.
    const bool isPlane = m_options.mode == core::CalcMode::Cartesian;
    const bool isLarge = m_total.area >= 1e6 || m_total.length >= 1e4;
    const Unit automatic = isPlane   ? Unit{"", "", 1, 1}
                           : isLarge ? Unit{"km", "km²", 1e3, 1e6}
                                     : Unit{"m", "m²", 1, 1};
    const Unit unit = m_options.unit.value_or(automatic);
    const int precision = m_options.precision < 0 ? 3 : m_options.precision;
    const auto head = [&](const QString& name, const char* itsUnit) {
        return isPlane ? name : name + QStringLiteral(", ") + QString::fromUtf8(itsUnit);
    };
    Table table({Text::tr("имя"), head(Text::tr("площадь"), unit.area),
                 head(Text::tr("периметр"), unit.length), head(Text::tr("длина"), unit.length)});
    const auto row = [&](const QString& name, const Measures& m, bool hasArea, bool hasLength) {
        const auto number = [&](bool isThere, double value, double of) {
            return isThere ? QString::number(value / of, 'f', precision) : QStringLiteral("-");
        };
        table.add({name, number(hasArea, m.area, unit.squareMetres),
                   number(hasArea, m.perimeter, unit.metres), number(hasLength, m.length, unit.metres)});
    };
    for (const MeasuredFeature& feature : m_features) {
        row(shownName(feature.name), feature.measures, feature.hasArea, feature.hasLength);
    }
    row(Text::tr("всего объектов: %1").arg(m_measured), m_total, true, true);
    table.print();
}

} // namespace veltor::tool
