#include "utils/storage/journal/crc32c/Variants.h"

#ifdef VELTOR_CRC32C_AVX512

#include "utils/storage/journal/crc32c/Polynomial.h"

#if defined(__GNUC__) && !defined(__clang__)
// GCC 12 warns of its own "undefined" registers inside the intrinsics (GCC bug 105593).
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

// Folding by carry-less multiplication: V. Gopal et al., "Fast CRC Computation for Generic Polynomials
// Using PCLMULQDQ Instruction", Intel white paper, 2009, here 64 bytes a step.
//
// Loaded as little-endian, bit i of a 64-bit half h holds x^(63 - i). The carry-less product of h and a
// reflected residue k in the low 32 bits is then h * k * x^33 as 128 bits, so the residue of x^(n - 33)
// carries h over n bits. A 128-bit lane's first half is carried 64 bits further than its second.

#define VELTOR_CRC32C_AVX512_TARGET VELTOR_CRC32C_TARGET("sse4.2,pclmul,avx512f,vpclmulqdq")

namespace veltor::utils::crc32cvariants {
namespace {

constexpr long long carryFirst(std::uint32_t bits) noexcept
{
    return powerOfX(bits + 64 - 33);
}

constexpr long long carrySecond(std::uint32_t bits) noexcept
{
    return powerOfX(bits - 33);
}

VELTOR_CRC32C_AVX512_TARGET inline __m512i load(const unsigned char* p) noexcept
{
    return _mm512_loadu_si512(p);
}

/// Constants that carry every lane over @p bits.
template <std::uint32_t bits>
VELTOR_CRC32C_AVX512_TARGET inline __m512i carryOver() noexcept
{
    return _mm512_set_epi64(carrySecond(bits), carryFirst(bits), carrySecond(bits), carryFirst(bits),
                            carrySecond(bits), carryFirst(bits), carrySecond(bits), carryFirst(bits));
}

/// lanes * x^n + next, lane by lane, for the constants of n bits.
VELTOR_CRC32C_AVX512_TARGET inline __m512i fold(__m512i lanes, __m512i constants, __m512i next) noexcept
{
    constexpr int sumOfThree = 0x96;
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(lanes, constants, 0x00),
                                     _mm512_clmulepi64_epi128(lanes, constants, 0x11), next, sumOfThree);
}

/// Four accumulators over stretches of 256 bytes: enough to hide the multiplication's latency.
/// Takes at least 256 bytes; returns what stands for all of them in the place of the last 64.
VELTOR_CRC32C_AVX512_TARGET inline __m512i foldWide(std::uint32_t crc, const unsigned char*& p,
                                                    std::size_t& size) noexcept
{
    const __m512i over2048 = carryOver<2048>();
    __m512i a = _mm512_xor_si512(load(p), _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(crc))));
    __m512i b = load(p + 64);
    __m512i c = load(p + 128);
    __m512i d = load(p + 192);
    for (p += 256, size -= 256; size >= 256; p += 256, size -= 256) {
        a = fold(a, over2048, load(p));
        b = fold(b, over2048, load(p + 64));
        c = fold(c, over2048, load(p + 128));
        d = fold(d, over2048, load(p + 192));
    }
    const __m512i over512 = carryOver<512>();
    return fold(fold(a, over512, b), carryOver<1024>(), fold(c, over512, d));
}

/// The CRC of the 64 bytes that @p lanes stand for.
VELTOR_CRC32C_AVX512_TARGET inline std::uint32_t reduce(__m512i lanes) noexcept
{
    // The last lane stays where it is: multiplied by nothing, added afterwards.
    const __m512i toLast = _mm512_set_epi64(0, 0, carrySecond(128), carryFirst(128), carrySecond(256),
                                            carryFirst(256), carrySecond(384), carryFirst(384));
    const __m512i last = _mm512_maskz_mov_epi64(0xC0, lanes);
    const __m512i moved = fold(lanes, toLast, last);
    const __m256i halves =
        _mm256_xor_si256(_mm512_castsi512_si256(moved), _mm512_extracti64x4_epi64(moved, 1));
    const __m128i lane = _mm_xor_si128(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
    const auto first = static_cast<unsigned long long>(_mm_cvtsi128_si64(lane));
    const auto second = static_cast<unsigned long long>(_mm_extract_epi64(lane, 1));
    return static_cast<std::uint32_t>(_mm_crc32_u64(_mm_crc32_u64(0, first), second));
}

} // namespace

VELTOR_CRC32C_AVX512_TARGET std::uint32_t avx512(std::uint32_t previous, const void* data,
                                                 std::size_t size) noexcept
{
    const auto* p = static_cast<const unsigned char*>(data);
    if (size < 256) {
        return sse42(previous, data, size);
    }
    const __m512i over512 = carryOver<512>();
    __m512i lanes = foldWide(~previous, p, size);
    for (; size >= 64; p += 64, size -= 64) {
        lanes = fold(lanes, over512, load(p));
    }
    return sse42(~reduce(lanes), p, size);
}

} // namespace veltor::utils::crc32cvariants

#endif
