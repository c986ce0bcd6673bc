#pragma once

#include <veltor/Export.h>

#include <QtCore/QLineF>
#include <QtCore/QPointF>

namespace veltor::utils {

/// @defgroup angles Angles and vectors
///
/// Angles, directions and lengths for drawing and editing tools. Coordinates are planar, in any unit.
/// All functions are reentrant and throw nothing; NaN coordinates give NaN.
/// @{

/// Squared length: of an offset, between two points, of a segment.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT double lengthSquared(double dx, double dy);
[[nodiscard]] VELTOR_UTILS_EXPORT double lengthSquared(QPointF a, QPointF b);
[[nodiscard]] VELTOR_UTILS_EXPORT double lengthSquared(const QLineF& line);
/// @}

/// The point a + (b - a) * k: @p k = 0 gives a, 1 gives b, other values lie on the line through both.
[[nodiscard]] VELTOR_UTILS_EXPORT QPointF scaleLength(QPointF a, QPointF b, double k);

/// Direction from a to b on a screen, whose y axis points down: radians in [-pi, pi], counter-clockwise
/// positive, 0 to the right. Equal points give 0.
[[nodiscard]] VELTOR_UTILS_EXPORT double pointsAngle(QPointF a, QPointF b);

/// pointsAngle() from the first to the second point of the line.
[[nodiscard]] VELTOR_UTILS_EXPORT double lineAngle(const QLineF& line);

/// Direction from a to b with the y axis up: radians in [-pi, pi], counter-clockwise positive.
[[nodiscard]] VELTOR_UTILS_EXPORT double pointsAngleDirect(QPointF a, QPointF b);

/// pointsAngleDirect() from the first to the second point of the line.
[[nodiscard]] VELTOR_UTILS_EXPORT double lineAngleDirect(const QLineF& line);

/// The angle brought into [0, period) by repeated subtraction or addition of the period.
///
/// It takes a step for every period, so the time grows with |angle| / period, and the roundings of the
/// steps add up: the last bits may differ from fixAngle(), which takes one step. A negative angle so
/// small that the sum rounds up gives the period itself.
/// @param angle   finite and below 2^53 periods in magnitude, or NaN, which gives NaN; with an infinite
///                or a larger one the steps never end
/// @param period  above 0, in the unit of the angle (2 pi, 360, 400)
[[nodiscard]] VELTOR_UTILS_EXPORT double normalizeAngle(double angle, double period);

/// The angle brought into [0, period) by fmod(), in one step. As with normalizeAngle(), a tiny negative
/// angle may give the period itself. An infinite angle gives NaN.
[[nodiscard]] VELTOR_UTILS_EXPORT double fixAngle(double angle, double period);

/// The smaller separation of two directions: 10 and 350 are 20 apart for a period of 360.
///
/// It is the smaller of the difference upwards and of its complement within one period. So it is the
/// true separation for directions at most one period apart and for whole periods (0 and 720 are 0 apart);
/// directions further apart give the complement, which may exceed half a period.
/// @param a, b    as for normalizeAngle()
/// @param period  above 0
[[nodiscard]] VELTOR_UTILS_EXPORT double angleBetween(double a, double b, double period);

/// The quadrant of an angle in radians: 0 for [0, pi/2), counter-clockwise to 3; -0.1 lies in 3.
/// An angle that is NaN, infinite or beyond 2^31 quadrants gives 0.
[[nodiscard]] VELTOR_UTILS_EXPORT int quadrant(double angle);

/// The end of a drag from @p a towards @p b held to a diagonal: the coordinate of b along the longer
/// offset is kept (x on a tie), the other one is placed so that both offsets are of one length. Where the
/// shorter offset is zero the end goes to the side of smaller coordinates: (0, 0) to (0, 5) gives (-5, 5).
[[nodiscard]] VELTOR_UTILS_EXPORT QPointF squareEndPoint(QPointF a, QPointF b);

/// @}

} // namespace veltor::utils
