// A double as its significant decimal digits.

#include "utils/text/Decimal.h"

#include <QtCore/QtAlgorithms>

#include <array>
#include <cmath>
#include <cstring>

namespace veltor::utils {
namespace {

constexpr quint64 tenTo8 = 100000000;
constexpr quint64 tenTo14 = 100000000000000;
constexpr quint64 tenTo15 = 10 * tenTo14;

// The powers needed to bring any double, from 2^-1074 to 2^1024, between 10^14 and 10^16.
constexpr int minPower = -295;
constexpr int maxPower = 338;
constexpr int powerCount = maxPower - minPower + 1;

/// A power of ten as limbs * 2^exponent, the limbs most significant first, the top bit set. 160 bits
/// keep the errors of 338 truncating steps far below the 64 bits that are used.
struct WidePower
{
    std::array<quint32, 5> limbs;
    int exponent;
};

constexpr WidePower one = {{0x80000000U, 0, 0, 0, 0}, -159};

constexpr WidePower timesTen(WidePower power)
{
    quint64 carry = 0;
    for (std::size_t i = power.limbs.size(); i-- > 0;) {
        carry += quint64(power.limbs[i]) * 10;
        power.limbs[i] = static_cast<quint32>(carry & 0xFFFFFFFFU);
        carry >>= 32;
    }
    const int shift = carry >= 8 ? 4 : 3; // the carry is 5 to 9
    for (std::size_t i = power.limbs.size(); i-- > 0;) {
        const quint64 above = i > 0 ? power.limbs[i - 1] : carry;
        power.limbs[i] = static_cast<quint32>((((above << 32) | power.limbs[i]) >> shift) & 0xFFFFFFFFU);
    }
    power.exponent += shift;
    return power;
}

constexpr WidePower overTen(WidePower power)
{
    std::array<quint32, 6> quotient = {};
    quint64 remainder = 0;
    for (std::size_t i = 0; i < quotient.size(); ++i) {
        const quint64 dividend = (remainder << 32) | (i < power.limbs.size() ? power.limbs[i] : 0);
        quotient[i] = static_cast<quint32>(dividend / 10);
        remainder = dividend % 10;
    }
    const int shift = quotient[0] >= 0x10000000U ? 3 : 4;
    for (std::size_t i = 0; i < power.limbs.size(); ++i) {
        const quint64 pair = (quint64(quotient[i]) << 32) | quotient[i + 1];
        power.limbs[i] = static_cast<quint32>(((pair << shift) >> 32) & 0xFFFFFFFFU);
    }
    power.exponent -= shift;
    return power;
}

/// significands[k - minPower] * 2^exponents[k - minPower] is 10^k within 0.51 units of the last place.
struct PowerTable
{
    std::array<quint64, powerCount> significands;
    std::array<qint16, powerCount> exponents;
};

constexpr void store(PowerTable& table, int k, const WidePower& power)
{
    const auto index = static_cast<std::size_t>(k - minPower);
    const quint64 roundUp = power.limbs[2] >> 31;
    table.significands[index] = ((quint64(power.limbs[0]) << 32) | power.limbs[1]) + roundUp;
    table.exponents[index] = static_cast<qint16>(power.exponent + 96);
}

constexpr PowerTable makePowers()
{
    PowerTable table = {};
    WidePower power = one;
    for (int k = 0; k <= maxPower; ++k, power = timesTen(power)) {
        store(table, k, power);
    }
    power = one;
    for (int k = 0; k >= minPower; --k, power = overTen(power)) {
        store(table, k, power);
    }
    return table;
}

constexpr PowerTable powers = makePowers();

/// The upper 64 bits of the product, the lower ones dropped.
quint64 multiplyHigh(quint64 a, quint64 b) noexcept
{
    constexpr quint64 low = 0xFFFFFFFFU;
    const quint64 aLow = a & low;
    const quint64 aHigh = a >> 32;
    const quint64 bLow = b & low;
    const quint64 bHigh = b >> 32;
    const quint64 middle = aHigh * bLow + ((aLow * bLow) >> 32);
    const quint64 otherMiddle = aLow * bHigh + (middle & low);
    return aHigh * bHigh + (middle >> 32) + (otherMiddle >> 32);
}

void writePair(quint64 value, char* out) noexcept
{
    static constexpr char pairs[] = "0001020304050607080910111213141516171819"
                                    "2021222324252627282930313233343536373839"
                                    "4041424344454647484950515253545556575859"
                                    "6061626364656667686970717273747576777879"
                                    "8081828384858687888990919293949596979899";
    std::memcpy(out, pairs + 2 * value, 2);
}

void writeDigits(quint64 value, Decimal& decimal) noexcept
{
    decimal.digits[0] = static_cast<char>('0' + value / tenTo14);
    quint64 high = value % tenTo14 / tenTo8;
    quint64 low = value % tenTo8;
    for (int i = 13; i >= 7; i -= 2, low /= 100) {
        writePair(low % 100, decimal.digits + i);
    }
    for (int i = 5; i >= 1; i -= 2, high /= 100) {
        writePair(high % 100, decimal.digits + i);
    }
    decimal.count = Decimal::precision;
    while (decimal.count > 1 && decimal.digits[decimal.count - 1] == '0') {
        --decimal.count;
    }
}

/// significand * 2^exponent, the top bit of the significand set but for zero.
struct Binary
{
    quint64 significand;
    int exponent;
};

/// The magnitude of a finite double, from its bits.
Binary toBinary(quint64 bits) noexcept
{
    const quint64 fraction = bits & ((quint64(1) << 52) - 1);
    const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
    const quint64 significand = exponent == 0 ? fraction : fraction | quint64(1) << 52;
    if (significand == 0) {
        return {0, 0};
    }
    const auto shift = static_cast<int>(qCountLeadingZeroBits(significand));
    return {significand << shift, (exponent == 0 ? 1 : exponent) - 1075 - shift};
}

} // namespace

bool toDecimal(double x, Decimal& decimal) noexcept
{
    if (!std::isfinite(x)) {
        return false;
    }
    quint64 bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    const auto [significand, exponent] = toBinary(bits);
    if (significand == 0) {
        decimal = {"0", 1, 0, false};
        return true;
    }

    // floor(log10(2^n)) for every |n| below 2620; the true exponent is this one or the next.
    int decimalExponent = ((exponent + 63) * 315653) >> 20;
    for (;; ++decimalExponent) {
        const auto index = static_cast<std::size_t>(14 - decimalExponent - minPower);
        const quint64 scaled = multiplyHigh(significand, powers.significands[index]);
        // `scaled` counts units of 2^-fractionBits and lies less than two of them below the true
        // value, less than one above it.
        const int fractionBits = -(exponent + powers.exponents[index] + 64);
        const quint64 whole = scaled >> fractionBits;
        if (whole >= tenTo15) {
            continue;
        }
        const quint64 half = quint64(1) << (fractionBits - 1);
        const quint64 fraction = scaled & (2 * half - 1);
        if (fraction + 2 >= half && fraction <= half + 2) {
            return false;
        }
        const quint64 rounded = whole + (fraction > half ? 1 : 0);
        const bool carried = rounded == tenTo15;
        writeDigits(carried ? tenTo14 : rounded, decimal);
        decimal.exponent = decimalExponent + (carried ? 1 : 0);
        decimal.negative = (bits >> 63) != 0;
        return true;
    }
}

} // namespace veltor::utils
