#include <veltor/utils/NumberFormat.h>

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
    QChar mark;
    QString exponent; // no leading zeros, a sign only if negative

    [[nodiscard]] QString joined() const { return mark.isNull() ? mantissa : mantissa + mark + exponent; }
};

ExponentialText splitExponential(double x, const QLocale& locale, QChar mark)
{
    const QString text = locale.toString(x, 'e', 14);
    const int markIndex = text.indexOf(locale.exponential());
    if (markIndex < 0) {
        return {text, QChar(), QString()};
    }
    QString exponent = text.mid(markIndex + 1);
    if (exponent.startsWith(locale.positiveSign())) {
        exponent.remove(0, 1);
    }
    const int first = exponent.startsWith(locale.negativeSign()) ? 1 : 0;
    while (exponent.size() > first + 1 && exponent.at(first) == locale.zeroDigit()) {
        exponent.remove(first, 1);
    }
    return {trimFraction(text.left(markIndex), locale), mark.isNull() ? locale.exponential() : mark,
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
    const int exponent = m_locale.toInt(text.exponent); // 0 when there is none
    const int point = text.mantissa.indexOf(m_locale.decimalPoint());
    if (exponent <= 0 || point < 0) {
        return text.joined();
    }
    const int fraction = text.mantissa.size() - point - 1;
    text.mantissa.remove(point, 1);
    if (exponent >= fraction) {
        text.exponent = m_locale.toString(exponent - fraction);
    } else {
        constexpr int target = 9;
        text.mantissa.insert(point + exponent - target, m_locale.decimalPoint());
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
    const int first = text.startsWith(m_locale.negativeSign()) ? 1 : 0;
    if (omitLeadingZero() && text.size() > first + 1 && text.at(first) == m_locale.zeroDigit()) {
        text.remove(first, 1);
    }
    if (!exponential.isNull() && exponential != m_locale.exponential()) {
        text.replace(m_locale.exponential(), exponential);
    }
    return text;
}

} // namespace veltor::utils
