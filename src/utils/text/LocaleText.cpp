// What texts in any locale share.

#include "utils/text/LocaleText.h"

#include <veltor/utils/NumberToText.h>

#include "base/QtDifferences.h"

namespace veltor::utils {

bool isExpanded(int exponent) noexcept
{
    return exponent >= -15 && exponent < -4;
}

QString significantText(double x, int digits, const QLocale& locale, bool (*predicate)(int))
{
    return castExponentialFormat(locale.toString(x, 'g', digits), locale, predicate);
}

QString trimFraction(QString text, const QLocale& locale)
{
    const QString decimalPoint = base::decimalPoint(locale);
    if (!text.contains(decimalPoint)) {
        return text;
    }
    const QString zero = base::zeroDigit(locale);
    while (text.endsWith(zero)) {
        text.chop(zero.size());
    }
    if (text.endsWith(decimalPoint)) {
        text.chop(decimalPoint.size());
    }
    return text;
}

} // namespace veltor::utils
