// The tool as its users run it, and its parts against models.

#include "support/Files.h"
#include "support/Pieces.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Table.h"
#include "support/Text.h"

#include "GeoJsonReader.h"
#include "JsonText.h"
#include "Surface.h"

#include <veltor/utils/Area.h>

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>

namespace veltor::test {
namespace {

using namespace veltor::tool;

const QString sample = QStringLiteral(VELTOR_TESTS "/measure/data/countries-sample.geojson");

QJsonDocument measured(const QStringList& words)
{
    const Outcome outcome = run(QStringLiteral(VELTOR_TOOL), QStringList{u("measure"), u("--json")} + words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return QJsonDocument::fromJson(QByteArray::fromStdString(outcome.output));
}

TEST(Tool, CountriesAgreeWithTheReferencePlanimeter)
{
    const QJsonDocument ellipsoid = measured({sample});
    const QJsonDocument sphere = measured({sample, u("--mode=sphere")});
    const QJsonDocument straight = measured({sample, u("--edges"), u("straight")});
    EXPECT_EQ(ellipsoid[u"mode"].toString().toStdString(), "ellipsoidal");
    const auto table = readTable("measure/data/countries.csv", ',');
    ASSERT_EQ(ellipsoid[u"features"].toArray().size(), static_cast<int>(table.size()));
    for (int i = 0; i < static_cast<int>(table.size()); ++i) {
        const QStringList& row = table[static_cast<size_t>(i)];
        const QJsonValue feature = ellipsoid[u"features"][i];
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(feature[u"name"].toString(), row[0]);
        const double area = row[1].toDouble();
        EXPECT_NEAR(feature[u"area"].toDouble(), area, 100); // 0.1 a vertex
        EXPECT_NEAR(feature[u"perimeter"].toDouble(), row[2].toDouble(), 1e-5);
        EXPECT_NEAR(sphere[u"features"][i][u"area"].toDouble(), area, 0.01 * area);
        EXPECT_NEAR(straight[u"features"][i][u"area"].toDouble(), area, 0.002 * area);
    }
    const QString ocean = QStringLiteral(VELTOR_TESTS "/measure/data/ocean-110m.geojson");
    EXPECT_NEAR(measured({ocean})[u"total"][u"area"].toDouble(), 362703062506923,
                1e3); // Planimeter -s, a ring each
}

#ifdef Q_OS_UNIX
TEST(Tool, BehavesAsAShellExpects)
{
    for (const QStringList& row : readTable("measure/data/tool.txt", '@')) {
        const Folder folder;
        const QString command =
            QStringLiteral("export LC_ALL=C v='%1' d=%2/measure/data t=%3; %4")
                .arg(commandOf(u(VELTOR_TOOL)).join(u(" ")), u(VELTOR_TESTS), folder.path(), row.value(3));
        SCOPED_TRACE(row.value(3).toStdString());
        const Outcome outcome = run(QStringLiteral("bash"), {QStringLiteral("-c"), command});
        EXPECT_EQ(outcome.status, row[0].toInt()) << outcome.errors;
        const auto expect = [](const std::string& text, const QString& pattern) {
            const QString shown = QString::fromStdString(text).simplified();
            EXPECT_TRUE(pattern == u("-") || shown.contains(QRegularExpression(pattern)))
                << shown.toStdString() << "\nlacks " << pattern.toStdString();
        };
        expect(outcome.output, row[1].trimmed());
        expect(outcome.errors, row[2].trimmed());
    }
}
#endif

/// Why it is no map; empty when it is one.
QString refusalOf(QIODevice& map)
{
    MapReading reading;
    reading.feature = [](MapFeature&&) {};
    try {
        readGeoJson(map, reading);
        return {};
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
}

/// Also in pieces of a byte, as pipes may give them.
bool isTaken(const QByteArray& json)
{
    QBuffer buffer;
    buffer.setData(json);
    buffer.open(QIODevice::ReadOnly);
    const QString refusal = refusalOf(buffer);
    Pieces pieces(QByteArray(1, '\0'), json);
    EXPECT_EQ(refusalOf(pieces), refusal) << json.toStdString();
    return refusal.isEmpty();
}

QByteArray bytesOf(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    for (int at = bytes.indexOf("\\x"); at >= 0; at = bytes.indexOf("\\x", at + 1)) {
        bool ok = false;
        const int code = bytes.mid(at + 2, 2).toInt(&ok, 16);
        bytes.replace(at, ok ? 4 : 0, ok ? QByteArray(1, static_cast<char>(code)) : QByteArray());
    }
    return bytes;
}

TEST(Tool, TakesJsonToTheLetter)
{
    int count = 0;
    for (const QStringList& row : readTable("measure/data/json.txt", '\n')) {
        QStringList words = row[0].split(u("  "), Qt::SkipEmptyParts);
        const QString verdict = words.takeFirst();
        for (const QString& word : words) {
            const QByteArray text = bytesOf(word.trimmed());
            const bool isLegal =
                isTaken(R"({"type":"Feature","geometry":null,"properties":{"x":)" + text + "}}");
            EXPECT_TRUE(verdict == u("either") || isLegal == (verdict == u("legal")))
                << verdict.toStdString() << ": " << text.toStdString();
            EXPECT_FALSE(isTaken(text)); // no map
            ++count;
        }
    }
    EXPECT_GE(count, 318);
    EXPECT_TRUE(isTaken("\xEF\xBB\xBF{\"type\":\"Feature\",\"geometry\":null}"));
    EXPECT_FALSE(
        isTaken("{\"a\xEF,\n\":1}")); // the fault is in the first line, although the second was looked at
    EXPECT_FALSE(isTaken(R"({"type":"Feature","x":)" + QByteArray(1000000, '[')));
}

TEST(Tool, WritesJsonInTheLayoutsOfTheFormatter)
{
    using json::JsonFormatter;
    const QJsonObject tree =
        QJsonDocument::fromJson(
            R"({"a":[],"b":[1,[2,{}],"x\u0001\"\\\b\n","я"],"c":{"d":{"e":null}},"f":-0.5})")
            .object();
    for (const json::Format* layout :
         {&JsonFormatter::formatCompact, &JsonFormatter::formatSqueeze, &JsonFormatter::formatIndented,
          &JsonFormatter::formatUnindented, &JsonFormatter::formatBracketsIndented,
          &JsonFormatter::formatCommaFirst, &JsonFormatter::formatDelimited}) {
        for (const auto lineEnd : {json::EndOfLine::Lf, json::EndOfLine::CrLf, json::EndOfLine::Cr}) {
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            JsonFormatter(IOPtr(&buffer, [](QIODevice*) {}), *layout).setEndOfLine(lineEnd).write(tree);
            JsonText text(*layout, lineEnd);
            text.value(tree);
            EXPECT_EQ(text.take(), buffer.data().toStdString());
        }
    }
}

constexpr double radians = 3.14159265358979323846 / 180;

/// A rectangle in longitude and latitude with points along its sides, from a random corner in either
/// direction.
Ring rectangle(double west, double width, double south, double north, int steps, std::mt19937& random)
{
    Ring ring;
    for (int i = 0; i < steps; ++i) {
        ring << QPointF(west + width * i / steps, south);
    }
    for (int i = 0; i < steps; ++i) {
        ring << QPointF(west + width, south + (north - south) * i / steps);
    }
    for (int i = 0; i < 2 * steps; ++i) {
        ring << QPointF(west + width, south) + QPointF(west, north) - ring[i];
    }
    std::rotate(ring.begin(), ring.begin() + static_cast<int>(random() % 4U) * steps, ring.end());
    if (random() % 2 != 0) {
        std::reverse(ring.begin(), ring.end());
    }
    return ring;
}

TEST(Tool, MeasuresTheSideThatARingEncloses)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    const Ellipsoid sphere{1, std::numeric_limits<double>::infinity()};
    const Surface geodesic(core::CalcMode::Spherical, sphere, Edges::Geodesic);
    const Surface straight(core::CalcMode::Spherical, sphere, Edges::Straight);
    Notes notes;
    for (int i = 0; i < 300; ++i) {
        const double west = 360 * unit(random) - 180;
        const double width = i % 7 == 0 ? 360 : 359 * unit(random);
        const double south = i % 3 == 0 ? -90 : -90 + 90 * unit(random);
        const double north = i % 5 == 0 ? 90 : 90 * unit(random);
        MapFeature feature;
        feature.polygons = {{rectangle(west, width, south, north, 720, random)}};
        double expected = width * radians * (std::sin(north * radians) - std::sin(south * radians));
        // All round, only an edge along a pole tells that the ring is closed; elsewhere it has no inside.
        const bool isDrawn = width < 360 || (south == -90 && north == 90);
        if (i % 2 == 0) {
            feature.polygons[0].push_back(rectangle(west + width / 4, width / 2,
                                                    south + 0.1 * (north - south), north / 2, 720, random));
            const double top = north / 2 * radians;
            expected -=
                width / 2 * radians * (std::sin(top) - std::sin((south + 0.1 * (north - south)) * radians));
        }
        EXPECT_NEAR(straight.measure(feature, notes).area, expected, 1e-12);
        if (isDrawn) {
            EXPECT_NEAR(geodesic.measure(feature, notes).area, expected, 1e-4) << i;
        }
    }
    // Parcels of a metre at the Earth's size, and the zone between two rings round a pole.
    const Surface earth(core::CalcMode::Spherical, {6370997, std::numeric_limits<double>::infinity()},
                        Edges::Geodesic);
    const double metre = 1 / (6370997 * radians);
    MapFeature parcel;
    parcel.polygons = {{rectangle(10, metre / std::cos(45 * radians), -45, -45 + metre, 1, random)}};
    EXPECT_NEAR(earth.measure(parcel, notes).area, 1, 1e-6);
    const auto parallel = [](double latitude) {
        Ring ring;
        for (int i = 0; i < 1440; ++i) {
            ring << QPointF(i * 0.25 - 180, latitude);
        }
        return ring;
    };
    MapFeature zone;
    zone.polygons = {{parallel(-89.999), parallel(-60)}};
    EXPECT_NEAR(geodesic.measure(zone, notes).area, 360 * radians * (1 - std::sin(60 * radians)), 1e-4);
}

TEST(Tool, ShortGeodesicsAreThoseOfProj)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (const double rf : {298.257223563, -250.0, std::numeric_limits<double>::infinity()}) {
        const double a = 6378137;
        const Surface surface(core::CalcMode::Ellipsoidal, {a, rf}, Edges::Geodesic);
        Notes notes;
        for (int i = 0; i < 5000; ++i) {
            const double reach =
                std::pow(10, 2 * unit(random) - 2.5); // degrees: some metres to some tens of km
            const QPointF corner(180 * unit(random), (90 - 1.5 * reach) * unit(random));
            MapFeature feature;
            const double wide = reach / std::cos(corner.y() * radians);
            feature.polygons = {{{corner, corner + QPointF(wide * unit(random), reach * unit(random)),
                                  corner + QPointF(wide * unit(random), reach * unit(random))}}};
            const auto [area, perimeter] =
                utils::ellipsoidPolygonAreaPerimeter(feature.polygons[0][0], a, rf);
            const Measures measures = surface.measure(feature, notes);
            EXPECT_NEAR(measures.area, area, 0.3) << corner.x() << ' ' << corner.y() << ' ' << reach;
            EXPECT_NEAR(measures.perimeter, perimeter, 45e-9);
        }
    }
}

