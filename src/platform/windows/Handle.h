#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <system_error>
#include <utility>

namespace veltor::platform {

/// Owns a handle of the system; both of its ways to say "none" count as such.
class Handle
{
public:
    Handle() noexcept = default;
    explicit Handle(HANDLE handle) noexcept
        : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) // NOLINT: the system's own convention
    {}
    Handle(Handle&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr))
    {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { reset(); }

    [[nodiscard]] HANDLE get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    void reset() noexcept
    {
        if (m_handle) {
            CloseHandle(std::exchange(m_handle, nullptr));
        }
    }

private:
    HANDLE m_handle = nullptr;
};

inline std::error_code systemError(DWORD code = GetLastError())
{
    return {static_cast<int>(code), std::system_category()};
}

} // namespace veltor::platform
