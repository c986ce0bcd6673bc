#include "utils/storage/journal/crc32c/Variants.h"

#ifdef VELTOR_CRC32C_X86

#define VELTOR_CRC32C_ENGINE_TARGET VELTOR_CRC32C_TARGET("sse4.2")
#include "utils/storage/journal/crc32c/Interleaved.h"

#include <nmmintrin.h>

namespace veltor::utils::crc32cvariants {
namespace {

struct Engine
{
#ifdef VELTOR_CRC32C_X86_64
    using Word = std::uint64_t;
    using Register = std::uint64_t;
    VELTOR_CRC32C_ENGINE_TARGET static Register step(Register crc, Word word) noexcept
    {
        return _mm_crc32_u64(crc, word);
    }
#else
    using Word = std::uint32_t;
    using Register = std::uint32_t;
    VELTOR_CRC32C_ENGINE_TARGET static Register step(Register crc, Word word) noexcept
    {
        return _mm_crc32_u32(crc, word);
    }
#endif
    VELTOR_CRC32C_ENGINE_TARGET static Register step(Register crc, unsigned char byte) noexcept
    {
        return _mm_crc32_u8(static_cast<std::uint32_t>(crc), byte);
    }
};

} // namespace

VELTOR_CRC32C_ENGINE_TARGET std::uint32_t sse42(std::uint32_t previous, const void* data,
                                                std::size_t size) noexcept
{
    return interleaved<Engine>(previous, data, size);
}

} // namespace veltor::utils::crc32cvariants

#endif
