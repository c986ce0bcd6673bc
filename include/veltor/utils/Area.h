#pragma once

#include <veltor/Export.h>

#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QVector>

#include <utility>

namespace veltor::utils {

/// @defgroup areas Areas and perimeters
///
/// Areas and perimeters of polygons on the plane, the sphere and the ellipsoid.
///
/// A polygon is one ring of points, closed implicitly: whether it repeats its first point at the end makes
/// no difference. On the plane the coordinates are in any one unit; on the sphere and the ellipsoid they
/// are x = longitude, y = latitude in degrees, latitudes within [-90, 90]. The orientation makes no
/// difference: areas are never negative. Holes are the caller's to subtract.
///
/// `a` is the semi-major axis (or the sphere's radius) and `rf` the inverse flattening, as in Distance.h;
/// |rf| <= 1e-12 is a sphere of radius a, a negative rf a prolate ellipsoid. Results are in the unit of
/// `a` or of the radius (metres, square metres); pairs are (area, perimeter).
///
/// Fewer than two points give 0. A NaN coordinate gives NaN; so does an infinite one, or infinity on the
/// plane. All functions are reentrant and throw nothing; the ellipsoid last used is prepared once a thread.
/// @{

/// The trapezoid sum S of the ring, the sum of (y + y') * (x - x') over its edges: minus twice the signed
/// area of a ring that is counter-clockwise with the y axis up.
[[nodiscard]] VELTOR_UTILS_EXPORT double determinant(const QVector<QPointF>& ring);

/// |S| / 2, on the plane. Coordinates far from the origin cancel: shift them near it where that matters.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT double cartesianPolygonArea(const QVector<QPointF>& ring);
[[nodiscard]] VELTOR_UTILS_EXPORT std::pair<double, double>
cartesianPolygonAreaPerimeter(const QVector<QPointF>& ring);
/// @}

/// Width times height, negative if one of them is.
[[nodiscard]] VELTOR_UTILS_EXPORT double cartesianRectArea(const QRectF& rect);

/// Area and perimeter on the sphere, edges being great-circle arcs.
///
/// The area is the sum, signed by direction, of the triangles that each edge forms with the north pole,
/// their excess by L'Huilier's theorem (Todhunter, Spherical Trigonometry, section 102). Longitudes are
/// taken as they stand: each edge is the shorter arc between its ends, but its sign follows the stored
/// numbers, so a ring that steps from 179 to -179 gets a wrong area (its perimeter is right); unroll such
/// a ring to 181 first. A ring around the north pole that steps along the +-180 meridian and the pole is
/// right; one around the south pole gives the area of the rest of the sphere.
/// A point that repeats the one before it (within a relative 1e-12) is skipped.
///
/// Two points give 0 for both results, unlike on the ellipsoid.
/// @param ring    longitudes and latitudes in degrees
/// @param radius  in metres for results in metres
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT double sphericalPolygonArea(const QVector<QPointF>& ring, double radius);
[[nodiscard]] VELTOR_UTILS_EXPORT std::pair<double, double>
sphericalPolygonAreaPerimeter(const QVector<QPointF>& ring, double radius);
/// @}

/// Area and perimeter on the ellipsoid, edges being geodesics; by PROJ's `geod_polygonarea`. Source: C. F. F.
/// Karney, Algorithms for geodesics, J. Geodesy 87 (2013), section 6.
///
/// Rings may cross the +-180 meridian and enclose a pole; longitudes may exceed 180. Of the two sides of a
/// ring the smaller one is measured. Two points give an area of 0 and the length there and back. The
/// errors on WGS 84 are below 0.1 square metre a vertex and 15 nanometres an edge.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT double ellipsoidPolygonArea(const QVector<QPointF>& ring, double a,
                                                              double rf);
[[nodiscard]] VELTOR_UTILS_EXPORT std::pair<double, double>
ellipsoidPolygonAreaPerimeter(const QVector<QPointF>& ring, double a, double rf);
/// @}

/// @}

} // namespace veltor::utils
