#pragma once

#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <vector>

namespace veltor::tool {

using Ring = QVector<QPointF>;

/// Polygons or lines under one name. The first ring of a polygon is the outer one, the others are holes.
struct MapFeature
{
    QString name;
    std::vector<std::vector<Ring>> polygons;
    std::vector<Ring> lines;
};

/// What a GeoJSON file (RFC 7946) holds that can be measured, and a line of text for each feature that
/// was left out because of its kind.
struct MapContents
{
    std::vector<MapFeature> features;
    QStringList skipped;
};

/// Reads a FeatureCollection, a Feature or a geometry. A feature's name is its property "name" or "NAME",
/// its id, or "#" and its number.
/// @param geographic  whether positions are degrees, so that latitudes must lie within [-90, 90]
/// @throws std::runtime_error that says where (offset in the file, feature, position)
[[nodiscard]] MapContents readGeoJson(const QString& fileName, bool geographic);

} // namespace veltor::tool
