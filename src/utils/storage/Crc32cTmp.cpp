#include "utils/storage/Crc32c.h"
namespace veltor::utils {
std::uint32_t crc32c(std::uint32_t previous, const void* data, std::size_t size) noexcept
{
    std::uint32_t c = ~previous;
    const auto* p = static_cast<const unsigned char*>(data);
    for (; size; --size) { c ^= *p++; for (int k = 0; k < 8; ++k) c = (c >> 1) ^ (0x82F63B78u & (0u - (c & 1u))); }
    return ~c;
}
}
