#pragma once

#include <veltor/utils/TimeTrace.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace veltor::utils {

/// The spans of all threads, each in a store of its own, so that threads do not wait for each other.
class SpanRecorder
{
public:
    /// The process's one; never destroyed, since scopes end until the very end.
    static SpanRecorder& instance();

    void start(std::size_t limit);
    void stop();

    /// In the thread of the scope.
    /// @{
    void enter() noexcept;
    void leave(SummaryTime::OperationId operation, qint64 beginNs, qint64 endNs) noexcept;
    /// @}

    [[nodiscard]] std::vector<TimeTrace::Span> spans();
    [[nodiscard]] quint64 dropped() const noexcept { return m_dropped; }

private:
    struct Store
    {
        int thread = 0;
        int depth = 0;    // the thread's alone
        std::mutex mutex; // guards the spans
        std::vector<TimeTrace::Span> spans;
    };

    Store* ownStore();
    std::shared_ptr<Store> addStore();

    std::mutex m_mutex; // guards the stores' list and what it numbers
    std::vector<std::shared_ptr<Store>> m_stores;
    int m_threads = 0;
    std::atomic<qint64> m_startNs{0};
    std::atomic<bool> m_runs{false};
    std::atomic<std::size_t> m_room{0};
    std::atomic<quint64> m_dropped{0};
};

/// Of the monotonic clock.
[[nodiscard]] qint64 nowNs() noexcept;

} // namespace veltor::utils
