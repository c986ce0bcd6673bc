#include "platform/NamedLock.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <sddl.h>

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

WaitResult wait(HANDLE mutex, DWORD timeoutMs) noexcept
{
    if (!mutex) {
        return WaitResult::Refused;
    }
    switch (WaitForSingleObject(mutex, timeoutMs)) {
    case WAIT_OBJECT_0:
        return WaitResult::Acquired;
    case WAIT_ABANDONED:
        return WaitResult::Abandoned;
    default:
        return WaitResult::Refused;
    }
}

} // namespace

bool NamedLock::open(const std::string& name) noexcept
{
    close();
    OpenToEveryone security;
    m_handle = CreateMutexA(security.attributes(), FALSE, name.c_str());
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
    return wait(m_handle, INFINITE);
}

WaitResult NamedLock::tryLock() noexcept
{
    return wait(m_handle, 0);
}

bool NamedLock::unlock() noexcept
{
    return m_handle && ReleaseMutex(m_handle);
}

} // namespace veltor::platform
