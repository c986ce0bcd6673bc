// The token by which code that knows no handler learns that it is to stop.

#include <veltor/concurrent/CancellationToken.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace veltor::concurrent {

class CancellationState
{
public:
    [[nodiscard]] bool isCanceled() const noexcept { return m_canceled.load(std::memory_order_acquire); }

    void cancel() noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_canceled.store(true, std::memory_order_release);
        m_changed.notify_all();
    }

    /// In steps: a clock's last moment lies nearer than the longest limit.
    bool waitFor(std::chrono::milliseconds limit)
    {
        constexpr std::chrono::milliseconds step = std::chrono::hours(24);
        std::unique_lock lock(m_mutex);
        while (!isCanceled() && limit.count() > 0) {
            const auto now = std::min(limit, step);
            m_changed.wait_for(lock, now, [this] { return isCanceled(); });
            limit -= now;
        }
        return isCanceled();
    }

private:
    std::mutex m_mutex; // a change of m_canceled passes through it
    std::condition_variable m_changed;
    std::atomic<bool> m_canceled{false};
};

Canceled::Canceled()
    : std::runtime_error(
          QCoreApplication::translate("veltor::concurrent::ProgressHandler", "Операция была прервана")
              .toStdString())
{}

CancellationToken::CancellationToken(std::shared_ptr<CancellationState> state) noexcept
    : m_state(std::move(state))
{}

bool CancellationToken::isCanceled() const noexcept
{
    return m_state && m_state->isCanceled();
}

void CancellationToken::throwIfCanceled() const
{
    if (isCanceled()) {
        throw Canceled();
    }
}

bool CancellationToken::waitFor(std::chrono::milliseconds limit) const
{
    return m_state ? m_state->waitFor(limit)
                   : CancellationSource().token().waitFor(limit); // nobody will wake it
}

CancellationSource::CancellationSource()
    : m_state(std::make_shared<CancellationState>())
{}

CancellationToken CancellationSource::token() const noexcept
{
    return CancellationToken(m_state);
}

void CancellationSource::cancel() const noexcept
{
    m_state->cancel();
}

bool CancellationSource::isCanceled() const noexcept
{
    return m_state->isCanceled();
}

} // namespace veltor::concurrent
