// Numbers in the C locale, without Qt.

#include "utils/text/NeutralText.h"

#include "utils/text/Decimal.h"

#include <algorithm>

namespace veltor::utils {
namespace {

char* put(const char* text, int count, char* out) noexcept
{
    return std::copy_n(text, count, out);
}

char* putZeros(int count, char* out) noexcept
{
    return std::fill_n(out, count, '0');
}

char* putInt(int value, char* out) noexcept
{
    if (value < 0) {
        *out++ = '-';
        value = -value;
    }
    if (value >= 100) {
        *out++ = static_cast<char>('0' + value / 100);
    }
    if (value >= 10) {
        *out++ = static_cast<char>('0' + value / 10 % 10);
    }
    *out++ = static_cast<char>('0' + value % 10);
    return out;
}

char* putSign(const Decimal& d, char* out) noexcept
{
    if (d.negative) {
        *out++ = '-';
    }
    return out;
}

/// The digits with a point after the first, if any follow.
char* putMantissa(const Decimal& d, char* out) noexcept
{
    out = putSign(d, out);
    *out++ = d.digits[0];
    if (d.count > 1) {
        *out++ = '.';
        out = put(d.digits + 1, d.count - 1, out);
    }
    return out;
}

char* putPositional(const Decimal& d, bool omitLeadingZero, char* out) noexcept
{
    out = putSign(d, out);
    if (d.exponent < 0) {
        if (!omitLeadingZero) {
            *out++ = '0';
        }
        *out++ = '.';
        out = putZeros(-d.exponent - 1, out);
        return put(d.digits, d.count, out);
    }
    const int whole = d.exponent + 1;
    if (d.count <= whole) {
        out = put(d.digits, d.count, out);
        return putZeros(whole - d.count, out);
    }
    out = put(d.digits, whole, out);
    *out++ = '.';
    return put(d.digits + whole, d.count - whole, out);
}

/// The exponent with its sign and at least two digits, as the C library and Qt print it.
char* putSignedExponential(const Decimal& d, char exponential, char* out) noexcept
{
    out = putMantissa(d, out);
    *out++ = exponential;
    *out++ = d.exponent < 0 ? '-' : '+';
    const int magnitude = std::abs(d.exponent);
    if (magnitude < 10) {
        *out++ = '0';
    }
    return putInt(magnitude, out);
}

/// The exponent with the sign only where it is negative, and no leading zeros.
char* putExponential(const Decimal& d, char exponential, char* out) noexcept
{
    out = putMantissa(d, out);
    *out++ = exponential;
    return putInt(d.exponent, out);
}

bool isPlain(const Decimal& d) noexcept
{
    return d.exponent >= -15 && d.exponent < Decimal::precision;
}

int positionalLength(const Decimal& d, bool omitLeadingZero) noexcept
{
    if (d.exponent < 0) {
        return (omitLeadingZero ? 0 : 1) - d.exponent + d.count;
    }
    return d.count <= d.exponent + 1 ? d.exponent + 1 : d.count + 1;
}

int intLength(int value) noexcept
{
    const int magnitude = std::abs(value);
    return (value < 0 ? 1 : 0) + (magnitude >= 100 ? 3 : magnitude >= 10 ? 2 : 1);
}

/// What the compact exponential text adds to a whole number of `count` digits, where it can win at all
/// over the positional one; the rule for numbers with more digits than the exponent only lengthens.
bool putCompactIfShorter(const Decimal& d, bool omitLeadingZero, char exponential, char*& out) noexcept
{
    const bool whole = d.exponent > 0 && d.exponent >= d.count - 1;
    const int exponent = whole ? d.exponent - (d.count - 1) : d.exponent;
    const int mantissa = whole || d.count == 1 ? d.count : d.count + 1;
    if (mantissa + 1 + intLength(exponent) >= positionalLength(d, omitLeadingZero)) {
        return false;
    }
    if (!whole) {
        out = putExponential(d, exponential, out);
        return true;
    }
    out = put(d.digits, d.count, putSign(d, out));
    *out++ = exponential;
    out = putInt(exponent, out);
    return true;
}

} // namespace

const QLocale& neutralLocale()
{
    static const QLocale locale(QLocale::C);
    return locale;
}

bool isNeutral(const QLocale& locale) noexcept
{
    return locale == neutralLocale();
}

char* neutralText(double x, NumberFormat::Presentation presentation, bool omitLeadingZero, char exponential,
                  char* out) noexcept
{
    Decimal d;
    if (!toDecimal(x, d)) {
        return nullptr;
    }
    switch (presentation) {
    case NumberFormat::Shortest:
        if (putCompactIfShorter(d, omitLeadingZero, exponential, out)) {
            return out;
        }
        break;
    case NumberFormat::Exponential:
        return putExponential(d, exponential, out);
    case NumberFormat::NonExponential:
        break;
    case NumberFormat::Standard:
        if (!isPlain(d)) {
            return putSignedExponential(d, exponential, out);
        }
        break;
    }
    return putPositional(d, omitLeadingZero, out);
}

char* neutralText(double x, const NumberFormat& format, char* out) noexcept
{
    const ushort exponential = format.exponential().isNull() ? ushort('e') : format.exponential().unicode();
    const bool letter =
        (exponential >= 'A' && exponential <= 'Z') || (exponential >= 'a' && exponential <= 'z');
    if (!letter || !isNeutral(format.locale())) {
        return nullptr;
    }
    return neutralText(x, format.presentation(), format.omitLeadingZero(), static_cast<char>(exponential),
                       out);
}

} // namespace veltor::utils
