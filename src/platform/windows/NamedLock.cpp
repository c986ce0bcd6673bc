// Named locks: mutexes of the system.

#include "platform/NamedLock.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <sddl.h>

#include <algorithm>

namespace veltor::platform {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(SECURITY_ATTRIBUTES) == 12, "the record of 32-bit Windows");

/// Everybody may do everything with the mutex: it is there for the processes of all users.
class OpenToEveryone
{
public:
    OpenToEveryone() noexcept
    {
        // When this fails the descriptor stays null, which means the default one.
        ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;OICI;GA;;;WD)", SDDL_REVISION_1,
                                                             &m_attributes.lpSecurityDescriptor, nullptr);
    }
    ~OpenToEveryone() { LocalFree(m_attributes.lpSecurityDescriptor); }
    OpenToEveryone(const OpenToEveryone&) = delete;
    OpenToEveryone& operator=(const OpenToEveryone&) = delete;

    SECURITY_ATTRIBUTES* attributes() noexcept { return &m_attributes; }

private:
    SECURITY_ATTRIBUTES m_attributes = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

WaitResult wait(HANDLE mutex, DWORD timeoutMs, LockError& error) noexcept
{
    if (!mutex) {
        error = {ERROR_INVALID_HANDLE, {}};
        return WaitResult::Failed;
    }
    switch (WaitForSingleObject(mutex, timeoutMs)) {
    case WAIT_OBJECT_0:
        return WaitResult::Acquired;
    case WAIT_ABANDONED:
        return WaitResult::Abandoned;
    case WAIT_TIMEOUT:
        return WaitResult::Busy;
    default:
        error = {static_cast<int>(GetLastError()), {}};
        return WaitResult::Failed;
    }
}

} // namespace

bool NamedLock::open(const std::string& name) noexcept
{
    close();
    m_error = {};
    OpenToEveryone security;
    m_handle = CreateMutexA(security.attributes(), FALSE, name.c_str());
    if (!m_handle) {
        m_error.code = static_cast<int>(GetLastError());
    }
    return isOpen();
}

void NamedLock::close() noexcept
{
    if (m_handle) {
        CloseHandle(m_handle);
        m_handle = nullptr;
    }
}

WaitResult NamedLock::lock() noexcept
{
    return wait(m_handle, INFINITE, m_error);
}

WaitResult NamedLock::lockFor(std::chrono::milliseconds limit) noexcept
{
    constexpr long long longest = INFINITE - 1LL; // seven weeks
    return wait(m_handle, static_cast<DWORD>(std::clamp(limit.count() + 0LL, 0LL, longest)), m_error);
}

bool NamedLock::unlock() noexcept
{
    return m_handle && ReleaseMutex(m_handle);
}

} // namespace veltor::platform
