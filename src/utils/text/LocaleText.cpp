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

int exponentOf(const QString& text, const QLocale& locale)
{
    // Qt 6 writes signs of several characters and does not read them.
    const QString negativeSign = base::negativeSign(locale);
    if (negativeSign.size() > 1 && text.startsWith(negativeSign)) {
        return -locale.toInt(text.mid(negativeSign.size()));
    }
    const QString positiveSign = base::positiveSign(locale);
    const bool isPositive = positiveSign.size() > 1 && text.startsWith(positiveSign);
    return locale.toInt(isPositive ? text.mid(positiveSign.size()) : text);
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
