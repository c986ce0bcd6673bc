#pragma once

#include <cstdint>

namespace veltor::platform {

/// The machine's physical memory in bytes; both 0 when the system does not tell.
struct PhysicalMemory
{
    std::uint64_t total = 0;
    std::uint64_t available = 0; ///< what programs can still get without swapping, as the system estimates it
};

/// Asks the operating system anew each time. Thread-safe.
PhysicalMemory physicalMemory() noexcept;

using PhysicalMemoryQuery = PhysicalMemory (*)() noexcept;

/// Puts another answer in place of physicalMemory()'s and returns the former one; null restores the
/// system's own. For tests. Thread-safe.
PhysicalMemoryQuery exchangePhysicalMemoryQuery(PhysicalMemoryQuery replacement) noexcept;

/// The operating system's own answer.
PhysicalMemory queryPhysicalMemory() noexcept;

/// The memory limit in bytes of the container that the process runs in, 0 when there is none or the
/// system does not tell. Thread-safe.
std::uint64_t containerMemoryLimit();

} // namespace veltor::platform
