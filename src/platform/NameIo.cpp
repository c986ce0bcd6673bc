// Which implementation of NameIo is in use.

#include "platform/NameIo.h"

#include <atomic>

namespace veltor::platform {
namespace {

std::atomic<NameIo*> g_replacement{nullptr};

} // namespace

NameIo& nameIo() noexcept
{
    static NameIo system;
    NameIo* const replacement = g_replacement.load(std::memory_order_acquire);
    return replacement ? *replacement : system;
}

NameIo* exchangeNameIo(NameIo* replacement) noexcept
{
    return g_replacement.exchange(replacement, std::memory_order_acq_rel);
}

} // namespace veltor::platform
