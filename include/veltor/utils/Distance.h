#pragma once

#include <veltor/Export.h>

#include <QtCore/QPointF>

#include <utility>

namespace veltor::utils {

/// @defgroup distances Distances and azimuths
///
/// Distances and azimuths on the plane, the sphere and the ellipsoid.
///
/// A position is x = longitude, y = latitude, both in degrees; longitudes may lie outside [-180, 180],
/// latitudes are within [-90, 90]. `a` is the semi-major axis and `rf` the inverse flattening of an
/// ellipsoid of revolution: WGS 84 is (6378137, 298.257223563). A negative rf is a prolate ellipsoid,
/// |rf| <= 1e-12 a sphere of radius a where the function says so. Distances are in the unit of `a`,
/// azimuths in degrees clockwise from north.
///
/// | function            | largest difference from the geodesic on WGS 84                |
/// |---------------------|---------------------------------------------------------------|
/// | ellipsoidDistance() | 15 nanometres                                                 |
/// | vincentyDistance()  | 7 micrometres to 1,000 km, 0.1 mm to 19,900 km                |
/// | lambertDistance()   | 1.4 m in 1,000 km, 13 m to 10,000 km, 480 m to 19,000 km,     |
/// |                     | 5 km to 19,900 km                                             |
/// | sphericalDistance() | 0.562 % of the distance                                       |
///
/// Near the antipode vincentyDistance() and lambertDistance() are up to **34 km** off.
/// Within 0.2 m of the antipode vincentyDistance() and lambertDistance() have no meaning at all: the results
/// were as low as -1.7e21 m.
///
/// ellipsoidDistance() was compared with 420 pairs calculated by exact integrals, flattenings of 1/50 among
/// them; the others with ellipsoidDistance() on 200,000 pairs in all directions and 200,000 near the
/// antipode (docs/measurement.md).
///
/// All functions are reentrant and throw nothing. On the sphere and the ellipsoid NaN and infinite
/// coordinates give NaN. The ellipsoid last used by a thread is kept prepared, so that measuring many
/// pairs on one ellipsoid prepares it once.
/// @{

/// Planar distance, in the unit of the coordinates; no overflow on the way (hypot). Infinite where an
/// offset is.
[[nodiscard]] VELTOR_UTILS_EXPORT double cartesianDistance(QPointF p1, QPointF p2);

/// Great-circle distance in metres on the sphere of radius 6370997 m, by the haversine formula. Accurate for
/// small and large distances alike; within some metres of the antipode the formula keeps 0.1 m.
///
/// Source: R. W. Sinnott, Virtues of the Haversine, Sky and Telescope 68 (1984).
[[nodiscard]] VELTOR_UTILS_EXPORT double sphericalDistance(QPointF p1, QPointF p2);

/// Length of the shortest geodesic, by PROJ's `geod_inverse`. Right for all pairs: poles, antipodes, across
/// the +-180 meridian. |rf| <= 1e-12 gives the great circle on the sphere of radius a. A latitude beyond
/// +-90 gives NaN.
///
/// Source: C. F. F. Karney, Algorithms for geodesics, J. Geodesy 87 (2013), sections 3 and 4.
[[nodiscard]] VELTOR_UTILS_EXPORT double ellipsoidDistance(QPointF p1, QPointF p2, double a, double rf);

/// Length of the geodesic by Vincenty's iteration, a few times as fast as ellipsoidDistance().
///
/// - Points that are equal within a relative 1e-12 (an absolute one beside a 0), and positions **exactly
///   antipodal** to each other, whose auxiliary arc has a sine of 0, give 0.
/// - Within about 100 km of the antipode, where the iteration does not settle in 100 rounds, the result is
///   Lambert's formula and shares its error: up to 34 km, and within 0.2 m no meaning at all.
/// - |rf| <= 1e-12 gives the great circle on the sphere of radius a with the coordinates **taken as
///   radians**, unlike ellipsoidDistance().
///
/// Source: T. Vincenty, Direct and inverse solutions of geodesics on the ellipsoid with application of nested
/// equations, Survey Review 23 (1975).
[[nodiscard]] VELTOR_UTILS_EXPORT double vincentyDistance(QPointF p1, QPointF p2, double a, double rf);

/// Length of the geodesic to the first order of the flattening, by Lambert's formula for long lines. No
/// iteration: the same time for every pair. Near the antipode the error grows to 34 km, and within 0.2 m of
/// it the result has no meaning. Equal points and |rf| <= 1e-12 as with vincentyDistance(): 0, and
/// **radians**.
///
/// Source: W. D. Lambert, The distance between two widely separated points on the surface of the Earth,
/// J. Washington Acad. Sci. 32 (1942).
[[nodiscard]] VELTOR_UTILS_EXPORT double lambertDistance(QPointF p1, QPointF p2, double a, double rf);

/// The point reached from @p start along the geodesic of the given azimuth.
///
/// @param start           longitude and latitude in degrees
/// @param azimuthDeg      at the start, in degrees, any value
/// @param distanceMetres  in the unit of a; negative goes backwards
/// @param a               semi-major axis
/// @param rf              not 0, which would be an infinite flattening: the result is then NaN or garbage.
///                        Pass an infinity for a sphere.
/// @return x = longitude, y = latitude in degrees. The longitude is not reduced: it follows the path, so
///         a path eastwards from 179 ends above 180, and one round the equator at the start plus 360.
[[nodiscard]] VELTOR_UTILS_EXPORT QPointF directGeodesicProblem(QPointF start, double azimuthDeg,
                                                                double distanceMetres, double a, double rf);

/// Distance and azimuth of the shortest geodesic from @p p1 to @p p2; directGeodesicProblem() inverts it.
///
/// @param p1, p2  longitude and latitude in degrees
/// @param a   semi-major axis
/// @param rf  as for directGeodesicProblem(): infinity, not 0, for a sphere
/// @return (distance, azimuth at p1 in degrees within [0, 360)). Where several geodesics are the shortest
///         (antipodes, poles) the azimuth is PROJ's choice; equal points give (0, 180), south of the
///         equator (0, 0).
[[nodiscard]] VELTOR_UTILS_EXPORT std::pair<double, double> backGeodesicProblem(QPointF p1, QPointF p2,
                                                                                double a, double rf);

/// @}

} // namespace veltor::utils
