// Numbers as text in the C locale and in any other.

#include <veltor/utils/NumberToText.h>

#include <veltor/utils/Rounding.h>

#include "base/QtDifferences.h"
#include "utils/text/LocaleText.h"
#include "utils/text/NeutralText.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace veltor::utils {
namespace {

constexpr int floatPrecision = 7;

/// An exponent is text from outside; it must not decide over gigabytes of zeros.
constexpr int maxExpansion = 1000000;

/// Digits as a string of digits with the point @p point places from its start, which may lie outside.
QString placePoint(QString digits, qint64 point, const QLocale& locale)
{
    const QString zero = base::zeroDigit(locale);
    const qint64 count = digits.size() / zero.size();
    if (point < count) {
        if (point < 1) {
            digits.prepend(zero.repeated(static_cast<int>(1 - point)));
            point = 1;
        }
        digits.insert(static_cast<base::Length>(point * zero.size()), base::decimalPoint(locale));
    } else {
        digits.append(zero.repeated(static_cast<int>(point - count)));
    }
    return digits;
}

/// Puts @p separator before every third digit of @p width characters, counted from @p end back to @p first.
QString grouped(const QString& text, base::Length end, const QString& separator, base::Length first,
                base::Length width)
{
    const base::Length group = 3 * width;
    base::Length from = end;
    while (from - group > first) {
        from -= group;
    }
    QString result = text.left(from);
    result.reserve(text.size() + (end - from) / group * separator.size());
    for (; from < end; from += group) {
        result += separator;
        result += text.mid(from, group);
    }
    return result + text.mid(end);
}

} // namespace

QString castExponentialFormat(QString text, const QLocale& locale, bool (*predicate)(int))
{
    const QString exponential = base::exponential(locale);
    const base::Length mark = text.lastIndexOf(exponential);
    if (mark < 1) {
        return text;
    }
    const int exponent = exponentOf(text.mid(mark + exponential.size()), locale);
    if ((predicate != nullptr && !predicate(exponent)) || exponent > maxExpansion ||
        exponent < -maxExpansion) {
        return text;
    }
    QString zero = base::zeroDigit(locale);
    const QString negativeSign = base::negativeSign(locale);
    const bool negative = text.startsWith(negativeSign);
    const base::Length first = negative ? negativeSign.size() : 0;
    QString digits = text.mid(first, mark - first);
    base::Length zeros = 0;
    while (QStringView(digits).mid(zeros).startsWith(zero)) {
        zeros += zero.size();
    }
    if (zeros >= digits.size()) {
        return zero;
    }
    digits.remove(0, zeros);
    const QString decimalPoint = base::decimalPoint(locale);
    base::Length point = digits.indexOf(decimalPoint);
    if (point < 0) {
        point = digits.size();
    } else {
        digits.remove(point, decimalPoint.size());
    }
    digits = placePoint(std::move(digits), qint64(point / zero.size()) + exponent, locale);
    return negative ? negativeSign + digits : digits;
}

QString toLocalizedString(double x, const QLocale& locale)
{
    return isNeutral(locale) ? toString(x) : significantText(x, Decimal::precision, locale, &isExpanded);
}

QString toLocalizedString(float x, const QLocale& locale)
{
    return significantText(static_cast<double>(x), floatPrecision, locale, &isExpanded);
}

QString toString(double x)
{
    char buffer[neutralTextCapacity];
    if (const char* end = neutralText(x, NumberFormat::Standard, false, 'e', buffer)) {
        return QString::fromLatin1(buffer, static_cast<int>(end - buffer));
    }
    return significantText(x, Decimal::precision, neutralLocale(), &isExpanded);
}

QString toString(float x)
{
    return toLocalizedString(x, neutralLocale());
}

QString toLocalizedStringFixup(double x, int digits, const QLocale& locale)
{
    QString text = locale.toString(x, 'f', digits < 0 ? 6 : digits);
    if (digits == 0 || std::abs(x) > std::numeric_limits<double>::max()) {
        return text;
    }
    QString trimmed = trimFraction(std::move(text), locale);
    const QString zero = base::zeroDigit(locale);
    return trimmed == base::negativeSign(locale) + zero ? zero : trimmed;
}

QString toStringFixup(double x, int digits)
{
    return toLocalizedStringFixup(x, digits, neutralLocale());
}

QString toLocalizedStringRound(double x, int digits, const QLocale& locale)
{
    return toLocalizedString(getRound(x, digits), locale);
}

QString toStringRound(double x, int digits)
{
    return toString(getRound(x, digits));
}

QString toLocalizedStringByMode(double x, DigitsAfterPoint mode, int digits, const QLocale& locale)
{
    switch (mode) {
    case DigitsAfterPoint::Significant:
        return significantText(x, digits, locale, nullptr);
    case DigitsAfterPoint::Round:
        return toLocalizedStringRound(x, digits, locale);
    case DigitsAfterPoint::Fixup:
        return toLocalizedStringFixup(x, digits, locale);
    case DigitsAfterPoint::Fixed:
        return locale.toString(x, 'f', digits);
    case DigitsAfterPoint::Default:
        break;
    }
    return toLocalizedString(x, locale);
}

QString toLocalizedStringByMode(float x, DigitsAfterPoint mode, int digits, const QLocale& locale)
{
    switch (mode) {
    case DigitsAfterPoint::Significant:
    case DigitsAfterPoint::Fixup:
    case DigitsAfterPoint::Fixed:
        return toLocalizedStringByMode(static_cast<double>(x), mode, digits, locale);
    case DigitsAfterPoint::Round:
        return toLocalizedString(floatRound(x, digits), locale);
    case DigitsAfterPoint::Default:
        break;
    }
    return toLocalizedString(x, locale);
}

QString toStringByMode(double x, DigitsAfterPoint mode, int digits)
{
    return toLocalizedStringByMode(x, mode, digits, neutralLocale());
}

QString toStringByMode(float x, DigitsAfterPoint mode, int digits)
{
    return toLocalizedStringByMode(x, mode, digits, neutralLocale());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature that callers know
QString separateThousands(QString text, QChar point, QChar separator, int first)
{
    const base::Length pointIndex = point.isNull() ? -1 : text.indexOf(point);
    const base::Length end = pointIndex < 0 ? text.size() : pointIndex;
    QString result = grouped(text, end, QString(separator), std::max(first, 0), 1);
    // Places at and before the beginning count from the end.
    for (base::Length place = end - (end - 1) / 3 * 3 - 3; place > first; place -= 3) {
        const base::Length at = place < 0 ? place + result.size() : place;
        if (at < 0) {
            break; // and so are all that follow
        }
        result.insert(at, separator);
    }
    return result;
}

QString separateDouble(double x, QLocale locale)
{
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = toLocalizedString(x, locale);
    if (text.contains(base::exponential(locale))) {
        return text;
    }
    const QString negativeSign = base::negativeSign(locale);
    const base::Length point = text.indexOf(base::decimalPoint(locale));
    return grouped(text, point < 0 ? text.size() : point, base::groupSeparator(locale),
                   text.startsWith(negativeSign) ? negativeSign.size() : 0, base::zeroDigit(locale).size());
}

QString separateDoubleFixup(double x, int digits, QLocale locale)
{
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::NumberOptions(QLocale::OmitGroupSeparator));
    return toLocalizedStringFixup(x, digits, locale);
}

} // namespace veltor::utils
