#pragma once

#include <veltor/Export.h>

#include <QtCore/QMarginsF>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtCore/QSizeF>

/// @defgroup fuzzy Fuzzy comparisons and rectangles
///
/// Tolerant, rounded and exact comparisons of coordinates, and the algebra of rectangles and extents. The
/// functions extend Qt's value types and therefore stand in the global namespace. All are reentrant and
/// throw nothing.
///
/// - A **factor** f is the inverse of a relative tolerance; Qt's own fuzzy rule has 1e12. Differences are
///   multiplied by it, so a factor of 0 makes all finite values equal and a huge one compares exactly. A
///   `QSizeF` factor gives each axis its own: its width for horizontal components, its height for vertical
///   ones; a `QSize` of decimal places likewise.
/// - An **extent** is a `QMarginsF` read as the left, top, right and bottom sides of a box.
/// - NaN equals nothing, and an infinity equals nothing by difference; the comparisons by order
///   (fuzzyContains(), fuzzyIntersectsRect()) accept infinities that the exact order accepts.
/// - `contains` implies `intersectsRect` for extents whose sides are in order, and for rectangles of which
///   at least one has a positive size.
/// @{

/// The reference magnitude of two values: 1 if either is exactly 0, otherwise the smaller magnitude.
[[nodiscard]] VELTOR_UTILS_EXPORT double fuzzyEpsilon(double a, double b);

/// |v| * f <= 1; of a size, for its width and its height.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIsZero(double v, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIsZero(const QSizeF& s, double f);
/// @}

/// |a - b| * f <= fuzzyEpsilon(a, b): beside an exact 0 the tolerance is absolute, 1 / f, otherwise
/// relative to the smaller magnitude. Of points, sizes and extents: for each component.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(double a, double b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(const QPointF& a, const QPointF& b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(const QPointF& a, const QPointF& b, const QSizeF& f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(const QSizeF& a, const QSizeF& b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(const QSizeF& a, const QSizeF& b, const QSizeF& f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEq(const QMarginsF& a, const QMarginsF& b, const QSizeF& f);
/// @}

/// fuzzyEq() of the origins and of the sizes as they are stored; nothing is normalised.
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyEqualRects(const QRectF& a, const QRectF& b, const QSizeF& f);

/// The sign of a - b, 0 where (a - b) * f stays within fuzzyEpsilon(a, b), and for NaN.
[[nodiscard]] VELTOR_UTILS_EXPORT int fuzzySign(double a, double b, double f);

/// The sign of v, 0 where v * f stays within [-1, 1], and for NaN.
[[nodiscard]] VELTOR_UTILS_EXPORT int fuzzyZeroSign(double v, double f);

