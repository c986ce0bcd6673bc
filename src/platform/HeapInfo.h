#pragma once

#include <cstdint>

namespace veltor::platform {

/// Statistics over all heaps of the process; sizes in bytes.
///
/// Windows counts them by walking each heap's entries. The GNU C library reports sums, which are taken
/// so: heaps are its arenas; regions the stretches of address space that these consist of; uncommitted is
/// what an arena has given back to the system but kept the addresses of, one range an arena; used bytes
/// include blocks that have a mapping of their own, and only these are counted as allocations, since the
/// library keeps no count of the smaller ones; nor does it tell its overhead, which is 0. Other C
/// libraries tell nothing: all are 0.
struct HeapStatistics
{
    std::uint64_t heaps = 0;
    std::uint64_t regions = 0;
    std::uint64_t regionCommitted = 0;
    std::uint64_t regionUncommitted = 0;
    std::uint64_t allocations = 0;
    std::uint64_t used = 0;
    std::uint64_t overhead = 0;
    std::uint64_t uncommittedRanges = 0;
    std::uint64_t uncommitted = 0;
    std::uint64_t freeBlocks = 0;
    std::uint64_t free = 0;
};

/// Takes each heap's lock in turn, so other threads may wait meanwhile. Thread-safe.
HeapStatistics heapStatistics();

} // namespace veltor::platform
