// Any bytes as a map: read, measured on each surface and written back, without a crash, a hang or an
// allocation that the bytes themselves decide; a map that is taken is told to be measured as one.

#include "GeoJsonReader.h"
#include "Surface.h"

#include <QtCore/QBuffer>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

using namespace veltor::tool;

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
                if (member.begin < end || member.end <= member.begin) {
                    std::abort();
                }
                end = member.end;
            }
            if (measures.area < 0 || feature.text.empty() || end > place.end ||
                place.end > feature.text.size()) {
                std::abort();
            }
        };
        try {
            readGeoJson(buffer, reading);
        } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): refused
        }
    }
    return 0;
}
