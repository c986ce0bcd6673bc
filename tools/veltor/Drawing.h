#pragma once

#include "MapFeature.h"

namespace veltor::tool {

/// The longitude that an edge covers: the shorter way, but along a pole, where all ways are none, as drawn.
[[nodiscard]] double drawnStep(QPointF from, QPointF to);

/// The longitudes that the ring covers in all: 0 when it closes, about 360 or -360 when it goes round a pole.
[[nodiscard]] double drawnTurn(const Ring& ring);

} // namespace veltor::tool
