#include "CentralAngle.h"

#include <cmath>

namespace veltor::utils {
namespace {

template <typename Conversion>
double centralAngle(QPointF p1, QPointF p2, Conversion toRadians)
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

} // namespace

double haversine(double dLatitude, double dLongitude, double latitude1, double latitude2)
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

double centralAngleOfRadians(QPointF p1, QPointF p2)
{
    return centralAngle(p1, p2, [](double angle) { return angle; });
}

double centralAngleOfDegrees(QPointF p1, QPointF p2)
{
    return centralAngle(p1, p2, [](double angle) { return angle * radiansPerDegree; });
}

} // namespace veltor::utils
