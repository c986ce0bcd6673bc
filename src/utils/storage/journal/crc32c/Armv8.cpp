#include "utils/storage/journal/crc32c/Variants.h"

#ifdef VELTOR_CRC32C_ARM64

#ifdef __clang__
#define VELTOR_CRC32C_ENGINE_TARGET VELTOR_CRC32C_TARGET("crc")
#else
#define VELTOR_CRC32C_ENGINE_TARGET VELTOR_CRC32C_TARGET("+crc")
#endif
#include "utils/storage/journal/crc32c/Interleaved.h"

#ifdef _MSC_VER
#include <intrin.h>
#endif

namespace veltor::utils::crc32cvariants {
namespace {

/// By the compilers' builtins: their <arm_acle.h> hides the intrinsics where the whole file is not
/// compiled for the CRC instructions.
struct Engine
{
    using Word = std::uint64_t;
    using Register = std::uint32_t;
    VELTOR_CRC32C_ENGINE_TARGET static Register step(Register crc, Word word) noexcept
    {
#if defined(_MSC_VER)
        return __crc32cd(crc, word);
#elif defined(__clang__)
        return __builtin_arm_crc32cd(crc, word);
#else
        return __builtin_aarch64_crc32cx(crc, word);
#endif
    }
    VELTOR_CRC32C_ENGINE_TARGET static Register step(Register crc, unsigned char byte) noexcept
    {
#if defined(_MSC_VER)
        return __crc32cb(crc, byte);
#elif defined(__clang__)
        return __builtin_arm_crc32cb(crc, byte);
#else
        return __builtin_aarch64_crc32cb(crc, byte);
#endif
    }
};

} // namespace

VELTOR_CRC32C_ENGINE_TARGET std::uint32_t armv8(std::uint32_t previous, const void* data,
                                                std::size_t size) noexcept
{
    return interleaved<Engine>(previous, data, size);
}

} // namespace veltor::utils::crc32cvariants

#endif
