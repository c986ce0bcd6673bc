#include "utils/storage/journal/crc32c/Polynomial.h"
#include "utils/storage/journal/crc32c/Variants.h"

#include <array>

// Slicing-by-8: M. E. Kounavis and F. L. Berry, "A Systematic Approach to Building High Performance
// Software-based CRC Generators", 2005.

namespace veltor::utils::crc32cvariants {
namespace {

using Table = std::array<std::uint32_t, 256>;

/// Table k holds, for each byte, its residue after k further zero bytes.
constexpr std::array<Table, 8> makeTables() noexcept
{
    std::array<Table, 8> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t residue = byte;
        for (Table& table : tables) {
            for (int bit = 0; bit < 8; ++bit) {
                residue = timesX(residue);
            }
            table[byte] = residue;
        }
    }
    return tables;
}

constexpr std::array<Table, 8> tables = makeTables();
static_assert(tables[0][1] == 0xF26B8303u && tables[0][2] == 0xE13B70F7u);

std::uint32_t littleEndian(const unsigned char* p) noexcept
{
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

std::uint32_t singleBytes(std::uint32_t crc, const unsigned char* p, std::size_t count) noexcept
{
    for (; count > 0; --count) {
        crc = (crc >> 8) ^ tables[0][(crc ^ *p++) & 0xFFu];
    }
    return crc;
}

} // namespace

std::uint32_t portable(std::uint32_t previous, const void* data, std::size_t size) noexcept
{
    const auto* p = static_cast<const unsigned char*>(data);
    std::size_t head = (0u - reinterpret_cast<std::uintptr_t>(p)) & 3u;
    head = head < size ? head : size;
    std::uint32_t crc = singleBytes(~previous, p, head);
    p += head;
    size -= head;
    for (; size >= 8; p += 8, size -= 8) {
        const std::uint32_t low = crc ^ littleEndian(p);
        const std::uint32_t high = littleEndian(p + 4);
        crc = tables[7][low & 0xFFu] ^ tables[6][low >> 8 & 0xFFu] ^ tables[5][low >> 16 & 0xFFu] ^
              tables[4][low >> 24] ^ tables[3][high & 0xFFu] ^ tables[2][high >> 8 & 0xFFu] ^
              tables[1][high >> 16 & 0xFFu] ^ tables[0][high >> 24];
    }
    return ~singleBytes(crc, p, size);
}

} // namespace veltor::utils::crc32cvariants
