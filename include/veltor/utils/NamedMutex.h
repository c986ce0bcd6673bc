#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

#include <chrono>
#include <memory>
#include <string>

namespace veltor::platform {
class NamedLock;
}

namespace veltor::utils {

/// A mutex that all processes of the machine, of all its users, share by its name.
///
///     NamedMutex mutex;
///     if (mutex.open("project-index") && mutex.enter()) {
///         ... alone on this machine ...
///         mutex.unlock();
///     }
///
/// NamedMutexGuard releases by itself, and works with `std::unique_lock`.
///
/// Ownership belongs to the thread that locked and is counted: the thread may lock again, through any
/// object of that name, and must unlock as often.
///
/// Abandoned mutexes. When a thread or process ends while it owns the mutex, the next one that waits gets
/// it, but is told: acquire() returns Abandoned, lock() and tryLock() return false although the caller owns
/// one level now. What the mutex protects may be half-changed then. enter() locks once more in this case, so
/// it ends with two levels and one unlock() leaves one.
///
/// Closing an object does not release what was locked through it: the thread stays the owner until it
/// unlocks through another object of that name, or ends. After a fork the child owns nothing.
///
/// On Linux the mutex is an empty file of the shared memory, which stays until the system restarts; so a
/// mutex whose owner died is found abandoned even when no process had it open in between. The kernel holds
/// the lock. Other users can lock the mutex as well, and keep it; they can make it look abandoned. They
/// cannot take it from its owner. Only root, and the user who was the first to use a name, can remove its
/// file: who locks afterwards uses a new one, and excludes nobody who owns the old one then. Names are any
/// bytes of any length.
///
/// On Windows a name is text of the ANSI code page, with the system's rules for prefixes, backslashes and
/// length; the system keeps the mutex while a process has it open.
///
/// Threads: the object is for one thread at a time; the mutex is what synchronises.
class VELTOR_UTILS_EXPORT NamedMutex
{
public:
    /// How an attempt to lock ended.
    enum class Result
    {
        Acquired,  ///< owned, taken from nobody
        Abandoned, ///< owned, after an owner that ended without releasing it
        Busy,      ///< not owned: another thread has it
        Failed,    ///< not owned: the object is closed, or the system refused; see errorString()
    };

    /// A closed object.
    NamedMutex();
    /// Closes.
    virtual ~NamedMutex();

    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;

    /// Closes, then creates the mutex @p name or opens the one that exists.
    /// @return false, with the object closed, when the system refuses, or when something else has the place
    ///     of the mutex's file; errorString() and a line of the log tell what and where
    bool open(const std::string& name);
    /// What open() does after closing; an object that is still open is closed here too.
    bool openImpl(const std::string& name);
    /// Lets the mutex go, locked or not; nothing happens when closed.
    void close();

    /// Whether the object has a mutex.
    [[nodiscard]] bool isOpened() const;
    /// Whether it has none.
    [[nodiscard]] bool isClosed() const;

    /// Waits without a time limit. Never Busy.
    [[nodiscard]] Result acquire();
    /// Waits for @p limit at most; 0 and less: not at all. On Linux a release by another process is noticed
    /// up to 13 ms late, and whoever waits without a limit comes first: the kernel has no wait with a limit
    /// for such locks, so this one looks again and again, ever more rarely. Releases within the process are
    /// noticed at once.
    [[nodiscard]] Result tryAcquire(std::chrono::milliseconds limit = std::chrono::milliseconds(0));

    /// acquire() with less to tell. @return true when the mutex was taken from nobody; false when it was
    /// abandoned (and is owned now, see above), and when the object is closed or the wait failed
    bool lock();
    /// The same without waiting: false also when another thread owns the mutex.
    bool tryLock();
    /// The same within a time: false also when another thread owned the mutex all the while. See
    /// tryAcquire() for the limit.
    /// @{
    bool tryLockFor(std::chrono::milliseconds limit);
    bool tryLockFor(int milliseconds) { return tryLockFor(std::chrono::milliseconds(milliseconds)); }
    /// @}
    /// Releases one level. False when the calling thread owns none, or the object is closed.
    bool unlock();

    /// Locks until it succeeds, ever more patiently (see activeWait()). CAUTION: never returns for a
    /// closed object.
    /// @return true
    bool enter();

    /// Why the last open() returned false, or the last wait Failed: the mutex's file, where it is one, and
    /// the system's reason. Empty when nothing failed since open().
    [[nodiscard]] QString errorString() const;

    /// One step of a polite wait: the first 1000 steps yield the processor and count, every later one
    /// sleeps 13 ms.
    /// @param steps  the caller's counter, 0 before the first step
    static void activeWait(unsigned& steps);

private:
    std::unique_ptr<platform::NamedLock> m_holder;
};

} // namespace veltor::utils
