// Measures of features on the plane, the sphere and the ellipsoid.

#include "Surface.h"

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

constexpr double pi = 3.14159265358979323846;
constexpr double radians = pi / 180;

/// How a ring lies in longitude and latitude.
struct Drawing
{
    double west = 0, east = 0, south = 90, north = -90; // of the longitudes without jumps
    double turn = 0;                                    // 0 when it closes in longitude, else +-360
};

/// The longitude that an edge covers: the shorter way, but along a pole, where all ways are none, as drawn.
double drawnStep(QPointF from, QPointF to)
{
    const double step = to.x() - from.x();
    const bool isAlongPole = std::fabs(from.y()) == 90 && from.y() == to.y();
    return isAlongPole || std::fabs(step) <= 180 ? step : step - 360 * std::round(step / 360);
}

Drawing drawingOf(const Ring& ring)
{
    Drawing drawing;
    double longitude = 0; // from the first point on
    for (int i = 0; i < ring.size(); ++i) {
        longitude += i == 0 ? 0 : drawnStep(ring[i - 1], ring[i]);
        drawing.west = std::min(drawing.west, longitude);
        drawing.east = std::max(drawing.east, longitude);
        drawing.south = std::min(drawing.south, ring[i].y());
        drawing.north = std::max(drawing.north, ring[i].y());
    }
    drawing.turn = longitude + drawnStep(ring.last(), ring.first());
    return drawing;
}

/// The part of the sphere between the ring as drawn and the equator, signed. An edge along which the latitude
/// grows evenly has the mean of its sines above the equator.
double drawnPart(const Ring& ring)
{
    double sum = 0;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF from = i == 0 ? ring.last() : ring[i - 1];
        const double half = (ring[i].y() - from.y()) / 2 * radians;
        const double mean = std::sin((ring[i].y() + from.y()) / 2 * radians);
        sum += drawnStep(from, ring[i]) * radians * mean * (half == 0 ? 1 : std::sin(half) / half);
    }
    return sum / (4 * pi);
}

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

Surface::RingMeasures Surface::measureRing(const Ring& ring) const
{
    if (m_mode != CalcMode::Cartesian && m_edges == Edges::Geodesic) {
        return geodesicRing(ring);
    }
    const auto [area, perimeter] = m_mode == CalcMode::Cartesian ? utils::cartesianPolygonAreaPerimeter(ring)
                                                                 : StraightEdges(m_ellipsoid).ring(ring);
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
