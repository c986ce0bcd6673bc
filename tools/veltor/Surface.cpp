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
    bool closes = true;                                 // in longitude
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
    drawing.closes = std::fabs(longitude + drawnStep(ring.last(), ring.first())) < 180;
    return drawing;
}

/// The part of the sphere that the ring encloses as drawn. An edge along which the latitude grows evenly has
/// the mean of its sines above the equator.
double drawnPart(const Ring& ring)
{
    double sum = 0;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF from = i == 0 ? ring.last() : ring[i - 1];
        const double half = (ring[i].y() - from.y()) / 2 * radians;
        const double mean = std::sin((ring[i].y() + from.y()) / 2 * radians);
        sum += drawnStep(from, ring[i]) * radians * mean * (half == 0 ? 1 : std::sin(half) / half);
    }
    return std::fabs(sum) / (4 * pi);
}

} // namespace

Surface::Surface(CalcMode mode, const Ellipsoid& ellipsoid, Edges edges)
    : m_mode(mode)
    , m_ellipsoid(ellipsoid)
    , m_edges(edges)
    , m_whole(StraightEdges(ellipsoid).area())
{}

/// The library gives the smaller of the two sides; the drawing tells which one is meant.
std::pair<double, double> Surface::geodesicRing(const Ring& ring) const
{
    const auto [smaller, perimeter] =
        utils::ellipsoidPolygonAreaPerimeter(ring, m_ellipsoid.a, m_ellipsoid.rf);
    if (ring.size() < 3) {
        return {smaller, perimeter};
    }
    const Drawing drawing = drawingOf(ring);
    const double height = std::sin(drawing.north * radians) - std::sin(drawing.south * radians);
    const double boxPart = (drawing.east - drawing.west) / 360 * height / 2;
    // What lies within a quarter of the sphere need not be looked at closely: most rings do.
    if (!drawing.closes || boxPart < 0.25) {
        return {smaller, perimeter};
    }
    const double drawn = drawnPart(ring) * m_whole;
    const double larger = m_whole - smaller;
    return {std::fabs(larger - drawn) < std::fabs(smaller - drawn) ? larger : smaller, perimeter};
}

std::pair<double, double> Surface::measureRing(const Ring& ring) const
{
    if (m_mode == CalcMode::Cartesian) {
        return utils::cartesianPolygonAreaPerimeter(ring);
    }
    return m_edges == Edges::Straight ? StraightEdges(m_ellipsoid).ring(ring) : geodesicRing(ring);
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
        double outer = 0;
        double holes = 0;
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const auto [area, perimeter] = measureRing(polygon[i]);
            (i == 0 ? outer : holes) += area;
            sum.perimeter += perimeter;
        }
        if (holes > outer * (1 + 1e-9)) {
            notes.add(Text::tr("дыры больше многоугольника; его площадь взята за 0"), feature);
        }
        sum.area += std::max(0.0, outer - holes);
    }
    for (const Ring& line : feature.lines) {
        sum.length += measureLine(line);
    }
    return sum;
}

} // namespace veltor::tool
