// Angles and vectors of the plane.

#include <veltor/utils/Angles.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltor::utils {

double lengthSquared(double dx, double dy)
{
    return dx * dx + dy * dy;
}

double lengthSquared(QPointF a, QPointF b)
{
    return lengthSquared(a.x() - b.x(), a.y() - b.y());
}

double lengthSquared(const QLineF& line)
{
    return lengthSquared(line.dx(), line.dy());
}

QPointF scaleLength(QPointF a, QPointF b, double k)
{
    return a + (b - a) * k;
}

double pointsAngle(QPointF a, QPointF b)
{
    return std::atan2(a.y() - b.y(), b.x() - a.x());
}

double lineAngle(const QLineF& line)
{
    return pointsAngle(line.p1(), line.p2());
}

double pointsAngleDirect(QPointF a, QPointF b)
{
    return std::atan2(b.y() - a.y(), b.x() - a.x());
}

double lineAngleDirect(const QLineF& line)
{
    return pointsAngleDirect(line.p1(), line.p2());
}

double normalizeAngle(double angle, double period)
{
    if (angle >= 0) {
        while (angle >= period) {
            angle -= period;
        }
        return angle;
    }
    do {
        angle += period;
    } while (angle < 0);
    return angle;
}

double fixAngle(double angle, double period)
{
    const double remainder = std::fmod(angle, period);
    return remainder < 0 ? remainder + period : remainder;
}

double angleBetween(double a, double b, double period)
{
    const double low = std::min(a, b);
    const double high = std::max(a, b);
    return std::min(high - low, normalizeAngle(low - high, period));
}

int quadrant(double angle)
{
    constexpr double quadrantsPerRadian = 0.6366197723675814;
    const double turns = std::floor(angle * quadrantsPerRadian);
    constexpr double smallest = std::numeric_limits<int>::min();
    constexpr double largest = std::numeric_limits<int>::max();
    if (!(turns >= smallest && turns <= largest)) {
        return 0;
    }
    const int remainder = static_cast<int>(turns) % 4;
    return remainder < 0 ? remainder + 4 : remainder;
}

QPointF squareEndPoint(QPointF a, QPointF b)
{
    const auto signOf = [](double offset) { return offset < 0 ? -1.0 : 1.0; };
    const double dx = a.x() - b.x();
    const double dy = a.y() - b.y();
    if (std::fabs(dx) < std::fabs(dy)) {
        return {a.x() - std::fabs(dy) * signOf(dx), b.y()};
    }
    return {b.x(), a.y() - std::fabs(dx) * signOf(dy)};
}

} // namespace veltor::utils
