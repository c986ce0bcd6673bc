#pragma once

// The method of processors with a CRC-32C instruction. The including source defines
// VELTOR_CRC32C_ENGINE_TARGET, the instructions it may use, before it includes this.

#include "utils/storage/journal/crc32c/Polynomial.h"
#include "utils/storage/journal/crc32c/Variants.h"

#include <array>
#include <cstring>

namespace veltor::utils::crc32cvariants {

/// Tables that move a CRC over a fixed number of zero bytes: the residue is linear in the register's
/// bits, so its four bytes are looked up one by one.
class ZeroBytes
{
public:
    constexpr explicit ZeroBytes(std::uint32_t count) noexcept
    {
        const std::uint32_t power = powerOfX(8 * count);
        for (std::uint32_t bit = 0; bit < 32; ++bit) {
            auto& table = m_tables[bit / 8];
            const std::uint32_t single = 1u << bit % 8;
            const std::uint32_t residue = product(1u << bit, power);
            for (std::uint32_t below = 0; below < single; ++below) {
                table[single + below] = table[below] ^ residue;
            }
        }
    }

    std::uint32_t append(std::uint32_t crc) const noexcept
    {
        return m_tables[0][crc & 0xFFu] ^ m_tables[1][crc >> 8 & 0xFFu] ^ m_tables[2][crc >> 16 & 0xFFu] ^
               m_tables[3][crc >> 24];
    }

private:
    std::array<std::array<std::uint32_t, 256>, 4> m_tables{};
};

/// Engine: `Word`, the unsigned type its instruction takes at once; `Register`, the type the instruction
/// keeps the CRC in, to spare conversions between steps; step(crc, value) for words and for bytes. All
/// on the bare register, not complemented.
template <class Engine>
VELTOR_CRC32C_ENGINE_TARGET inline typename Engine::Word loadWord(const unsigned char* p) noexcept
{
    typename Engine::Word word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// One stream, for short runs.
template <class Engine>
VELTOR_CRC32C_ENGINE_TARGET inline std::uint32_t sequential(std::uint32_t begin, const unsigned char* p,
                                                            std::size_t size) noexcept
{
    typename Engine::Register crc = begin;
    constexpr std::size_t step = sizeof(typename Engine::Word);
    for (; size >= step; p += step, size -= step) {
        crc = Engine::step(crc, loadWord<Engine>(p));
    }
    for (; size > 0; --size) {
        crc = Engine::step(crc, *p++);
    }
    return static_cast<std::uint32_t>(crc);
}

/// Three neighbouring stretches at a time, as long as they fit: the instruction takes three cycles
/// but starts anew every cycle. V. Gopal et al., "Fast CRC Computation for iSCSI Polynomial Using
/// CRC32 Instruction", Intel white paper, 2011; the three results are joined by tables here.
template <class Engine, std::size_t stretch>
VELTOR_CRC32C_ENGINE_TARGET inline std::uint32_t threeStreams(std::uint32_t crc, const unsigned char*& p,
                                                              std::size_t& size) noexcept
{
    constexpr std::size_t step = sizeof(typename Engine::Word);
    static_assert(stretch % step == 0);
    static constexpr ZeroBytes zeroBytes{static_cast<std::uint32_t>(stretch)};
    for (; size >= 3 * stretch; p += 3 * stretch, size -= 3 * stretch) {
        typename Engine::Register first = crc;
        typename Engine::Register second = 0;
        typename Engine::Register third = 0;
        for (std::size_t i = 0; i < stretch; i += step) {
            first = Engine::step(first, loadWord<Engine>(p + i));
            second = Engine::step(second, loadWord<Engine>(p + stretch + i));
            third = Engine::step(third, loadWord<Engine>(p + 2 * stretch + i));
        }
        const std::uint32_t both =
            zeroBytes.append(static_cast<std::uint32_t>(first)) ^ static_cast<std::uint32_t>(second);
        crc = zeroBytes.append(both) ^ static_cast<std::uint32_t>(third);
    }
    return crc;
}

template <class Engine>
VELTOR_CRC32C_ENGINE_TARGET inline std::uint32_t interleaved(std::uint32_t previous, const void* data,
                                                             std::size_t size) noexcept
{
    const auto* p = static_cast<const unsigned char*>(data);
    std::uint32_t crc = ~previous;
    if (size >= 3 * 64) {
        crc = threeStreams<Engine, 2048>(crc, p, size);
        crc = threeStreams<Engine, 256>(crc, p, size);
        crc = threeStreams<Engine, 64>(crc, p, size);
    }
    return ~sequential<Engine>(crc, p, size);
}

} // namespace veltor::utils::crc32cvariants
