#pragma once

#include <QtCore/QString>

namespace veltor::tool {

/// WGS 84 unless --ellipsoid names another one. A sphere is kept as an infinite inverse flattening: the
/// library takes that for a flattening of 0 in every function, while some read coordinates as radians
/// when the inverse flattening is 0.
struct Ellipsoid
{
    double a = 6378137;
    double rf = 298.257223563;
};

/// The ellipsoid of "6378137,298.257223563"; an inverse flattening of 0 is a sphere.
/// @throws UsageError
[[nodiscard]] Ellipsoid parseEllipsoid(const QString& text);

} // namespace veltor::tool
