// Measures of features on the plane, the sphere and the ellipsoid.

#include "Surface.h"

#include "Drawing.h"
#include "Text.h"

#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltor::tool {
namespace {

using core::CalcMode;

} // namespace

Surface::Surface(CalcMode mode, const Ellipsoid& ellipsoid, Edges edges)
    : m_mode(mode)
    , m_edges(edges)
    , m_straight(ellipsoid)
    , m_geodesic(ellipsoid)
    , m_whole(m_straight.area())
{}

Surface::RingMeasures Surface::measureRing(const Ring& ring) const
{
    if (ring.size() < 2) {
        return {0, 0, NAN};
    }
    if (m_mode == CalcMode::Cartesian) {
        const auto [area, perimeter] = utils::cartesianPolygonAreaPerimeter(ring);
        return {area, perimeter, NAN};
    }
    const auto [zone, perimeter] = m_edges == Edges::Straight ? m_straight.ring(ring) : m_geodesic.ring(ring);
    const double turn = drawnTurn(ring);
    if (std::fabs(turn) <= 180) {
        return {std::fabs(zone), perimeter, NAN};
    }
    const double northCap = m_whole / 2 - (turn > 0 ? zone : -zone);
    return {std::min(northCap, m_whole - northCap), perimeter, northCap};
}

double Surface::measurePolygon(const std::vector<Ring>& rings, double& perimeter, bool& isOdd) const
{
    double outer = 0;
    double outerCap = NAN;
    double holes = 0;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        const RingMeasures ring = measureRing(rings[i]);
        perimeter += ring.perimeter;
        if (i == 0) {
            outer = ring.area;
            outerCap = ring.northCap;
        } else if (std::isnan(outerCap) || std::isnan(ring.northCap)) {
            holes += ring.area;
        } else {
            outer = std::fabs(outerCap - ring.northCap); // both go round a pole
            outerCap = NAN;
        }
    }
    isOdd = holes > outer * (1 + 1e-9);
    return std::isnan(outer - holes) ? outer - holes : std::max(0.0, outer - holes);
}

double Surface::measureLine(const Ring& line) const
{
    if (m_mode != CalcMode::Cartesian) {
        return m_edges == Edges::Straight ? m_straight.length(line) : m_geodesic.length(line);
    }
    double sum = 0;
    for (int i = 1; i < line.size(); ++i) {
        sum += utils::cartesianDistance(line[i - 1], line[i]);
    }
    return sum;
}

Measures Surface::measure(const MapFeature& feature, Notes& notes) const
{
    Measures sum;
    for (const std::vector<Ring>& polygon : feature.polygons) {
        bool isOdd = false;
        sum.area += measurePolygon(polygon, sum.perimeter, isOdd);
        if (isOdd) {
            notes.add(Text::tr("дыры больше многоугольника; его площадь взята за 0"), feature);
        }
    }
    for (const Ring& line : feature.lines) {
        sum.length += measureLine(line);
    }
    return sum;
}

} // namespace veltor::tool
