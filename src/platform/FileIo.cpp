// Where calls to files go: to the system, or to a test in its place.

#include "platform/FileIo.h"

#include <atomic>

namespace veltor::platform {
namespace {

std::atomic<FileIo*> g_replacement{nullptr};

} // namespace

FileIo& fileIo() noexcept
{
    static FileIo system;
    FileIo* const replacement = g_replacement.load(std::memory_order_acquire);
    return replacement ? *replacement : system;
}

FileIo* exchangeFileIo(FileIo* replacement) noexcept
{
    return g_replacement.exchange(replacement, std::memory_order_acq_rel);
}

} // namespace veltor::platform
