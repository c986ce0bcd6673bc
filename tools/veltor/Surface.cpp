// Measures of features on the plane, the sphere and the ellipsoid.

#include "Surface.h"

#include "Drawing.h"
#include "StraightEdges.h"
#include "Text.h"

#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltor::tool {
namespace {

using core::CalcMode;

constexpr double radians = 3.14159265358979323846 / 180;

/// The one that is nearer to @p guess.
double nearer(double guess, double one, double other)
{
    return std::fabs(other - guess) < std::fabs(one - guess) ? other : one;
}

} // namespace

Surface::Surface(CalcMode mode, const Ellipsoid& ellipsoid, Edges edges)
    : m_mode(mode)
    , m_ellipsoid(ellipsoid)
    , m_edges(edges)
    , m_whole(StraightEdges(ellipsoid).area())
{}

/// The library gives the smaller of the two sides; the drawing tells which one is meant.
Surface::RingMeasures Surface::geodesicRing(const Ring& ring) const
{
    const auto [smaller, perimeter] =
        utils::ellipsoidPolygonAreaPerimeter(ring, m_ellipsoid.a, m_ellipsoid.rf);
    if (ring.size() < 3) {
        return {smaller, perimeter, NAN};
    }
    const Drawing drawing = drawingOf(ring);
    const double larger = m_whole - smaller;
    if (std::fabs(drawing.turn) > 180) {
        const double north = 0.5 - std::copysign(1, drawing.turn) * drawnPart(ring);
        return {smaller, perimeter, nearer(north * m_whole, smaller, larger)};
    }
    const double height = std::sin(drawing.north * radians) - std::sin(drawing.south * radians);
    // What lies within a quarter of the sphere need not be looked at closely: most rings do.
    if ((drawing.east - drawing.west) / 360 * height / 2 < 0.25) {
        return {smaller, perimeter, NAN};
    }
    return {nearer(std::fabs(drawnPart(ring)) * m_whole, smaller, larger), perimeter, NAN};
}

Surface::RingMeasures Surface::straightRing(const Ring& ring) const
{
    const auto [zone, perimeter] = StraightEdges(m_ellipsoid).ring(ring);
    const double turn = drawingOf(ring).turn;
    if (std::fabs(turn) <= 180) {
        return {std::fabs(zone), perimeter, NAN};
    }
    const double northCap = m_whole / 2 - std::copysign(zone, zone * turn);
    return {std::min(northCap, m_whole - northCap), perimeter, northCap};
}

Surface::RingMeasures Surface::measureRing(const Ring& ring) const
{
    if (m_mode != CalcMode::Cartesian) {
        return ring.isEmpty()               ? RingMeasures{0, 0, NAN}
               : m_edges == Edges::Geodesic ? geodesicRing(ring)
                                            : straightRing(ring);
    }
    const auto [area, perimeter] = utils::cartesianPolygonAreaPerimeter(ring);
    return {area, perimeter, NAN};
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
    if (m_mode != CalcMode::Cartesian && m_edges == Edges::Straight) {
        return StraightEdges(m_ellipsoid).length(line);
    }
    double sum = 0;
    for (int i = 1; i < line.size(); ++i) {
        sum += m_mode == CalcMode::Cartesian
                   ? utils::cartesianDistance(line[i - 1], line[i])
                   : utils::ellipsoidDistance(line[i - 1], line[i], m_ellipsoid.a, m_ellipsoid.rf);
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
