#include "Table.h"

#include "support/Printers.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <map>

using testing::HasSubstr;

namespace {

struct Outcome
{
    int status;
    QByteArray output, errors;
};

Outcome veltor(const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(QStringLiteral(VELTOR_TOOL), arguments);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished());
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QString words(const char* text)
{
    return QString::fromUtf8(text);
}

QJsonObject measured(const QStringList& arguments)
{
    const Outcome outcome = veltor(QStringList{words("measure"), words("--json")} + arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.errors.toStdString();
    return QJsonDocument::fromJson(outcome.output).object();
}

std::map<QString, double> areas(const QJsonObject& report)
{
    std::map<QString, double> result;
    for (const QJsonValue& feature : report.value(words("features")).toArray()) {
        result[feature[words("name")].toString()] = feature[words("area")].toDouble();
    }
    return result;
}

const QString sample = QStringLiteral(MEASURE_DATA "/countries-sample.geojson");

TEST(MeasureTool, CountriesAgreeWithTheReferencePlanimeter)
{
    const QJsonObject report = measured({sample});
    EXPECT_EQ(report.value(words("mode")).toString(), words("ellipsoidal"));
    const QJsonArray features = report.value(words("features")).toArray();
    const auto table = veltor::test::readTable("countries.csv");
    ASSERT_EQ(features.size(), static_cast<int>(table.size()));
    for (int i = 0; i < features.size(); ++i) {
        const QStringList& row = table[static_cast<size_t>(i)];
        EXPECT_EQ(features[i][words("name")].toString(), row[0]);
        EXPECT_NEAR(features[i][words("area")].toDouble(), row[1].toDouble(), 100); // 0.1 a vertex
        EXPECT_NEAR(features[i][words("perimeter")].toDouble(), row[2].toDouble(), 1e-5);
    }
}

TEST(MeasureTool, SphereIsNearTheEllipsoidAlsoAcrossTheMeridianAndAroundThePole)
{
    const auto ellipsoid = areas(measured({sample}));
    const auto sphere = areas(measured({sample, words("--mode"), words("sphere")}));
    ASSERT_EQ(sphere.size(), ellipsoid.size());
    for (const auto& [name, area] : ellipsoid) {
        EXPECT_NEAR(sphere.at(name), area, 0.01 * area) << name.toStdString();
    }
}

TEST(MeasureTool, LinesHaveALengthAndOtherKindsAreNamedAndSkipped)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(words("mixed.geojson"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "id": 7, "properties": null,
         "geometry": {"type": "LineString", "coordinates": [[0, 0], [3, 4], [3, 5]]}},
        {"type": "Feature", "properties": {"name": "well"}, "geometry": {"type": "Point", "coordinates": [0, 0]}}]})");
    file.close();
    const Outcome outcome =
        veltor({words("measure"), path, words("--mode"), words("plane"), words("--json")});
    const QJsonValue features = QJsonDocument::fromJson(outcome.output)[words("features")];
    EXPECT_EQ(features.toArray(),
              (QJsonArray{QJsonObject{{words("name"), words("7")}, {words("length"), 6}}}));
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("feature 2 (well): Point is not measured"));
}

TEST(MeasureTool, BadFilesAreRefusedWithThePlace)
{
    struct Row
    {
        const char* text;
        const char* error;
    };
    const QTemporaryDir directory;
    const QString path = directory.filePath(words("bad.geojson"));
    for (
        const Row& row : {
            Row{R"({"type": "Polygon", )", "offset 20"},
            Row{R"({"type": "FeatureCollection"})", "a list of features expected"},
            Row{R"({"type": "Polygon", "coordinates": [[[0, 0], [1, 91]]]})",
                "feature 1 (#1): position 2: latitude 91"},
            Row{R"({"type": "FeatureCollection", "features": [{"type": "Feature", "properties": {"name": "A"},
                     "geometry": {"type": "MultiPolygon", "coordinates": [[[[0, "x"]]]]}}]})",
                "feature 1 (A): position 1: a position needs two numbers"},
            Row{"[]", "feature 1"},
        }) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.text);
        file.close();
        const Outcome outcome = veltor({words("measure"), path});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors.toStdString(), HasSubstr(row.error));
    }
    const Outcome mode = veltor({words("measure"), sample, words("--mode"), words("round")});
    EXPECT_EQ(mode.status, 2);
    EXPECT_THAT(mode.errors.toStdString(), HasSubstr("cartesian, spherical, ellipsoidal"));
}

TEST(DistanceTool, PrintsALineOrAnObjectForEachPair)
{
    const Outcome lines = veltor({words("distance")}, "0 0 0 1\n\n-1,2,-3,4");
    EXPECT_EQ(lines.output.toStdString(),
              "1.000000000 111194.8743 110574.3886 110574.3886 110574.3885 0.000000000\n"
              "2.828427125 314283.1071 313588.3972 313588.3972 313587.9551 314.895394544\n");
    const Outcome json =
        veltor({words("distance"), words("-1"), words("2"), words("-3"), words("4"), words("--json")});
    const QJsonObject object = QJsonDocument::fromJson(json.output).object();
    EXPECT_EQ(object.size(), 6);
    EXPECT_EQ(object.value(words("cartesian")).toDouble(), std::sqrt(8.0));
    EXPECT_NEAR(object.value(words("azimuth")).toDouble(), 314.895394544, 1e-9);
    const Outcome sphere = veltor({words("distance"), words("--ellipsoid"), words("6370997,0")}, "0 0 0 1\n");
    EXPECT_THAT(sphere.output.toStdString(), HasSubstr("111194.8743 111194.8743 111194.8743 111194.8743"));
    const Outcome bad = veltor({words("distance")}, "0 0 0 1\n0 0 0 91\n");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.output.count('\n'), 1);
    EXPECT_THAT(bad.errors.toStdString(), HasSubstr("line 2"));
    EXPECT_EQ(veltor({words("distance"), words("--ellipsoid"), words("6370997,0.5")}).status, 2);
}

} // namespace
