#pragma once

#include <veltor/utils/NamedMutex.h>

#include <chrono>
#include <mutex>
#include <system_error>

namespace veltor::utils {

/// Owns a NamedMutex until it goes out of scope.
///
///     NamedMutexGuard guard(mutex);
///     if (guard.wasAbandoned()) {
///         ... repair what the dead owner left ...
///     }
///
/// It is also what the standard library's guards can lock, the mutex itself being none, since its lock()
/// cannot fail loudly:
///
///     NamedMutexGuard guard(mutex, std::defer_lock);
///     std::unique_lock lock(guard, std::chrono::seconds(5));
///
/// Owner thread only. The mutex must outlive the guard.
class NamedMutexGuard
{
public:
    /// Waits for the mutex. @throws what lock() throws
    explicit NamedMutexGuard(NamedMutex& mutex)
        : NamedMutexGuard(mutex, std::defer_lock)
    {
        lock();
    }
    /// Locks nothing yet.
    NamedMutexGuard(NamedMutex& mutex, std::defer_lock_t /*defer*/) noexcept
        : m_mutex(mutex)
    {}
    /// Releases what was locked through this guard and not unlocked.
    ~NamedMutexGuard()
    {
        while (m_levels > 0) {
            unlock();
        }
    }
    NamedMutexGuard(const NamedMutexGuard&) = delete;
    NamedMutexGuard& operator=(const NamedMutexGuard&) = delete;

    /// Waits for the mutex. @throws std::system_error when it is closed or the system refuses
    void lock() { take(m_mutex.acquire()); }
    /// Does not wait. @return whether the mutex is owned now. @throws what lock() throws
    bool try_lock() { return take(m_mutex.tryAcquire()); } // NOLINT: the standard library's name
    /// Waits for a time, as NamedMutex::tryAcquire() does. @return and @throws as try_lock()
    template <typename Rep, typename Period>
    bool try_lock_for(const std::chrono::duration<Rep, Period>& limit) // NOLINT: the standard library's name
    {
        return take(m_mutex.tryAcquire(std::chrono::ceil<std::chrono::milliseconds>(limit)));
    }
    /// Waits until a moment. @return and @throws as try_lock()
    template <typename Clock, typename Duration>
    bool try_lock_until(const std::chrono::time_point<Clock, Duration>& moment) // NOLINT: as above
    {
        return try_lock_for(moment - Clock::now());
    }
    /// Releases one level; nothing when none was locked through this guard.
    void unlock()
    {
        if (m_levels > 0) {
            --m_levels;
            m_mutex.unlock();
        }
    }

    /// Whether something is locked through this guard.
    [[nodiscard]] bool ownsLock() const noexcept { return m_levels > 0; }
    /// Whether the last lock was taken from an owner that had ended without releasing it.
    [[nodiscard]] bool wasAbandoned() const noexcept { return m_wasAbandoned; }

private:
    bool take(NamedMutex::Result result)
    {
        if (result == NamedMutex::Result::Failed) {
            throw std::system_error(std::make_error_code(std::errc::operation_not_permitted),
                                    m_mutex.errorString().toStdString());
        }
        m_wasAbandoned = result == NamedMutex::Result::Abandoned;
        m_levels += result == NamedMutex::Result::Busy ? 0 : 1;
        return result != NamedMutex::Result::Busy;
    }

    NamedMutex& m_mutex;
    int m_levels = 0;
    bool m_wasAbandoned = false;
};

} // namespace veltor::utils
