// Keeps the spans that timers hand in, until somebody asks.

#include "SpanRecorder.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <tuple>

namespace veltor::utils {

qint64 nowNs() noexcept
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

SpanRecorder& SpanRecorder::instance()
{
    static auto* const recorder = new SpanRecorder;
    return *recorder;
}

void SpanRecorder::start(std::size_t limit)
{
    const std::lock_guard lock(m_mutex);
    m_runs = false; // nobody adds to a store that has been emptied
    // A thread that has ended has let go of its store.
    const auto ended = std::remove_if(m_stores.begin(), m_stores.end(),
                                      [](const auto& store) { return store.use_count() == 1; });
    m_stores.erase(ended, m_stores.end());
    for (const auto& store : m_stores) {
        const std::lock_guard storeLock(store->mutex);
        store->spans = {};
    }
    m_dropped = 0;
    m_room = limit;
    m_startNs = nowNs();
    m_runs = true;
}

void SpanRecorder::stop()
{
    m_runs = false;
}

std::shared_ptr<SpanRecorder::Store> SpanRecorder::addStore()
{
    auto store = std::make_shared<Store>();
    const std::lock_guard lock(m_mutex);
    store->thread = ++m_threads;
    m_stores.push_back(store);
    return store;
}

/// Null at a thread's very end, when its store is gone already.
SpanRecorder::Store* SpanRecorder::ownStore()
{
    thread_local bool ended = false;
    struct Holder
    {
        ~Holder() { isEnded = true; }
        bool& isEnded;
        const std::shared_ptr<Store> store;
    };
    if (ended) {
        return nullptr;
    }
    thread_local const Holder holder{ended, addStore()};
    return holder.store.get();
}

void SpanRecorder::enter() noexcept
try {
    if (Store* const store = ownStore()) {
        ++store->depth;
    }
} catch (const std::exception&) {
    ++m_dropped;
}

void SpanRecorder::leave(SummaryTime::OperationId operation, qint64 beginNs, qint64 endNs) noexcept
try {
    Store* const store = ownStore();
    if (!store) {
        return;
    }
    store->depth = std::max(store->depth - 1, 0);
    const std::lock_guard lock(store->mutex);
    const qint64 startNs = m_startNs;
    if (!m_runs || beginNs < startNs) {
        return;
    }
    std::size_t room = m_room;
    while (room > 0 && !m_room.compare_exchange_weak(room, room - 1)) {
    }
    if (room == 0) {
        ++m_dropped;
        return;
    }
    store->spans.push_back({operation, store->thread, store->depth, beginNs - startNs, endNs - beginNs});
} catch (const std::exception&) {
    ++m_dropped;
}

std::vector<TimeTrace::Span> SpanRecorder::spans()
{
    std::vector<TimeTrace::Span> all;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& store : m_stores) {
            const std::lock_guard storeLock(store->mutex);
            all.insert(all.end(), store->spans.begin(), store->spans.end());
        }
    }
    std::sort(all.begin(), all.end(), [](const TimeTrace::Span& a, const TimeTrace::Span& b) {
        return std::tie(a.thread, a.beginNs, a.depth) < std::tie(b.thread, b.beginNs, b.depth);
    });
    return all;
}

} // namespace veltor::utils
