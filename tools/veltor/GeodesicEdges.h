#pragma once

#include "StraightEdges.h"

#include <geodesic.h>

namespace veltor::tool {

/// Geodesics between positions: the area between them and the equator, and their length.
///
/// Long ones are PROJ's. A short one (to 0.003 radii, 19 km on the Earth) is found from the line that is
/// straight in longitude and latitude between its ends: with the geodesic curvature k of that line in the
/// middle and its length s, the geodesic bounds k s^3 / 12 more and is k^2 s^3 / 24 shorter. On WGS 84 the
/// errors are below 0.05 square metres and 4 nanometres, for a fifth of the time. Source of k: M. P. do
/// Carmo, Differential Geometry of Curves and Surfaces (1976), section 4-4, proposition 3 (Liouville).
class GeodesicEdges
{
public:
    explicit GeodesicEdges(const Ellipsoid& ellipsoid);

    /// (signed area between the ring and the equator, perimeter).
    [[nodiscard]] std::pair<double, double> ring(const Ring& ring) const;
    [[nodiscard]] double length(const Ring& line) const;

private:
    [[nodiscard]] EdgeMeasures edge(QPointF from, QPointF to) const;
    [[nodiscard]] bool bend(EdgeMeasures& edge, double latitude, double dLatitude, double dLongitude) const;

    StraightEdges m_straight;
    geod_geodesic m_geodesic{};
    double m_a;
    double m_e2;
    bool m_isNearlyRound;
};

} // namespace veltor::tool
