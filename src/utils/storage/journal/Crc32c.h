#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace veltor::utils {

/// Continues the CRC-32C (Castagnoli; reflected polynomial 0x82F63B78, register preset to all ones,
/// result complemented) @p previous over @p size bytes at @p data; 0 begins a new one, so that
/// `crc32c(crc32c(0, a), b)` is the CRC of a followed by b. No bytes give @p previous back, and
/// @p data may then be null. Any alignment; nothing outside the bytes is read. Thread-safe.
/// The fastest way this processor knows is picked at the first call.
std::uint32_t crc32c(std::uint32_t previous, const void* data, std::size_t size) noexcept;

using Crc32cFunction = std::uint32_t (*)(std::uint32_t previous, const void* data, std::size_t size) noexcept;

/// One way of computing what crc32c() does.
struct Crc32cVariant
{
    const char* name;
    Crc32cFunction function; ///< Null if it is not made for this family of processors.
    bool available;          ///< The processor at hand can run it.
};

/// All variants, the most wanted first and the portable one, always available, last. Thread-safe.
std::array<Crc32cVariant, 4> crc32cVariants() noexcept;

} // namespace veltor::utils
