// A walk over the heaps of the process.

#include "platform/HeapInfo.h"

#include <windows.h>

#include <vector>

namespace veltor::platform {
namespace {

void add(HeapStatistics& sum, const PROCESS_HEAP_ENTRY& entry) noexcept
{
    if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        ++sum.allocations;
        sum.used += entry.cbData;
        sum.overhead += entry.cbOverhead;
    } else if ((entry.wFlags & PROCESS_HEAP_REGION) != 0) {
        ++sum.regions;
        sum.regionCommitted += entry.Region.dwCommittedSize;
        sum.regionUncommitted += entry.Region.dwUnCommittedSize;
    } else if ((entry.wFlags & PROCESS_HEAP_UNCOMMITTED_RANGE) != 0) {
        ++sum.uncommittedRanges;
        sum.uncommitted += entry.cbData;
    } else {
        ++sum.freeBlocks;
        sum.free += entry.cbData;
    }
}

/// Nothing here may allocate: the heap that is walked may be the one that would serve it.
void walk(HANDLE heap, HeapStatistics& sum) noexcept
{
    if (!::HeapLock(heap)) {
        return;
    }
    PROCESS_HEAP_ENTRY entry = {};
    while (::HeapWalk(heap, &entry)) {
        add(sum, entry);
    }
    ::HeapUnlock(heap);
}

} // namespace

HeapStatistics heapStatistics()
{
    HeapStatistics sum;
    const DWORD count = ::GetProcessHeaps(0, nullptr);
    sum.heaps = count;
    std::vector<HANDLE> heaps(count);
    // Another thread may have made or destroyed a heap in between: then the handles are not to be trusted.
    if (count == 0 || ::GetProcessHeaps(count, heaps.data()) != count) {
        return sum;
    }
    for (HANDLE heap : heaps) {
        walk(heap, sum);
    }
    return sum;
}

} // namespace veltor::platform