/// Exact equality after veltor::utils::getRound() to n decimal places; of points, sizes and extents: for
/// each component.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(double a, double b, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(const QPointF& a, const QPointF& b, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(const QPointF& a, const QPointF& b, const QSize& n);
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(const QSizeF& a, const QSizeF& b, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(const QSizeF& a, const QSizeF& b, const QSize& n);
[[nodiscard]] VELTOR_UTILS_EXPORT bool roundEq(const QMarginsF& a, const QMarginsF& b, const QSize& n);
/// @}

/// Exact equality of every component. (`==` of Qt's own types is fuzzy.) NaN is never equal.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool preciseEq(const QPointF& a, const QPointF& b);
[[nodiscard]] VELTOR_UTILS_EXPORT bool preciseEq(const QSizeF& a, const QSizeF& b);
[[nodiscard]] VELTOR_UTILS_EXPORT bool preciseEq(const QMarginsF& a, const QMarginsF& b);
/// @}

/// Whether a coordinate is NaN; is infinite; is either of them.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool isNan(const QPointF& p);
[[nodiscard]] VELTOR_UTILS_EXPORT bool isInfinite(const QPointF& p);
[[nodiscard]] VELTOR_UTILS_EXPORT bool isIncorrect(const QPointF& p);
/// @}

/// Every component times @p k: of a rectangle x, y, width and height, of an extent its four sides.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF scaleRect(const QRectF& r, double k);
[[nodiscard]] VELTOR_UTILS_EXPORT QMarginsF scaleRect(const QMarginsF& m, double k);
/// @}

/// scaleRect() by another name.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF multiplyRect(const QRectF& r, double k);
VELTOR_UTILS_EXPORT QRectF& operator*=(QRectF& r, double k);
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF operator*(const QRectF& r, double k);
/// @}

/// Every component times 1 / k: one division, so the last bit may differ from a division of each.
/// @{
VELTOR_UTILS_EXPORT QRectF& operator/=(QRectF& r, double k);
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF operator/(const QRectF& r, double k);
/// @}

/// The extent (x, y, x + width, y + height), and back. Back and forth keeps a rectangle up to the rounding
/// of these sums.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT QMarginsF rect2Margins(const QRectF& r);
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF margins2Rect(const QMarginsF& m);
/// @}

/// Whether @p b lies within @p a; edges may touch. Rectangles are normalised first, so unlike
/// `QRectF::contains` an empty one may contain and be contained; extents are taken as they stand.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool contains(const QRectF& a, const QRectF& b);
[[nodiscard]] VELTOR_UTILS_EXPORT bool contains(const QMarginsF& a, const QMarginsF& b);
/// @}

/// Whether the point lies within the extent or on its edge.
[[nodiscard]] VELTOR_UTILS_EXPORT bool containsPoint(const QMarginsF& m, const QPointF& p);

/// contains() with a tolerance: a side may be passed by as much as fuzzyEq() with the factor lets pass.
/// The rectangle is normalised, its edges belong to it.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyContains(const QRectF& a, const QRectF& b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyContains(const QRectF& a, const QRectF& b, const QSizeF& f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyContains(const QRectF& r, const QPointF& p, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyContains(const QRectF& r, const QPointF& p, const QSizeF& f);
/// @}

/// Whether two rectangles share something:
/// - both of positive width and height: an inner point, as `QRectF::intersects` has it (touching is not
///   enough);
/// - neither: their origins are exactly equal;
/// - one of them: the other one, normalised, shares a point with it, edges included. A point on the edge
///   of a box or a line that crosses it intersects the box, in either order of the arguments.
[[nodiscard]] VELTOR_UTILS_EXPORT bool intersectsRect(const QRectF& a, const QRectF& b);

/// Whether two extents share a point, edges included.
[[nodiscard]] VELTOR_UTILS_EXPORT bool intersectsRect(const QMarginsF& a, const QMarginsF& b);

/// intersectsRect() with a tolerance: gaps within fuzzyEq() of the factor are bridged, and origins of two
/// rectangles without a positive size are compared by it. With a huge factor the result is the exact one,
/// but for two boxes whose edges are equal: they touch, and within any tolerance that is sharing.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIntersectsRect(const QRectF& a, const QRectF& b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIntersectsRect(const QRectF& a, const QRectF& b, const QSizeF& f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIntersectsRect(const QMarginsF& a, const QMarginsF& b, double f);
[[nodiscard]] VELTOR_UTILS_EXPORT bool fuzzyIntersectsRect(const QMarginsF& a, const QMarginsF& b,
                                                           const QSizeF& f);
/// @}

/// The rectangle grown on every side by its own size divided by k / 2: k = 10 adds a fifth of the width at
/// the left and at the right. k is a divisor, so a larger one grows less. |k| <= 2e-12 changes nothing.
[[nodiscard]] VELTOR_UTILS_EXPORT QRectF adjustRect(QRectF r, double k);

/// Grows the extent to take in the point. On either axis at most one side moves; NaN moves none.
VELTOR_UTILS_EXPORT void envelopePoint(QMarginsF& m, const QPointF& p);

/// Grows the extent to take in another one: each side moves out to the other's where that lies further
/// out; NaN moves none. An extent of left and top at +infinity, right and bottom at -infinity becomes the
/// other one.
VELTOR_UTILS_EXPORT void envelope(QMarginsF& m, const QMarginsF& other);

/// Cuts @p a back where @p b covers one of its edges, each axis by itself: if b's left edge lies inside a,
/// the part of a to the right of it goes; otherwise if b's right edge lies inside a, the part to the left
/// of that goes. So of an a around b only the part left of (and above) b remains, and an a covered by b
/// keeps its size. The sizes are not normalised.
VELTOR_UTILS_EXPORT void subtract(QRectF& a, const QRectF& b);

/// @}
