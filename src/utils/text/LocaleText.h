#pragma once

#include "utils/text/Decimal.h"

#include <QtCore/QLocale>
#include <QtCore/QString>

namespace veltor::utils {

/// The exponents that plain texts write out; the others keep their exponential form.
bool isExpanded(int exponent) noexcept;

/// The "g" form of the locale with @p digits significant digits, its exponents expanded where
/// @p predicate is null or true.
QString significantText(double x, int digits, const QLocale& locale, bool (*predicate)(int));

/// The exponent behind the locale's exponent character; 0 for what cannot be read.
int exponentOf(const QString& text, const QLocale& locale);

/// Removes trailing zero digits after a decimal point, and the point if nothing is left after it. A text
/// without a point is returned as it is.
QString trimFraction(QString text, const QLocale& locale);

} // namespace veltor::utils
