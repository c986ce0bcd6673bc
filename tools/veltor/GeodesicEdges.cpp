// Geodesics between positions, short ones by their difference from a simpler line.

#include "GeodesicEdges.h"

#include "Drawing.h"

#include <cmath>

namespace veltor::tool {
namespace {

constexpr double radians = 3.14159265358979323846 / 180;

/// A sum with the rounding errors of its terms (A. Neumaier, 1974): the areas under edges cancel.
class ExactSum
{
public:
    void add(double term)
    {
        const double sum = m_sum + term;
        m_rest += std::fabs(m_sum) >= std::fabs(term) ? m_sum - sum + term : term - sum + m_sum;
        m_sum = sum;
    }
    [[nodiscard]] double value() const { return m_sum + m_rest; }

private:
    double m_sum = 0;
    double m_rest = 0;
};

} // namespace

GeodesicEdges::GeodesicEdges(const Ellipsoid& ellipsoid)
    : m_straight(ellipsoid)
    , m_a(ellipsoid.a)
    , m_e2((2 - 1 / ellipsoid.rf) / ellipsoid.rf)
    , m_isNearlyRound(std::fabs(ellipsoid.rf) >= 200)
{
    geod_init(&m_geodesic, ellipsoid.a, 1 / ellipsoid.rf);
}

/// Makes the measures of a straight edge those of the geodesic; false when it is too long or too crooked.
bool GeodesicEdges::bend(EdgeMeasures& edge, double latitude, double dLatitude, double dLongitude) const
{
    constexpr double longest = 3e-3;    // of the semi-major axis
    constexpr double mostTurned = 2e-3; // radians
    if (edge.length > longest * m_a) {
        return false;
    }
    const double sine = std::sin(latitude);
    const double cosine = std::cos(latitude);
    const double w2 = 1 - m_e2 * sine * sine;
    const double w = std::sqrt(w2);
    const double meridian = m_a * (1 - m_e2) / (w2 * w);            // radius of curvature
    const double change = 3 * meridian * m_e2 * sine * cosine / w2; // of it with the latitude
    const double parallel = m_a / w * cosine;                       // radius
    const double square = edge.length * edge.length;
    const double turn = dLongitude * (sine + dLatitude * dLatitude / square *
                                                 (change * parallel + meridian * meridian * sine));
    if (!(std::fabs(turn) <= mostTurned)) {
        return false;
    }
    edge.area += turn * square / 12;
    edge.length -= turn * turn * edge.length / 24;
    return true;
}

EdgeMeasures GeodesicEdges::edge(QPointF from, QPointF to) const
{
    const double step = drawnStep(from, to);
    if (std::fabs(from.y()) == 90 && from.y() == to.y()) {
        return {step * radians * m_straight.zone(from.y() / 90), 0};
    }
    if (from == to) {
        return {0, 0};
    }
    constexpr double shortDegrees = 0.2; // of latitude; of longitude more, towards the poles
    const double dLatitude = to.y() - from.y();
    if (m_isNearlyRound && std::fabs(dLatitude) <= shortDegrees && std::fabs(step) <= 10 * shortDegrees) {
        EdgeMeasures edge = m_straight.edge(from, to);
        if (bend(edge, (from.y() + to.y()) / 2 * radians, dLatitude * radians, step * radians)) {
            return edge;
        }
    }
    // Of two ways round that are equally long the one that is drawn.
    const bool isHalfTurn = std::fabs(step) == 180;
    EdgeMeasures edge{0, 0};
    geod_geninverse(&m_geodesic, from.y(), isHalfTurn ? 0 : from.x(), to.y(), isHalfTurn ? step : to.x(),
                    &edge.length, nullptr, nullptr, nullptr, nullptr, nullptr, &edge.area);
    return edge;
}

std::pair<double, double> GeodesicEdges::ring(const Ring& ring) const
{
    ExactSum area;
    double perimeter = 0;
    for (int i = 0; i < ring.size(); ++i) {
        const EdgeMeasures next = edge(i == 0 ? ring.last() : ring[i - 1], ring[i]);
        area.add(next.area);
        perimeter += next.length;
    }
    return {area.value(), perimeter};
}

double GeodesicEdges::length(const Ring& line) const
{
    double sum = 0;
    for (int i = 1; i < line.size(); ++i) {
        sum += edge(line[i - 1], line[i]).length;
    }
    return sum;
}

} // namespace veltor::tool
