#pragma once

#include "GeodesicEdges.h"
#include "MapFeature.h"
#include "StraightEdges.h"

#include <veltor/core/CalcMode.h>

namespace veltor::tool {

/// What leads from one position to the next on the sphere and the ellipsoid.
enum class Edges
{
    Geodesic, ///< the shortest way
    Straight  ///< a straight line in longitude and latitude, the shorter way round
};

struct Measures
{
    double area = 0;
    double perimeter = 0;
    double length = 0;
};

/// The surface that features are measured on. Reentrant.
///
/// The area of a ring on the sphere or the ellipsoid is that of the side that it encloses as drawn in
/// longitude and latitude, whatever its orientation and its size. A ring that goes round a pole without
/// closing in longitude has no such side; the smaller one is taken, but of a polygon whose hole goes round
/// as well the zone between the two.
class Surface
{
public:
    Surface(core::CalcMode mode, const Ellipsoid& ellipsoid, Edges edges);

    [[nodiscard]] core::CalcMode mode() const { return m_mode; }
    /// @param notes  what is odd about the feature
    [[nodiscard]] Measures measure(const MapFeature& feature, Notes& notes) const;

private:
    struct RingMeasures
    {
        double area;
        double perimeter;
        double northCap; ///< area north of a ring that goes round a pole, NaN for all others
    };
    [[nodiscard]] RingMeasures measureRing(const Ring& ring) const;
    [[nodiscard]] double measurePolygon(const std::vector<Ring>& rings, double& perimeter, bool& isOdd) const;
    [[nodiscard]] double measureLine(const Ring& line) const;

    core::CalcMode m_mode;
    Edges m_edges;
    StraightEdges m_straight;
    GeodesicEdges m_geodesic;
    double m_whole; // area of the surface
};

} // namespace veltor::tool
