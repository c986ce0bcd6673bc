#include "support/Files.h"
#include "support/Process.h"
#include "support/Table.h"
#include "support/Text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <gmock/gmock.h>

namespace veltor::test {
namespace {

using testing::HasSubstr;

const QString sample = QStringLiteral(VELTOR_TESTS "/measure/data/countries-sample.geojson");

/// Runs the tool with words separated by blanks, and with a file's name behind them if there is one.
Outcome veltor(const char* words, const QString& fileName = {}, const QByteArray& input = {})
{
    const QStringList file = fileName.isEmpty() ? QStringList() : QStringList{fileName};
    return run(QStringLiteral(VELTOR_TOOL), u(words).split(QLatin1Char(' ')) + file, input);
}

Outcome measureText(const char* words, const char* text)
{
    return veltor(words, Folder().write("map.geojson", text));
}

QJsonDocument json(const Outcome& outcome)
{
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return QJsonDocument::fromJson(QByteArray::fromStdString(outcome.output));
}

TEST(MeasureTool, CountriesAgreeWithTheReferencePlanimeter)
{
    const QJsonDocument ellipsoid = json(veltor("measure --json", sample));
    const QJsonDocument sphere = json(veltor("measure --json --mode sphere", sample));
    EXPECT_EQ(ellipsoid[u"mode"].toString().toStdString(), "ellipsoidal");
    const auto table = readTable("measure/data/countries.csv", ',');
    ASSERT_EQ(ellipsoid[u"features"].toArray().size(), static_cast<int>(table.size()));
    for (int i = 0; i < static_cast<int>(table.size()); ++i) {
        const QStringList& row = table[static_cast<size_t>(i)];
        const QJsonValue feature = ellipsoid[u"features"][i];
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(feature[u"name"].toString(), row[0]);
        EXPECT_NEAR(feature[u"area"].toDouble(), row[1].toDouble(), 100); // 0.1 a vertex
        EXPECT_NEAR(feature[u"perimeter"].toDouble(), row[2].toDouble(), 1e-5);
        // Also across the +-180 meridian and around the south pole.
        EXPECT_NEAR(sphere[u"features"][i][u"area"].toDouble(), row[1].toDouble(), 0.01 * row[1].toDouble());
    }
}

TEST(MeasureTool, LinesHaveALengthAndOtherKindsAreNamedAndSkipped)
{
    const Outcome outcome =
        measureText("measure --mode plane --json", R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "id": 7, "properties": null,
         "geometry": {"type": "LineString", "coordinates": [[0, 0], [3, 4], [3, 5]]}},
        {"type": "Feature", "properties": {"name": "well"}, "geometry": {"type": "Point", "coordinates": [0, 0]}}]})");
    const QByteArray features =
        QJsonDocument(json(outcome)[u"features"].toArray()).toJson(QJsonDocument::Compact);
    EXPECT_EQ(features, QByteArray(R"([{"length":6,"name":"7"}])"));
    EXPECT_THAT(outcome.errors, HasSubstr("feature 2 (well): Point is not measured"));
}

TEST(MeasureTool, LayoutAndLineEndsAreChosenByName)
{
    const char* line = R"({"type": "LineString", "coordinates": [[0, 0], [3, 4]]})";
    EXPECT_EQ(measureText("measure --mode plane --layout compact --eol crlf", line).output,
              "{\"features\":[{\"length\":5,\"name\":\"#1\"}],\"mode\":\"cartesian\","
              "\"total\":{\"area\":0,\"length\":5,\"perimeter\":0}}\r\n");
    EXPECT_THAT(measureText("measure --mode plane --eol cr", line).output,
                HasSubstr("\"length\": 5,\r        "));
}

TEST(MeasureTool, BadFilesAreRefusedWithThePlace)
{
    const std::pair<const char*, const char*> rows[] = {
        {R"({"type": "Polygon", )", "offset 20"},
        {R"({"type": "FeatureCollection"})", "a list of features expected"},
        {R"({"type": "Polygon", "coordinates": [[[0, 0], [1, 91]]]})",
         "feature 1 (#1): position 2: latitude 91"},
        {R"({"type": "FeatureCollection", "features": [{"type": "Feature", "properties": {"name": "A"},
             "geometry": {"type": "MultiPolygon", "coordinates": [[[[0, "x"]]]]}}]})",
         "feature 1 (A): position 1: a position needs two numbers"},
        {"[]", "line 1, offset 0: this is no map"},
    };
    for (const auto& [text, error] : rows) {
        const Outcome outcome = measureText("measure", text);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr(error));
    }
    const Outcome layout = veltor("measure --layout pretty", sample);
    EXPECT_EQ(layout.status, 2);
    EXPECT_THAT(layout.errors, HasSubstr("brackets-indented, comma-first, delimited"));
    EXPECT_EQ(veltor("measure --eol nl", sample).status, 2);
    const Outcome mode = veltor("measure --mode round", sample);
    EXPECT_EQ(mode.status, 2);
    EXPECT_THAT(mode.errors, HasSubstr("cartesian, spherical, ellipsoidal"));
}

TEST(DistanceTool, PrintsALineOrAnObjectForEachPair)
{
    EXPECT_EQ(veltor("distance", {}, "0 0 0 1\n\n-1,2,-3,4").output,
              "1.000000000 111194.8743 110574.3886 110574.3886 110574.3885 0.000000000\n"
              "2.828427125 314283.1071 313588.3972 313588.3972 313587.9551 314.895394544\n");
    const QJsonDocument object = json(veltor("distance -1 2 -3 4 --json"));
    EXPECT_EQ(object[u"cartesian"].toDouble(), std::sqrt(8.0));
    EXPECT_NEAR(object[u"azimuth"].toDouble(), 314.895394544, 1e-9);
    const Outcome sphere = veltor("distance --ellipsoid 6370997,0", {}, "0 0 0 1\n");
    EXPECT_THAT(sphere.output, HasSubstr("111194.8743 111194.8743 111194.8743 111194.8743"));
    const Outcome bad = veltor("distance", {}, "0 0 0 1\n0 0 0 91\n");
    EXPECT_EQ(bad.status, 1);
    EXPECT_THAT(bad.output, HasSubstr("1.000000000"));
    EXPECT_THAT(bad.errors, HasSubstr("line 2"));
    EXPECT_EQ(veltor("distance --ellipsoid 6370997,0.5").status, 2);
}

} // namespace
} // namespace veltor::test
