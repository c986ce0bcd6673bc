// The query of the machine's memory, which tests replace.

#include "platform/MemoryInfo.h"

#include <atomic>

namespace veltor::platform {
namespace {

std::atomic<PhysicalMemoryQuery> query{&queryPhysicalMemory};

} // namespace

PhysicalMemory physicalMemory() noexcept
{
    return query.load(std::memory_order_acquire)();
}

PhysicalMemoryQuery exchangePhysicalMemoryQuery(PhysicalMemoryQuery replacement) noexcept
{
    return query.exchange(replacement != nullptr ? replacement : &queryPhysicalMemory,
                          std::memory_order_acq_rel);
}

} // namespace veltor::platform
