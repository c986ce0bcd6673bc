#pragma once

#include <veltor/Export.h>

#include <QtCore/QPointF>
#include <QtCore/QSizeF>

#include <functional>

namespace veltor::utils {

/// @defgroup rounding Rounding
///
/// Rounding to decimal places, to significant digits, to the scale of a unit, and to coarse steps.
///
/// `n` is the power of ten to round at: 2 is hundredths, 0 whole numbers, -2 hundreds. The decimal
/// exponent of x is e(x) = floor(log10(|x|)). All functions are reentrant and throw nothing of their own.
///
/// The arithmetic is plain IEEE double: the value is scaled by 10^|n|, rounded and scaled back, so
/// - NaN gives NaN, and an infinity itself;
/// - a result is NaN where the scale 10^|n| overflows, that is for |n| > 308;
/// - a value whose decimal text ends in 5 may stand a last bit below or above the half and is rounded
///   accordingly: getRound(1.005, 2) is 1, for the double nearest to 1.005 lies below it;
/// - e(x) of 0, an infinity or NaN counts as the smallest `int`, and sums with it wrap.
/// @{

/// @p x rounded at 10^-n, halves away from zero: 2.5 gives 3 and -2.5 gives -3 for n = 0.
/// Rounding a rounded value again changes nothing as long as |x| * 10^n is below 2^52.
[[nodiscard]] VELTOR_UTILS_EXPORT double getRound(double x, int n);

/// The largest multiple of 10^-n not above @p x.
[[nodiscard]] VELTOR_UTILS_EXPORT double getFloor(double x, int n);

/// The smallest multiple of 10^-n not below @p x.
[[nodiscard]] VELTOR_UTILS_EXPORT double getCeiling(double x, int n);

/// The same for single precision: calculated in double precision and narrowed at the end. A result beyond
/// the largest float is infinite.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT float floatRound(float x, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT float floatFloor(float x, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT float floatCeiling(float x, int n);
/// @}

/// n - e(x): the decimal places at which @p x keeps n digits behind its leading one.
[[nodiscard]] VELTOR_UTILS_EXPORT int getScaleLog(double x, int n);

/// @p x rounded to @p n significant digits, halves away from zero: (123456, 2) gives 120000. Zero stays 0.
[[nodiscard]] VELTOR_UTILS_EXPORT double significantRound(double x, int n);

/// As significantRound(), upwards and downwards.
/// @{
[[nodiscard]] VELTOR_UTILS_EXPORT double significantCeiling(double x, int n);
[[nodiscard]] VELTOR_UTILS_EXPORT double significantFloor(double x, int n);
/// @}

/// @p x rounded to one decimal place finer than the leading digit of @p scale: with a scale of 0.05 to
/// three places. A scale that is not above 0 (NaN included) leaves x as it is.
[[nodiscard]] VELTOR_UTILS_EXPORT double scaleRound(double x, double scale);

/// scaleRound() of x by the width and of y by the height of @p unit; a non-positive width or height leaves
/// its coordinate as it is.
[[nodiscard]] VELTOR_UTILS_EXPORT QPointF roundByUnitSize(QPointF point, QSizeF unit);

/// Chooses one of two neighbouring steps: (mantissa, lowerStep, upperStep, scale) to a step.
using StepChooser = std::function<double(double, double, double, double)>;

/// The round number near @p x that suits a scale bar or a grid: a step of the table times a power of ten.
///
/// x is written as mantissa * 10^e(x); the chooser picks between the greatest step below the mantissa and
/// the one above it. 30 and 37 give 25, 3.75 gives 5 (a tie goes up).
///
/// @param x        above 0
/// @param chooser  empty: the nearer of the two steps
/// @param steps    table in descending order; null, or a @p n of 0: {10, 5, 2.5, 2, 1}
/// @param n        length of the table
/// @return the step chosen times 10^e(x). **Zero, not x, when no step lies below the mantissa**: for an
///         exact power of ten, for x <= 0, for NaN, and with a table of one step. An infinite x gives 0
///         with the default chooser.
/// @throws what the chooser throws.
[[nodiscard]] VELTOR_UTILS_EXPORT double coarseRound(double x, StepChooser chooser = {},
                                                     const double* steps = nullptr, unsigned n = 0);

/// @}

} // namespace veltor::utils
