#pragma once

#include <cstdint>

/// Arithmetic modulo the Castagnoli polynomial P over GF(2), for tables and constants that the
/// compiler makes. A residue is kept reflected, as the CRC register is: bit 31 - k holds x^k.
namespace veltor::utils::crc32cvariants {

constexpr std::uint32_t reflectedPolynomial = 0x82F63B78u;

/// a * x mod P
constexpr std::uint32_t timesX(std::uint32_t a) noexcept
{
    return (a >> 1) ^ ((a & 1u) != 0 ? reflectedPolynomial : 0u);
}

/// a * b mod P
constexpr std::uint32_t product(std::uint32_t a, std::uint32_t b) noexcept
{
    std::uint32_t sum = 0;
    for (; b != 0; b <<= 1) {
        if ((b & 0x80000000u) != 0) {
            sum ^= a;
        }
        a = timesX(a);
    }
    return sum;
}

/// x^n mod P
constexpr std::uint32_t powerOfX(std::uint32_t n) noexcept
{
    std::uint32_t result = 0x80000000u;
    for (std::uint32_t square = 0x40000000u; n != 0; n >>= 1) {
        if ((n & 1u) != 0) {
            result = product(result, square);
        }
        square = product(square, square);
    }
    return result;
}

} // namespace veltor::utils::crc32cvariants
