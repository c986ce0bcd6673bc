#pragma once

#include <QtCore/QPointF>

namespace veltor::utils {

constexpr double radiansPerDegree = 0.017453292519943295;

/// Up to this magnitude a number counts as 0: an inverse flattening, a sine, a step of an iteration.
constexpr double tolerance = 1e-12;

/// Haversine of the arc between two positions from the differences of latitude and longitude and the
/// latitudes, in radians; the arc is 2 asin(sqrt(h)). Algebraically within [0, 1] for all real arguments;
/// roundings near the antipode are cut off, so that the arc is not NaN there.
[[nodiscard]] double haversine(double dLatitude, double dLongitude, double latitude1, double latitude2);

/// Angle at the centre of a sphere between two positions, x = longitude and y = latitude, in radians.
[[nodiscard]] double centralAngleOfRadians(QPointF p1, QPointF p2);

/// The same for positions in degrees; differences are taken before the conversion.
[[nodiscard]] double centralAngleOfDegrees(QPointF p1, QPointF p2);

} // namespace veltor::utils
