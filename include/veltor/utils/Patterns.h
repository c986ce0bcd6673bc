#pragma once

#include <veltor/Export.h>

#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>
#include <QtCore/QString>

#include <utility>

namespace veltor::utils {

/// @defgroup patterns Patterns
///
/// Patterns of QRegularExpression made from what users type into search and filter fields.
/// All functions are reentrant. Compile the results through RegularExpressionCache.
///
/// A mask of many wildcards may take more steps to match than PCRE does, which gives up after ten million
/// (a fraction of a second): ask QRegularExpressionMatch::isValid() before "no match" is taken for an answer.
/// @{

/// An SQL LIKE mask as an anchored pattern: % stands for any characters, _ for any one.
///
/// A wildcard does not match a line feed unless the expression is given DotMatchesEverythingOption.
/// @param mask    as the user typed it
/// @param escape  takes the character after it literally; a null one means there is none. An escape at
///                the end of the mask is dropped.
VELTOR_UTILS_EXPORT QString likeToRegular(const QString& mask, QChar escape);

/// A file glob as an anchored pattern: * stands for any characters, ? for any one, [abc], [a-z] and
/// [!abc] for one of a class or none of it. A "]" first in a class is a member; an unclosed class ends
/// with the glob.
///
/// Class members are Latin-1: only the low 8 bits of each are kept, and what has a meaning within a
/// class of a regular expression, such as a backslash, keeps it. The pattern of such a glob may
/// therefore be invalid.
VELTOR_UTILS_EXPORT QString globToRegular(const QString& glob);

/// The text with a "*" at both ends, each put there only if it is missing.
VELTOR_UTILS_EXPORT QString substringToWildcard(QString text);

/// Finds degrees, minutes and seconds such as -12°30'15.25".
/// @param digits     the most digits of the fraction of a second; below 1 means 8
/// @param separator  the decimal separator, not a letter or digit
VELTOR_UTILS_EXPORT QRegularExpression getDegreeRegExp(int digits, QChar separator);

/// True when the text holds a character above U+007F.
VELTOR_UTILS_EXPORT bool containNonAscii(const QString& text);

/// Splits a text from the decimal number (ASCII digits) it ends with: "Item12" gives ("Item", 12).
/// A number beyond int gives 2147483647. A text that ends otherwise gives (text, -1), and so does one
/// whose prefix holds a line feed; one line feed at the very end is ignored.
VELTOR_UTILS_EXPORT std::pair<QString, int> stringAndNumeral(const QString& text);

/// The digits that a pattern accepts.
enum class DigitsProcessing
{
    Native, ///< those of the locale
    Ascii,  ///< 0 to 9
    Both,   ///< either, also mixed
};

/// A run of one or more of the digits of @p locale, and of 0 to 9 too with @p acceptAscii. Not anchored,
/// without groups.
VELTOR_UTILS_EXPORT QString digitRegular(const QLocale& locale, bool acceptAscii);

/// A real number: an optional sign, digits with an optional fraction or a fraction alone, an optional
/// exponent with its own optional sign. Not anchored; matches whatever NumberFormat writes for the
/// locale. Group separators are not matched.
/// Signs, decimal point and exponent character are the locale's; the latter is accepted in upper and
/// lower case, as QLocale reads it.
VELTOR_UTILS_EXPORT QString realRegular(const QLocale& locale, DigitsProcessing processing);

/// @}

} // namespace veltor::utils
