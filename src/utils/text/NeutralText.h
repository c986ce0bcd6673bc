#pragma once

#include <veltor/utils/NumberFormat.h>

namespace veltor::utils {

/// Room for the longest text of a double: a sign, "0.", 323 zeros, 15 digits.
constexpr int neutralTextCapacity = 352;

/// The C locale with its own number options: no group separators.
const QLocale& neutralLocale();

/// True when @p locale is the C locale with its own number options, so that neutralText() may stand in
/// for it.
bool isNeutral(const QLocale& locale) noexcept;

/// Writes @p x in ASCII exactly as a NumberFormat of the C locale with these settings gives it, without
/// the locale machinery.
/// @param exponential  the exponent character, a letter
/// @return the end of the text; null when the number has to go the long way, see toDecimal()
char* neutralText(double x, NumberFormat::Presentation presentation, bool omitLeadingZero, char exponential,
                  char* out) noexcept;

/// The same for a whole format. Null, too, when the format's locale or exponent character is not neutral.
char* neutralText(double x, const NumberFormat& format, char* out) noexcept;

} // namespace veltor::utils
