// Picks the fastest CRC-32C that the processor has.

#include "utils/storage/journal/Crc32c.h"

#include "platform/CpuFeatures.h"
#include "utils/storage/journal/crc32c/Variants.h"

#include <atomic>

namespace veltor::utils {
namespace {

std::uint32_t resolveAndCompute(std::uint32_t previous, const void* data, std::size_t size) noexcept;

/// Relaxed is enough: every thread that still meets the resolver finds the same function, and the
/// functions read constant tables only.
std::atomic<Crc32cFunction> g_active{&resolveAndCompute};

std::uint32_t resolveAndCompute(std::uint32_t previous, const void* data, std::size_t size) noexcept
{
    Crc32cFunction best = &crc32cvariants::portable;
    for (const Crc32cVariant& variant : crc32cVariants()) {
        if (variant.available) {
            best = variant.function;
            break;
        }
    }
    g_active.store(best, std::memory_order_relaxed);
    return best(previous, data, size);
}

} // namespace

std::uint32_t crc32c(std::uint32_t previous, const void* data, std::size_t size) noexcept
{
    return g_active.load(std::memory_order_relaxed)(previous, data, size);
}

std::array<Crc32cVariant, 4> crc32cVariants() noexcept
{
    const platform::CpuFeatures cpu = platform::cpuFeatures();
    Crc32cFunction avx512 = nullptr;
    Crc32cFunction sse42 = nullptr;
    Crc32cFunction armv8 = nullptr;
#ifdef VELTOR_CRC32C_AVX512
    avx512 = &crc32cvariants::avx512;
#endif
#ifdef VELTOR_CRC32C_X86
    sse42 = &crc32cvariants::sse42;
#endif
#ifdef VELTOR_CRC32C_ARM64
    armv8 = &crc32cvariants::armv8;
#endif
    return {{{"avx512", avx512, avx512 != nullptr && cpu.avx512Clmul},
             {"sse42", sse42, sse42 != nullptr && cpu.sse42},
             {"armv8", armv8, armv8 != nullptr && cpu.armCrc32},
             {"portable", &crc32cvariants::portable, true}}};
}

} // namespace veltor::utils
