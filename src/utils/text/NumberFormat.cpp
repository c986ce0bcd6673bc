// The four presentations of a number.

#include <veltor/utils/NumberFormat.h>

#include "base/QtDifferences.h"
#include "utils/text/LocaleText.h"
#include "utils/text/NeutralText.h"

#include <utility>

namespace veltor::utils {
namespace {

constexpr quint32 presentationMask = 0x3;
constexpr quint32 omitLeadingZeroBit = 0x4;
constexpr int unusedShift = 3;
constexpr quint32 unusedMask = ~(presentationMask | omitLeadingZeroBit);

/// The pieces of an exponential text. Of infinity and NaN there is only the mantissa.
struct ExponentialText
{
    QString mantissa; // no trailing zeros
    QString mark;
    QString exponent; // no leading zeros, a sign only if negative

    [[nodiscard]] QString joined() const { return mark.isEmpty() ? mantissa : mantissa + mark + exponent; }
};

ExponentialText splitExponential(double x, const QLocale& locale, QChar mark)
{
    const QString text = locale.toString(x, 'e', 14);
    const QString exponential = base::exponential(locale);
    const base::Length markIndex = text.indexOf(exponential);
    if (markIndex < 0) {
        return {text, QString(), QString()};
    }
    QString exponent = text.mid(markIndex + exponential.size());
    const QString positiveSign = base::positiveSign(locale);
    if (exponent.startsWith(positiveSign)) {
        exponent.remove(0, positiveSign.size());
    }
    const QString negativeSign = base::negativeSign(locale);
    const base::Length first = exponent.startsWith(negativeSign) ? negativeSign.size() : 0;
    const QString zero = base::zeroDigit(locale);
    while (exponent.size() > first + zero.size() && QStringView(exponent).mid(first).startsWith(zero)) {
        exponent.remove(first, zero.size());
    }
    return {trimFraction(text.left(markIndex), locale), mark.isNull() ? exponential : QString(mark),
            exponent};
}

} // namespace

NumberFormat::NumberFormat(Presentation presentation, bool omitLeadingZero, unsigned unused)
    : m_locale(neutralLocale())
    , m_bits(0)
{
    setPresentation(presentation);
    setOmitLeadingZero(omitLeadingZero);
    setUnused(unused);
}

NumberFormat& NumberFormat::setLocale(QLocale locale)
{
    m_locale = std::move(locale);
    m_locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return *this;
}

NumberFormat& NumberFormat::setExponential(QChar exponential) noexcept
{
    m_exponential = exponential;
    return *this;
}

NumberFormat& NumberFormat::setPresentation(Presentation presentation) noexcept
{
    m_bits = (m_bits & ~presentationMask) | (static_cast<quint32>(presentation) & presentationMask);
    return *this;
}

NumberFormat::Presentation NumberFormat::presentation() const noexcept
{
    return static_cast<Presentation>(m_bits & presentationMask);
}

NumberFormat& NumberFormat::setOmitLeadingZero(bool omit) noexcept
{
    m_bits = (m_bits & ~omitLeadingZeroBit) | (omit ? omitLeadingZeroBit : 0);
    return *this;
}

bool NumberFormat::omitLeadingZero() const noexcept
{
    return (m_bits & omitLeadingZeroBit) != 0;
}

NumberFormat& NumberFormat::setUnused(unsigned unused) noexcept
{
    m_bits = (m_bits & ~unusedMask) | (static_cast<quint32>(unused) << unusedShift);
    return *this;
}

unsigned NumberFormat::unused() const noexcept
{
    return m_bits >> unusedShift;
}

QString NumberFormat::toString(double x) const
{
    char buffer[neutralTextCapacity];
    if (const char* end = neutralText(x, *this, buffer)) {
        return QString::fromLatin1(buffer, static_cast<int>(end - buffer));
    }
    switch (presentation()) {
    case Exponential:
        return exponential(x);
    case NonExponential:
        return nonExponential(x);
    case Standard:
        return standard(x);
    case Shortest:
        break;
    }
    const QString plain = nonExponential(x);
    const QString compact = compactExponential(x);
    return compact.size() < plain.size() ? compact : plain;
}

QString NumberFormat::exponential(double x) const
{
    return splitExponential(x, m_locale, m_exponential).joined();
}

QString NumberFormat::compactExponential(double x) const
{
    ExponentialText text = splitExponential(x, m_locale, m_exponential);
    const int exponent = exponentOf(text.exponent, m_locale); // 0 when there is none
    const QString decimalPoint = base::decimalPoint(m_locale);
    const base::Length point = text.mantissa.indexOf(decimalPoint);
    if (exponent <= 0 || point < 0) {
        return text.joined();
    }
    text.mantissa.remove(point, decimalPoint.size());
    const base::Length digit = base::zeroDigit(m_locale).size();
    const auto fraction = static_cast<int>((text.mantissa.size() - point) / digit);
    if (exponent >= fraction) {
        text.exponent = m_locale.toString(exponent - fraction);
    } else {
        constexpr int target = 9;
        base::Length at = point + (exponent - target) * digit;
        at = at < 0 ? at + text.mantissa.size() : at; // counted from the end; nothing goes before the start
        if (at >= 0) {
            text.mantissa.insert(at, decimalPoint);
        }
        text.exponent = m_locale.toString(target);
    }
    return text.joined();
}

QString NumberFormat::nonExponential(double x) const
{
    return removeLeadingZero(significantText(x, Decimal::precision, m_locale, nullptr), QChar());
}

QString NumberFormat::standard(double x) const
{
    return removeLeadingZero(significantText(x, Decimal::precision, m_locale, &isExpanded), m_exponential);
}

QString NumberFormat::removeLeadingZero(QString text, QChar exponential) const
{
    const QString negativeSign = base::negativeSign(m_locale);
    const QString zero = base::zeroDigit(m_locale);
    const base::Length first = text.startsWith(negativeSign) ? negativeSign.size() : 0;
    if (omitLeadingZero() && text.size() > first + zero.size() &&
        QStringView(text).mid(first).startsWith(zero)) {
        text.remove(first, zero.size());
    }
    if (!exponential.isNull()) {
        text.replace(base::exponential(m_locale), QString(exponential));
    }
    return text;
}

} // namespace veltor::utils
