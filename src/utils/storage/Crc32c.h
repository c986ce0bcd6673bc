#pragma once

#include <cstddef>
#include <cstdint>

namespace veltor::utils {
std::uint32_t crc32c(std::uint32_t previous, const void* data, std::size_t size) noexcept;
}