TEST(Tool, StraightEdgesAreTheLimitOfShortGeodesics)
{
    std::mt19937 random(2);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (const double rf : {298.257223563, 5.0, -5.0}) {
        const Ellipsoid ellipsoid{1, rf};
        const Surface geodesic(core::CalcMode::Ellipsoidal, ellipsoid, Edges::Geodesic);
        const Surface straight(core::CalcMode::Ellipsoidal, ellipsoid, Edges::Straight);
        Notes notes;
        for (int i = 0; i < 5; ++i) {
            Ring corners;
            MapFeature fine;
            fine.polygons = {{{}}};
            for (int corner = 0; corner < 3; ++corner) {
                corners << QPointF(40 * unit(random), 89 * unit(random));
            }
            for (int corner = 0; corner < 3; ++corner) {
                for (int step = 0; step < 2000; ++step) {
                    fine.polygons[0][0]
                        << corners[corner] + (corners[(corner + 1) % 3] - corners[corner]) * step / 2000;
                }
            }
            MapFeature coarse;
            coarse.polygons = {{corners}};
            const Measures exact = straight.measure(coarse, notes);
            const Measures limit = geodesic.measure(fine, notes);
            EXPECT_NEAR(exact.area, limit.area, 1e-6);
            EXPECT_NEAR(exact.perimeter, limit.perimeter, 1e-5);
        }
    }
}

} // namespace
} // namespace veltor::test
