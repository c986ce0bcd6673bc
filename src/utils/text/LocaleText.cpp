#include "utils/text/LocaleText.h"

#include <veltor/utils/NumberToText.h>

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
    if (!text.contains(locale.decimalPoint())) {
        return text;
    }
    while (text.endsWith(locale.zeroDigit())) {
        text.chop(1);
    }
    if (text.endsWith(locale.decimalPoint())) {
        text.chop(1);
    }
    return text;
}

} // namespace veltor::utils
