// Rings as they are drawn in longitude and latitude.

#include "Drawing.h"

#include <cmath>

namespace veltor::tool {

double drawnStep(QPointF from, QPointF to)
{
    const double step = to.x() - from.x();
    const bool isAlongPole = std::fabs(from.y()) == 90 && from.y() == to.y();
    return isAlongPole || std::fabs(step) <= 180 ? step : step - 360 * std::round(step / 360);
}

double drawnTurn(const Ring& ring)
{
    double turn = 0;
    for (int i = 0; i < ring.size(); ++i) {
        turn += drawnStep(i == 0 ? ring.last() : ring[i - 1], ring[i]);
    }
    return turn;
}

} // namespace veltor::tool
