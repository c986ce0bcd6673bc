#pragma once

#include <QtCore/QtGlobal>

namespace veltor::utils {

/// A finite double as its first 15 significant decimal digits, rounded to nearest:
/// d.ddd * 10^exponent. A zero of either sign is the one digit 0.
struct Decimal
{
    static constexpr int precision = 15;

    char digits[precision + 1]; ///< ASCII; the first `count` are valid, the last of them is not 0
    int count;                  ///< 1 to 15
    int exponent;               ///< of the first digit
    bool negative;              ///< false for zero
};

/// Finds the digits by one multiplication with a power of ten of 64 bits.
/// @return false when that does not settle them: for infinity and NaN, and for about one number in two
///         thousand whose remainder after 15 digits lies too close to one half, exact ties among them.
bool toDecimal(double x, Decimal& decimal) noexcept;

} // namespace veltor::utils
