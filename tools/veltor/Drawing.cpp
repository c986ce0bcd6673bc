// Rings as they are drawn in longitude and latitude.

#include "Drawing.h"

#include <algorithm>
#include <cmath>

namespace veltor::tool {
namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double radians = pi / 180;

} // namespace

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
    drawing.turn = longitude + drawnStep(ring.last(), ring.first());
    return drawing;
}

double drawnPart(const Ring& ring)
{
    double sum =
        0; // an edge along which the latitude grows evenly has the mean of its sines above the equator
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF from = i == 0 ? ring.last() : ring[i - 1];
        const double half = (ring[i].y() - from.y()) / 2 * radians;
        const double mean = std::sin((ring[i].y() + from.y()) / 2 * radians);
        sum += drawnStep(from, ring[i]) * radians * mean * (half == 0 ? 1 : std::sin(half) / half);
    }
    return sum / (4 * pi);
}

} // namespace veltor::tool
