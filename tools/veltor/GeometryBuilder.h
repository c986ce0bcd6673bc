#pragma once

#include "MapFeature.h"

#include <string>
#include <string_view>
#include <vector>

namespace veltor::tool {

/// One geometry while its text is read, whose members may come in any order: "coordinates" often stand
/// before the "type" that gives them a meaning. The calls return a fault to be told with its place, or an
/// empty text.
class GeometryBuilder
{
public:
    /// @param geographic  positions are degrees
    explicit GeometryBuilder(bool geographic)
        : m_isGeographic(geographic)
    {}

    /// True for the seven names that GeoJSON knows.
    [[nodiscard]] static bool isKind(std::string_view type);

    [[nodiscard]] QString setType(std::string_view type);
    [[nodiscard]] QString beginCoordinates();
    [[nodiscard]] QString beginArray();
    [[nodiscard]] QString number(double value, std::string_view text);
    /// What is wrong with anything else among the coordinates.
    [[nodiscard]] QString notANumber() const;
    /// @param last  set when that was the end of the coordinates
    [[nodiscard]] QString endArray(bool& last);

    /// The list of "geometries" begins.
    void beginParts() { m_hasParts = true; }
    void addPart(GeometryBuilder&& part) { m_parts.push_back(std::move(part)); }

    /// At the end of the object: adds what it holds to the feature.
    [[nodiscard]] QString addTo(MapFeature& feature);

private:
    [[nodiscard]] int expectedLevel() const;
    [[nodiscard]] QString levelFault() const;
    [[nodiscard]] QString checkLatitude(double& latitude, std::string_view text);
    [[nodiscard]] QString place(const QString& fault) const;
    void addPolygons(MapFeature& feature);

    bool m_isGeographic;
    bool m_hasCoordinates = false;
    bool m_hasParts = false;
    bool m_hasClamped = false;
    bool m_isFresh = false;  // the array just opened has no element yet
    int m_level = 0;         // arrays that are open
    int m_positionLevel = 0; // of the arrays that are positions; 0: none was seen
    int m_emptyLevel = 0;    // the deepest empty array
    int m_numbers = 0;       // of the position being read
    QPointF m_position;
    Ring m_ring;
    std::vector<Ring> m_rings;
    std::vector<std::size_t> m_polygonEnds; // in m_rings
    std::string m_type;
    std::vector<GeometryBuilder> m_parts;
};

} // namespace veltor::tool
