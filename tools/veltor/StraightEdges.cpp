// Lines that are straight in longitude and latitude, on the sphere and the ellipsoid.

#include "StraightEdges.h"

#include "Drawing.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace veltor::tool {
namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double radians = pi / 180;

struct Node
{
    double place; // within [0, 1]
    double weight;
};

// Gauss's rules on [0, 1]: (1 -+ x) / 2 and half the weights of Abramowitz and Stegun, table 25.4.
constexpr std::array<Node, 2> shortNodes{{{0.21132486540518712, 0.5}, {0.78867513459481288, 0.5}}};
constexpr std::array<Node, 5> longNodes{{{0.04691007703066800, 0.11846344252809454},
                                         {0.23076534494715845, 0.23931433524968324},
                                         {0.5, 0.28444444444444444},
                                         {0.76923465505284155, 0.23931433524968324},
                                         {0.95308992296933200, 0.11846344252809454}}};
constexpr double longestShort = 0.2 * radians; // the error of the rule of two is of the fifth power
constexpr double longestPiece = 2 * radians;

/// atanh(e x) / e, for an imaginary e too: the squared one is given.
double atanhOverE(double e2, double x)
{
    const double e = std::sqrt(std::fabs(e2));
    if (e == 0) {
        return x;
    }
    return (e2 > 0 ? std::atanh(e * x) : std::atan(e * x)) / e;
}

} // namespace

StraightEdges::StraightEdges(const Ellipsoid& ellipsoid)
    : m_a(ellipsoid.a)
    , m_e2((2 - 1 / ellipsoid.rf) / ellipsoid.rf)
    , m_halfPolar(ellipsoid.a * ellipsoid.a * (1 - m_e2) / 2)
{}

double StraightEdges::zone(double sinLatitude) const
{
    return m_halfPolar *
           (sinLatitude / (1 - m_e2 * sinLatitude * sinLatitude) + atanhOverE(m_e2, sinLatitude));
}

double StraightEdges::area() const
{
    return 4 * pi * zone(1);
}

double StraightEdges::element(double sinLatitude, double cosLatitude, double dLatitude,
                              double dLongitude) const
{
    const double w2 = 1 - m_e2 * sinLatitude * sinLatitude;
    const double w = std::sqrt(w2);
    return std::hypot(m_a * (1 - m_e2) / (w2 * w) * dLatitude, m_a / w * cosLatitude * dLongitude);
}

template <typename Nodes>
EdgeMeasures StraightEdges::integral(const Nodes& nodes, double from, double dLatitude,
                                     double dLongitude) const
{
    EdgeMeasures sum{0, 0};
    for (const Node& node : nodes) {
        const double latitude = from + node.place * dLatitude;
        const double sine = std::sin(latitude);
        sum.area += node.weight * zone(sine);
        sum.length += node.weight * element(sine, std::cos(latitude), dLatitude, dLongitude);
    }
    return {sum.area * dLongitude, sum.length};
}

EdgeMeasures StraightEdges::edge(QPointF from, QPointF to) const
{
    const double dLongitude = drawnStep(from, to) * radians;
    const double dLatitude = (to.y() - from.y()) * radians;
    constexpr double nearPole = 85; // where the length of an edge changes quickly
    if (std::fabs(dLatitude) <= longestShort && std::fabs(from.y()) < nearPole) {
        return integral(shortNodes, from.y() * radians, dLatitude, dLongitude);
    }
    const double pieces = std::max(1.0, std::ceil(std::fabs(dLatitude) / longestPiece));
    EdgeMeasures sum{0, 0};
    for (int i = 0; i < pieces; ++i) {
        const EdgeMeasures piece = integral(longNodes, from.y() * radians + i / pieces * dLatitude,
                                            dLatitude / pieces, dLongitude / pieces);
        sum.area += piece.area;
        sum.length += piece.length;
    }
    return sum;
}

std::pair<double, double> StraightEdges::ring(const Ring& ring) const
{
    EdgeMeasures sum{0, 0};
    for (int i = 0; i < ring.size(); ++i) {
        const EdgeMeasures next = edge(i == 0 ? ring.last() : ring[i - 1], ring[i]);
        sum.area += next.area;
        sum.length += next.length;
    }
    return {sum.area, sum.length};
}

double StraightEdges::length(const Ring& line) const
{
    double sum = 0;
    for (int i = 1; i < line.size(); ++i) {
        sum += edge(line[i - 1], line[i]).length;
    }
    return sum;
}

} // namespace veltor::tool
