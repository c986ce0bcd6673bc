#pragma once

#include "Ellipsoid.h"
#include "MapFeature.h"

#include <utility>

namespace veltor::tool {

/// The area between an edge and the equator, positive eastwards on the northern side, and its length.
struct EdgeMeasures
{
    double area;
    double length;
};

/// Lines that are straight in longitude and latitude, as RFC 7946 has them between two positions, on the
/// sphere or the ellipsoid. Maps are rarely cut at the antimeridian as it asks them to be, so that from 179
/// to -179 a line goes the shorter way; along a pole it goes as drawn.
///
/// Along an edge the latitude is a linear function of the longitude; the area between it and the equator is
/// the integral of the authalic function over the longitude, its length that of the line element, both by
/// Gauss's rule of five points on pieces of at most two degrees of latitude (of two points to a fifth).
/// Source of the integrands: C. F. F. Karney, Geodesics on an ellipsoid of revolution (2011), section 15; J.
/// P. Snyder, Map Projections (1987), equations 3-12 and 4-24.
class StraightEdges
{
public:
    explicit StraightEdges(const Ellipsoid& ellipsoid);

    /// Of the whole surface.
    [[nodiscard]] double area() const;
    /// (signed area between the ring and the equator, perimeter).
    [[nodiscard]] std::pair<double, double> ring(const Ring& ring) const;
    [[nodiscard]] double length(const Ring& line) const;

    [[nodiscard]] EdgeMeasures edge(QPointF from, QPointF to) const;
    /// Between the equator and a latitude, for each radian of longitude.
    [[nodiscard]] double zone(double sinLatitude) const;

private:
    template <typename Nodes>
    [[nodiscard]] EdgeMeasures integral(const Nodes& nodes, double from, double dLatitude,
                                        double dLongitude) const;
    [[nodiscard]] double element(double sinLatitude, double cosLatitude, double dLatitude,
                                 double dLongitude) const;

    double m_a;
    double m_e2;        // first eccentricity squared, negative for a prolate ellipsoid
    double m_halfPolar; // half of the polar semi-axis squared
};

} // namespace veltor::tool
