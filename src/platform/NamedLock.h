#pragma once

#include <chrono>
#include <string>

namespace veltor::platform {

/// How a wait for a lock ended.
enum class WaitResult
{
    Acquired,
    Abandoned, ///< acquired as well, from an owner that ended without releasing it
    Busy,      ///< not acquired: held by another thread until the limit
    Failed,    ///< not acquired: the handle is closed, or the system refused; see NamedLock::error()
};

/// What kept a handle from its lock.
struct LockError
{
    /// The object at the lock's name is none that open() would make.
    static constexpr int NoLock = -1;

    int code = 0;      ///< the system's, or NoLock; 0 when there is none
    std::string place; ///< the file, where a lock is one
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
    /// Waits for @p limit at most; does not wait when it is 0 or less.
    WaitResult lockFor(std::chrono::milliseconds limit) noexcept;
    /// Releases one level; false when the calling thread owns none.
    bool unlock() noexcept;

    /// Why the last open(), or wait that Failed, did.
    [[nodiscard]] const LockError& error() const noexcept { return m_error; }

private:
    void* m_handle = nullptr; // the system's own
    LockError m_error;
};

} // namespace veltor::platform
