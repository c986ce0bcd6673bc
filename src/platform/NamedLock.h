#pragma once

#include <string>

namespace veltor::platform {

/// How a wait for a lock ended.
enum class WaitResult
{
    Acquired,
    Abandoned, ///< acquired as well, from an owner that ended without releasing it
    Refused,   ///< not acquired: held by another thread (when not waiting), closed, or failed
};

/// A handle to a lock that all processes of the machine, of all its users, find by its name. Ownership
/// belongs to a thread and is counted: a thread that owns the lock gets it again at once, and releases it
/// as often. Closing the handle does not release it; the end of the owning thread does.
///
/// Handles are for one thread at a time, the lock is for all.
class NamedLock
{
public:
    NamedLock() noexcept = default;
    ~NamedLock() { close(); }
    NamedLock(const NamedLock&) = delete;
    NamedLock& operator=(const NamedLock&) = delete;

    /// Creates the lock, or opens the one of that name; a handle that is open is closed first.
    bool open(const std::string& name) noexcept;
    void close() noexcept;
    [[nodiscard]] bool isOpen() const noexcept { return m_handle != nullptr; }

    /// Waits without a time limit.
    WaitResult lock() noexcept;
    /// Does not wait.
    WaitResult tryLock() noexcept;
    /// Releases one level; false when the calling thread owns none.
    bool unlock() noexcept;

private:
    void* m_handle = nullptr; // the system's own
};

} // namespace veltor::platform
