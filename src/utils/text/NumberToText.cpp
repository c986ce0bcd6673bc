#include <veltor/utils/NumberToText.h>

#include <veltor/utils/Rounding.h>

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
    const QChar zero = locale.zeroDigit();
    if (point < digits.size()) {
        if (point < 1) {
            digits.prepend(QString(static_cast<int>(1 - point), zero));
            point = 1;
        }
        digits.insert(static_cast<int>(point), locale.decimalPoint());
    } else {
        digits.append(QString(static_cast<int>(point - digits.size()), zero));
    }
    return digits;
}

} // namespace

QString castExponentialFormat(QString text, const QLocale& locale, bool (*predicate)(int))
{
    const int mark = text.lastIndexOf(locale.exponential());
    if (mark < 1) {
        return text;
    }
    const int exponent = locale.toInt(text.mid(mark + 1));
    if ((predicate != nullptr && !predicate(exponent)) || exponent > maxExpansion ||
        exponent < -maxExpansion) {
        return text;
    }
    const bool negative = text.startsWith(locale.negativeSign());
    QString digits = text.mid(negative ? 1 : 0, negative ? mark - 1 : mark);
    int zeros = 0;
    while (zeros < digits.size() && digits.at(zeros) == locale.zeroDigit()) {
        ++zeros;
    }
    if (zeros == digits.size()) {
        return locale.zeroDigit();
    }
    digits.remove(0, zeros);
    int point = digits.indexOf(locale.decimalPoint());
    if (point < 0) {
        point = digits.size();
    } else {
        digits.remove(point, 1);
    }
    digits = placePoint(std::move(digits), qint64(point) + exponent, locale);
    return negative ? locale.negativeSign() + digits : digits;
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
    const bool negativeZero =
        trimmed.size() == 2 && trimmed.at(0) == locale.negativeSign() && trimmed.at(1) == locale.zeroDigit();
    return negativeZero ? QString(locale.zeroDigit()) : trimmed;
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

QString separateThousands(QString text, QChar point, QChar separator, int first)
{
    const int pointIndex = point.isNull() ? -1 : text.indexOf(point);
    const int end = pointIndex < 0 ? text.size() : pointIndex;
    // From the left and into a new text: inserting from the right moves the digits again and again.
    const int lowest = std::max(first, 0);
    const int groups = std::max(end - lowest - 1, 0) / 3;
    const int leading = end - groups * 3;
    QString grouped;
    grouped.reserve(text.size() + groups);
    grouped.append(text.constData(), leading);
    for (int position = leading; position < end; position += 3) {
        grouped += separator;
        grouped.append(text.constData() + position, 3);
    }
    grouped.append(text.constData() + end, text.size() - end);
    // Places at and before the beginning, which insert() counts from the end.
    for (int position = leading - 3; position > first; position -= 3) {
        grouped.insert(position, separator);
    }
    return grouped;
}

QString separateDouble(double x, QLocale locale)
{
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = toLocalizedString(x, locale);
    if (text.contains(locale.exponential())) {
        return text;
    }
    const int first = text.startsWith(locale.negativeSign()) ? 1 : 0;
    return separateThousands(std::move(text), locale.decimalPoint(), locale.groupSeparator(), first);
}

QString separateDoubleFixup(double x, int digits, QLocale locale)
{
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::NumberOptions(QLocale::OmitGroupSeparator));
    return toLocalizedStringFixup(x, digits, locale);
}

} // namespace veltor::utils
