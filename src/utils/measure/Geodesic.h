#pragma once

#include <geodesic.h>

namespace veltor::utils {

/// PROJ's geodesic for the ellipsoid. It stays prepared until the calling thread asks for another one;
/// the reference is valid until then.
[[nodiscard]] const geod_geodesic& preparedGeodesic(double a, double rf);

} // namespace veltor::utils
