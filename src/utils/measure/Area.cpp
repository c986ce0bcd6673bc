// Areas and perimeters on plane, sphere and ellipsoid.

#include <veltor/utils/Area.h>

#include "CentralAngle.h"
#include "Geodesic.h"

#include <veltor/utils/FuzzyGeometry.h>

#include <cmath>

namespace veltor::utils {
namespace {

constexpr double qtPrecision = 1e12;
constexpr double quarterTurn = 1.5707963267948966;

/// Area of the triangle on the unit sphere with these sides, by L'Huilier's theorem.
double triangleExcess(double a, double b, double c)
{
    const double s = (c + a + b) / 2;
    return 4 * std::atan(std::sqrt(std::fabs(std::tan(s / 2) * std::tan((s - c) / 2) * std::tan((s - a) / 2) *
                                             std::tan((s - b) / 2))));
}

/// Walks along a ring on the unit sphere, summing the arcs and the signed triangles with the north pole.
class SphericalWalk
{
public:
    explicit SphericalWalk(QPointF startDeg)
        : m_previous(startDeg * radiansPerDegree)
    {}

    void goTo(QPointF pointDeg)
    {
        const QPointF point = pointDeg * radiansPerDegree;
        const bool sameLongitude = fuzzyEq(m_previous.x(), point.x(), qtPrecision);
        if (sameLongitude && fuzzyEq(m_previous.y(), point.y(), qtPrecision)) {
            return;
        }
        const double arc =
            2 * std::asin(std::sqrt(haversine(point.y() - m_previous.y(), point.x() - m_previous.x(),
                                              m_previous.y(), point.y())));
        m_perimeter += arc;
        if (!sameLongitude) {
            const double excess = triangleExcess(quarterTurn - point.y(), quarterTurn - m_previous.y(), arc);
            m_area += m_previous.x() <= point.x() ? excess : -excess;
        }
        m_previous = point;
    }

    [[nodiscard]] double area() const { return std::fabs(m_area); }
    [[nodiscard]] double perimeter() const { return m_perimeter; }

private:
    QPointF m_previous;
    double m_area = 0;
    double m_perimeter = 0;
};

} // namespace

double determinant(const QVector<QPointF>& ring)
{
    if (ring.size() < 2) {
        return 0;
    }
    double sum = 0;
    QPointF previous = ring.last();
    for (const QPointF& p : ring) {
        sum += (p.y() + previous.y()) * (p.x() - previous.x());
        previous = p;
    }
    return sum;
}

double cartesianPolygonArea(const QVector<QPointF>& ring)
{
    return std::fabs(determinant(ring)) / 2;
}

std::pair<double, double> cartesianPolygonAreaPerimeter(const QVector<QPointF>& ring)
{
    if (ring.size() < 2) {
        return {0, 0};
    }
    double perimeter = 0;
    QPointF previous = ring.last();
    for (const QPointF& p : ring) {
        perimeter += std::hypot(p.x() - previous.x(), p.y() - previous.y());
        previous = p;
    }
    return {cartesianPolygonArea(ring), perimeter};
}

double cartesianRectArea(const QRectF& rect)
{
    return rect.width() * rect.height();
}

double sphericalPolygonArea(const QVector<QPointF>& ring, double radius)
{
    return sphericalPolygonAreaPerimeter(ring, radius).first;
}

std::pair<double, double> sphericalPolygonAreaPerimeter(const QVector<QPointF>& ring, double radius)
{
    if (ring.size() <= 2) {
        return {0, 0};
    }
    SphericalWalk walk(ring.first());
    for (int i = 1; i < ring.size(); ++i) {
        walk.goTo(ring[i]);
    }
    if (!fuzzyEq(ring.first(), ring.last(), qtPrecision)) {
        walk.goTo(ring.first());
    }
    return {radius * radius * walk.area(), radius * walk.perimeter()};
}

double ellipsoidPolygonArea(const QVector<QPointF>& ring, double a, double rf)
{
    return ellipsoidPolygonAreaPerimeter(ring, a, rf).first;
}

std::pair<double, double> ellipsoidPolygonAreaPerimeter(const QVector<QPointF>& ring, double a, double rf)
{
    if (ring.size() < 2) {
        return {0, 0};
    }
    if (std::fabs(rf) <= tolerance) {
        return sphericalPolygonAreaPerimeter(ring, a);
    }
    // What geod_polygonarea() does with two arrays of coordinates, without the arrays.
    const geod_geodesic& geodesic = preparedGeodesic(a, rf);
    geod_polygon polygon;
    geod_polygon_init(&polygon, 0);
    for (const QPointF& p : ring) {
        geod_polygon_addpoint(&geodesic, &polygon, p.y(), p.x());
    }
    double area = 0;
    double perimeter = 0;
    geod_polygon_compute(&geodesic, &polygon, 0, 1, &area, &perimeter);
    return {std::fabs(area), perimeter};
}

} // namespace veltor::utils
