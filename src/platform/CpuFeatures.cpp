// The instructions that this processor has, asked once.

#include "platform/CpuFeatures.h"

#include <cstdint>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define VELTOR_CPUID 1
#ifdef _MSC_VER
#include <intrin.h>
#else
#include <cpuid.h>
#include <immintrin.h>
#endif
#endif

namespace veltor::platform {

#ifdef VELTOR_CPUID
namespace {

struct Registers
{
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
    std::uint32_t d = 0;
};

/// All zero when the processor does not know @p leaf.
Registers cpuid(std::uint32_t leaf) noexcept
{
    Registers r;
#ifdef _MSC_VER
    int words[4] = {};
    __cpuid(words, 0);
    if (static_cast<std::uint32_t>(words[0]) < leaf)
        return r;
    __cpuidex(words, static_cast<int>(leaf), 0);
    r.a = static_cast<std::uint32_t>(words[0]);
    r.b = static_cast<std::uint32_t>(words[1]);
    r.c = static_cast<std::uint32_t>(words[2]);
    r.d = static_cast<std::uint32_t>(words[3]);
#else
    __get_cpuid_count(leaf, 0, &r.a, &r.b, &r.c, &r.d);
#endif
    return r;
}

/// The register states the operating system saves on a switch of threads; call with OSXSAVE only.
#ifndef _MSC_VER
__attribute__((target("xsave")))
#endif
std::uint64_t
savedStates() noexcept
{
    return static_cast<std::uint64_t>(_xgetbv(0));
}

constexpr bool has(std::uint32_t word, unsigned bit) noexcept
{
    return (word >> bit & 1u) != 0;
}

} // namespace

CpuFeatures cpuFeatures() noexcept
{
    // Bit numbers: Intel's "Software Developer's Manual", volume 2, instruction CPUID.
    const Registers basic = cpuid(1);
    const Registers extended = cpuid(7);
    // XMM, YMM, the mask registers, the upper halves of ZMM0-15, and ZMM16-31.
    constexpr std::uint64_t avx512States = 0xE6;
    const bool osxsave = has(basic.c, 27);
    const bool avx512 =
        osxsave && (savedStates() & avx512States) == avx512States && has(extended.b, 16); // AVX512F
    CpuFeatures features;
    features.sse42 = has(basic.c, 20);
    features.avx512Clmul = features.sse42 && avx512 && has(basic.c, 1) && has(extended.c, 10);
    return features;
}
#else
CpuFeatures cpuFeatures() noexcept
{
    CpuFeatures features;
    features.armCrc32 = systemReportsArmCrc32();
    return features;
}
#endif

} // namespace veltor::platform
