#pragma once

#include <QtCore/QPointF>

#include <cmath>

namespace veltor::utils {

constexpr double radiansPerDegree = 0.017453292519943295;

/// Up to this magnitude a number counts as 0: an inverse flattening, a sine, a step of an iteration.
constexpr double tolerance = 1e-12;

/// Haversine of the arc between two positions from the differences of latitude and longitude and the
/// latitudes, in radians; the arc is 2 asin(sqrt(h)). Algebraically within [0, 1] for all real arguments,
/// also for latitudes beyond a quarter turn; roundings past the ends are cut off, lest the arc be NaN.
[[nodiscard]] inline double haversine(double dLatitude, double dLongitude, double latitude1, double latitude2)
{
    const double sinLatitude = std::sin(dLatitude / 2);
    const double sinLongitude = std::sin(dLongitude / 2);
    const double h =
        sinLatitude * sinLatitude + sinLongitude * sinLongitude * std::cos(latitude1) * std::cos(latitude2);
    if (h > 1) {
        return 1;
    }
    return h < 0 ? 0 : h;
}

/// Angle at the centre of a sphere between two positions, x = longitude and y = latitude. The differences
/// are taken before @p toRadians converts them. Points on one parallel have a shorter form.
template <typename Conversion>
[[nodiscard]] double centralAngle(QPointF p1, QPointF p2, Conversion toRadians)
{
    const double dLatitude = toRadians(p1.y() - p2.y());
    const double dLongitude = toRadians(p1.x() - p2.x());
    if (dLatitude != 0) {
        return 2 *
               std::asin(std::sqrt(haversine(dLatitude, dLongitude, toRadians(p1.y()), toRadians(p2.y()))));
    }
    if (dLongitude != 0) {
        return 2 * std::asin(std::fabs(std::sin(dLongitude / 2) * std::cos(toRadians(p1.y()))));
    }
    return 0;
}

[[nodiscard]] inline double centralAngleOfRadians(QPointF p1, QPointF p2)
{
    return centralAngle(p1, p2, [](double angle) { return angle; });
}

[[nodiscard]] inline double centralAngleOfDegrees(QPointF p1, QPointF p2)
{
    return centralAngle(p1, p2, [](double angle) { return angle * radiansPerDegree; });
}

} // namespace veltor::utils
