#pragma once

#include "MapFeature.h"

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <functional>

namespace veltor::tool {

/// How a map is read.
struct MapReading
{
    bool geographic = true; ///< positions are degrees, so that latitudes lie within [-90, 90]
    bool keepText = false;  ///< MapFeature::text is wanted
    QString nameProperty;   ///< the property with the name; empty: "name" or "NAME"
    std::function<void(MapFeature&&)> feature{};  ///< called with one feature after the other
    std::function<void(qint64 bytes)> progress{}; ///< called after each feature
};

/// Reads GeoJSON (RFC 7946) feature by feature, so that the file may be of any size: a FeatureCollection, a
/// Feature or a geometry, one of them a line (newline-delimited), or each behind a record separator
/// (RFC 8142). The JSON is taken strictly (RFC 8259, in UTF-8 with or without a byte-order mark), nested at
/// most 10,000 deep. A feature's name is its property, else its id, else "#" and its number.
/// @throws std::runtime_error that says where: line, offset in bytes, feature, position
void readGeoJson(QIODevice& device, const MapReading& reading);

} // namespace veltor::tool
