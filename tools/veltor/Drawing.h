#pragma once

#include "MapFeature.h"

namespace veltor::tool {

/// How a ring lies in longitude and latitude when its longitudes follow it without jumps.
struct Drawing
{
    double west = 0, east = 0, south = 90, north = -90; ///< the longitudes from the first point on
    double turn = 0; ///< 0 when it closes in longitude, 360 or -360 when it goes round a pole
};

/// The longitude that an edge covers: the shorter way, but along a pole, where all ways are none, as drawn.
[[nodiscard]] double drawnStep(QPointF from, QPointF to);

[[nodiscard]] Drawing drawingOf(const Ring& ring);

/// The part of the sphere between the ring as drawn and the equator, signed.
[[nodiscard]] double drawnPart(const Ring& ring);

} // namespace veltor::tool
