// Any bytes as a map: read, measured on each surface and written back, without a crash, a hang or an
// allocation that the bytes themselves decide; a map that is taken is told to be measured as one, and is the
// same when it comes in pieces.

#include "Fuzz.h"

#include "GeoJsonReader.h"
#include "Surface.h"
#include "support/Pieces.h"

#include <QtCore/QBuffer>

#include <limits>
#include <stdexcept>

using namespace veltor::tool;
using veltor::fuzz::demand;

namespace {

/// What a reading gave, in words: every feature, and the fault that ended it.
QString told(QIODevice& map)
{
    QString words;
    MapReading reading;
    reading.keepText = true;
    reading.feature = [&words](MapFeature&& feature) {
        words += QStringLiteral("%1 %2 %3 %4 %5\n")
                     .arg(feature.number)
                     .arg(feature.name, feature.kind, QString::fromStdString(feature.text))
                     .arg(feature.properties.end);
        for (const Ring& line : feature.lines) {
            for (const QPointF& point : line) {
                words += QString::number(point.x(), 'g', 17) + QLatin1Char(' ');
            }
        }
    };
    try {
        readGeoJson(map, reading);
    } catch (const std::runtime_error& error) {
        words += QString::fromUtf8(error.what());
    }
    return words;
}

void checkPieces(const QByteArray& bytes)
{
    QBuffer whole;
    whole.setData(bytes);
    whole.open(QIODevice::ReadOnly);
    const QString expected = told(whole);
    for (const QByteArray& script : {QByteArray(1, '\0'), bytes.right(9)}) {
        veltor::test::Pieces pieces(script, bytes);
        demand(told(pieces) == expected, "a map in pieces is the map", expected);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const Surface surfaces[] = {{veltor::core::CalcMode::Cartesian, {}, Edges::Geodesic},
                                       {veltor::core::CalcMode::Spherical,
                                        {6370997, std::numeric_limits<double>::infinity()},
                                        Edges::Geodesic},
                                       {veltor::core::CalcMode::Ellipsoidal, {}, Edges::Geodesic},
                                       {veltor::core::CalcMode::Ellipsoidal, {}, Edges::Straight}};
    for (const Surface& surface : surfaces) {
        QBuffer buffer;
        buffer.setData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
        buffer.open(QIODevice::ReadOnly);
        Notes notes;
        MapReading reading;
        reading.geographic = surface.mode() != veltor::core::CalcMode::Cartesian;
        reading.keepText = true;
        reading.feature = [&](MapFeature&& feature) {
            const Measures measures = surface.measure(feature, notes);
            const PropertiesPlace& place = feature.properties;
            std::size_t end = place.begin;
            for (const PropertiesPlace::Member& member : place.members) {
                demand(member.begin >= end && member.end > member.begin, "members follow each other");
                end = member.end;
            }
            demand(!(measures.area < 0), "no area is negative");
            demand(!feature.text.empty() && end <= place.end && place.end <= feature.text.size(),
                   "properties lie within the text");
        };
        try {
            readGeoJson(buffer, reading);
        } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): refused
        }
    }
    checkPieces(QByteArray(reinterpret_cast<const char*>(bytes), static_cast<int>(size)));
    return 0;
}
