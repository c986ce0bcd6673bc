#pragma once

#include <veltor/Export.h>

#include <QtCore/QLocale>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QSizeF>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace veltor::utils {

/// @defgroup numbertext Numbers as text
///
/// Numbers, points, sizes and rectangles as text.
///
/// `toString...` writes in the neutral C locale, `toLocalized...` in the locale given, with that locale's
/// own digits, signs, decimal point and exponent character, and with group separators unless its number
/// options omit them. The process's default locale is never looked at.
///
/// "Plain text" below means: at most 15 significant digits (7 for a float), ties rounded away from zero,
/// written out from 1e-15 to below 1e15 (1e7 for a float), in the locale's exponential form outside of
/// that. A zero of either sign is "0". Infinity and NaN come out in Qt's words: inf, -inf, nan.
///
/// Nothing here throws, apart from std::bad_alloc. All functions are reentrant.
/// @{

/// What toStringByMode() and toLocalizedStringByMode() make of their number of digits n. Values outside
/// the list are taken as Default.
enum class DigitsAfterPoint : quint8
{
    Default = 0,     ///< plain text; n is not used
    Significant = 1, ///< n significant digits, never an exponent
    Round = 2,       ///< plain text of the value rounded to n places by getRound() or floatRound()
    Fixup = 3,       ///< n places after the point, trailing zeros removed: toLocalizedStringFixup()
    Fixed = 4,       ///< n places after the point
};

/// Writes a number in exponential notation out into plain digits: 1.5e-05 becomes 0.000015.
///
/// @param text       a number in @p locale's characters; one without its exponent character, or with
///                   that character first, is returned unchanged, and so is one whose exponent lies
///                   beyond a million in magnitude
/// @param locale     whose characters these are
/// @param predicate  told the exponent; when it answers false the text is returned unchanged. Null
///                   expands every exponent. An exponent that cannot be read counts as 0.
VELTOR_UTILS_EXPORT QString castExponentialFormat(QString text, const QLocale& locale,
                                                  bool (*predicate)(int));

/// The number as plain text.
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedString(double x, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toLocalizedString(float x, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toString(double x);
VELTOR_UTILS_EXPORT QString toString(float x);
/// @}

/// @p digits places after the decimal point, less the trailing zeros, and never a negative zero:
/// 2.0 gives 2, -0.0001 with two digits gives 0. With no digits the text is Qt's, its sign included. A
/// negative number of digits counts as 6.
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedStringFixup(double x, int digits, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toStringFixup(double x, int digits);
/// @}

/// Plain text of getRound(x, digits).
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedStringRound(double x, int digits, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toStringRound(double x, int digits);
/// @}

/// The number by @p mode, with @p digits as the mode takes them.
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedStringByMode(double x, DigitsAfterPoint mode, int digits,
                                                    const QLocale& locale);
VELTOR_UTILS_EXPORT QString toLocalizedStringByMode(float x, DigitsAfterPoint mode, int digits,
                                                    const QLocale& locale);
VELTOR_UTILS_EXPORT QString toStringByMode(double x, DigitsAfterPoint mode, int digits);
VELTOR_UTILS_EXPORT QString toStringByMode(float x, DigitsAfterPoint mode, int digits);
/// @}

/// As the functions without a mode write points and rectangles, each coordinate by the mode.
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedStringByMode(QPointF point, DigitsAfterPoint mode, int digits,
                                                    const QLocale& locale);
VELTOR_UTILS_EXPORT QString toLocalizedStringByMode(const QRectF& rect, DigitsAfterPoint mode, int digits,
                                                    const QLocale& locale);
/// @}

/// A point as "(x y)".
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedString(QPointF point, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toString(QPointF point);
VELTOR_UTILS_EXPORT QString toStringFixup(QPointF point, int digits);
/// @}

/// A size as "widthxheight".
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedString(QSizeF size, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toString(QSizeF size);
/// @}

/// A rectangle by its corners (x, y) and (x + width, y + height): "(0 0) (10 5)".
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedString(const QRectF& rect, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toString(const QRectF& rect);
/// @}

/// A rectangle by its corners and its size: "(0 0) (10 5) (10x5)".
/// @{
VELTOR_UTILS_EXPORT QString toLocalizedStringFull(const QRectF& rect, const QLocale& locale);
VELTOR_UTILS_EXPORT QString toStringFull(const QRectF& rect);
/// @}

/// Points by toStringFixup(QPointF, int), a blank between two: "(0 0) (1.5 2)". A negative number of
/// digits takes the plain text of each point instead.
VELTOR_UTILS_EXPORT QString toString(const QVector<QPointF>& points, int digits);

/// Puts @p separator before every third digit of @p text, counted leftwards from the decimal point.
/// @param text   a number
/// @param point  the first one ends the digits; a null one, or none in the text, means they end the text
/// @param separator  the group separator
/// @param first  index up to which no separator goes: 1 for a text that begins with a sign
VELTOR_UTILS_EXPORT QString separateThousands(QString text, QChar point, QChar separator, int first);

/// Plain text with the locale's group separators, always in threes. A text that keeps an exponent has
/// none. The number options of @p locale do not matter.
VELTOR_UTILS_EXPORT QString separateDouble(double x, QLocale locale);

/// toLocalizedStringFixup() with group separators as Qt puts them for the locale, even when its number
/// options omit them.
VELTOR_UTILS_EXPORT QString separateDoubleFixup(double x, int digits, QLocale locale);

/// @}

} // namespace veltor::utils
