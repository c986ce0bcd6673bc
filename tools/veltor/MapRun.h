#pragma once

#include "GeoJsonReader.h"
#include "Surface.h"

#include <functional>

namespace veltor::tool {

/// A feature with its measures and without its geometry.
struct MeasuredFeature
{
    QString name;
    bool isBareGeometry = false; ///< the text is no feature
    bool hasArea = false;
    bool hasLength = false;
    Measures measures;
    std::string text;
    PropertiesPlace properties;
};

/// Reads a map on one thread, measures its features on all processors and hands them over in the map's order
/// on the calling thread. It is the one place that knows how the tool spreads work; only a few hundred
/// kilobytes of the map, or one feature, are in memory at a time.
/// @param reading   without `feature` and `progress`, which are its own
/// @param takeNotes  called with what is odd about the features taken last
/// @param progress  called now and then with the bytes read
/// @throws what reading, measuring or @p take threw, after what came before it was taken
void measureMap(QIODevice& device, MapReading reading, const Surface& surface,
                const std::function<void(MeasuredFeature&&)>& take,
                const std::function<void(const Notes&)>& takeNotes,
                const std::function<void(qint64)>& progress);

} // namespace veltor::tool
