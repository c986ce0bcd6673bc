// One thread that reads, all processors that measure, and one that takes the results in order.

#include "MapRun.h"

#include "Console.h"
#include "Text.h"

#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/utils/ScopedTimer.h>

#include <QtCore/QThread>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace veltor::tool {
namespace {

/// Some features in the map's order, measured as one piece of work.
struct Batch
{
    qint64 number = 0;
    qsizetype points = 0;
    std::vector<MapFeature> features;
    std::vector<MeasuredFeature> results;
    Notes notes;
};
using BatchPtr = std::unique_ptr<Batch>;

constexpr int batchPoints = 16384;
constexpr std::size_t batchFeatures = 512;

struct Stopped
{};

/// The way of the batches: reader, workers, taker.
class Conveyor
{
public:
    explicit Conveyor(std::size_t room)
        : m_room(room)
    {}

    /// The reader's: waits while too many are on their way.
    /// @throws Stopped
    void put(BatchPtr batch)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_underWay < m_room || m_isStopped; });
        if (m_isStopped) {
            throw Stopped();
        }
        batch->number = m_count++;
        ++m_underWay;
        m_waiting.push_back(std::move(batch));
        m_changed.notify_all();
    }

    /// The reader's last call, with what it failed with.
    void end(std::exception_ptr fault)
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        if (fault && !m_fault) {
            m_fault = std::move(fault);
        }
        m_changed.notify_all();
    }

    /// A worker's: the next batch, null when none will come.
    BatchPtr next()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_waiting.empty() || m_hasEnded || m_isStopped; });
        if (m_waiting.empty() || m_isStopped) {
            return nullptr;
        }
        BatchPtr batch = std::move(m_waiting.front());
        m_waiting.pop_front();
        return batch;
    }

    void finished(BatchPtr batch)
    {
        const std::lock_guard lock(m_mutex);
        m_finished[batch->number] = std::move(batch);
        m_changed.notify_all();
    }

    /// The taker's: the next batch in order. Null when the time is over, and at the end, which @p isEnd
    /// tells.
    BatchPtr take(bool& isEnd)
    {
        std::unique_lock lock(m_mutex);
        const auto isReady = [&] { return m_finished.count(m_taken) != 0 || isOver(); };
        m_changed.wait_for(lock, std::chrono::milliseconds(100), isReady);
        const auto found = m_finished.find(m_taken);
        if (found == m_finished.end()) {
            isEnd = isOver();
            if (isEnd && m_fault) {
                std::rethrow_exception(m_fault);
            }
            return nullptr;
        }
        BatchPtr batch = std::move(found->second);
        m_finished.erase(found);
        ++m_taken;
        --m_underWay;
        m_changed.notify_all();
        return batch;
    }

    void stop(std::exception_ptr fault = nullptr)
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
        if (fault && !m_fault) {
            m_fault = std::move(fault);
        }
        m_changed.notify_all();
    }

private:
    [[nodiscard]] bool isOver() const { return m_isStopped || (m_hasEnded && m_taken == m_count); }

    const std::size_t m_room;
    std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    std::deque<BatchPtr> m_waiting;
    std::map<qint64, BatchPtr> m_finished;
    std::size_t m_underWay = 0;
    qint64 m_count = 0;
    qint64 m_taken = 0;
    bool m_hasEnded = false;
    bool m_isStopped = false;
    std::exception_ptr m_fault;
};

void measureBatch(Batch& batch, const Surface& surface)
{
    const utils::ScopedTimer timer("measure");
    batch.results.reserve(batch.features.size());
    for (MapFeature& feature : batch.features) {
        if (feature.hasClamped) {
            batch.notes.add(Text::tr("широта чуть дальше полюса взята за полюс"), feature);
        }
        if (!feature.isMeasured()) {
            const QString kind = feature.kind.isEmpty() ? Text::tr("объект без геометрии") : feature.kind;
            batch.notes.add(Text::tr("%1 не измеряется").arg(kind), feature);
        }
        MeasuredFeature result;
        result.measures = surface.measure(feature, batch.notes);
        result.isBareGeometry = feature.isBareGeometry;
        result.hasArea = !feature.polygons.empty();
        result.hasLength = !feature.lines.empty();
        result.name = std::move(feature.name);
        result.text = std::move(feature.text);
        result.properties = std::move(feature.properties);
        batch.results.push_back(std::move(result));
        feature = MapFeature(); // its memory
    }
}

class MeasureTask : public concurrent::Task
{
public:
    MeasureTask(Conveyor& conveyor, const Surface& surface)
        : m_conveyor(conveyor)
        , m_surface(surface)
    {}

    [[nodiscard]] bool canCancel() const override { return true; }

protected:
    void onStart() override
    {
        try {
            while (BatchPtr batch = m_conveyor.next()) {
                measureBatch(*batch, m_surface);
                m_conveyor.finished(std::move(batch));
            }
        } catch (...) {
            m_conveyor.stop(std::current_exception());
        }
    }

private:
    Conveyor& m_conveyor;
    const Surface& m_surface;
};

qsizetype pointsOf(const MapFeature& feature)
{
    qsizetype count = 0;
    for (const std::vector<Ring>& polygon : feature.polygons) {
        for (const Ring& ring : polygon) {
            count += ring.size();
        }
    }
    for (const Ring& line : feature.lines) {
        count += line.size();
    }
    return count;
}

/// The reader's whole life.
void readBatches(QIODevice& device, MapReading& reading, Conveyor& conveyor)
{
    std::exception_ptr fault;
    auto batch = std::make_unique<Batch>();
    reading.feature = [&](MapFeature&& feature) {
        batch->points += pointsOf(feature);
        batch->features.push_back(std::move(feature));
        if (batch->points >= batchPoints || batch->features.size() >= batchFeatures) {
            const utils::ScopedTimer roomTimer("wait for room");
            conveyor.put(std::exchange(batch, std::make_unique<Batch>()));
        }
    };
    try {
        const utils::ScopedTimer timer("read");
        readGeoJson(device, reading);
    } catch (const Stopped&) {
        conveyor.end(nullptr);
        return;
    } catch (...) {
        fault = std::current_exception();
    }
    try {
        conveyor.put(std::move(batch)); // what came before a fault too
    } catch (const Stopped&) {
    }
    conveyor.end(fault);
}

/// Whatever happens, the reader is told to stop and waited for.
class ReaderThread
{
public:
    ReaderThread(Conveyor& conveyor, std::thread thread)
        : m_conveyor(conveyor)
        , m_thread(std::move(thread))
    {}
    ~ReaderThread()
    {
        m_conveyor.stop();
        m_thread.join();
    }
    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

private:
    Conveyor& m_conveyor;
    std::thread m_thread;
};

} // namespace

void measureMap(QIODevice& device, MapReading reading, const Surface& surface,
                const std::function<void(MeasuredFeature&&)>& take,
                const std::function<void(const Notes&)>& takeNotes,
                const std::function<void(qint64)>& progress)
{
    const InterruptWatch watch;
    const int threads = std::max(1, QThread::idealThreadCount());
    Conveyor conveyor(static_cast<std::size_t>(2 * threads + 2));
    std::atomic<qint64> bytes{0};
    reading.progress = [&](qint64 done) { bytes.store(done, std::memory_order_relaxed); };

    concurrent::TaskThreadPool pool(threads); // waits for its tasks at the end
    {
        const ReaderThread reader(conveyor, std::thread([&] { readBatches(device, reading, conveyor); }));
        for (int i = 0; i < threads; ++i) {
            pool.start(new MeasureTask(conveyor, surface));
        }
        for (bool isEnd = false; !isEnd;) {
            if (const BatchPtr batch = conveyor.take(isEnd)) {
                const utils::ScopedTimer timer("take");
                for (MeasuredFeature& feature : batch->results) {
                    take(std::move(feature));
                }
                takeNotes(batch->notes);
            }
            if (InterruptWatch::interrupted()) {
                InterruptWatch::endProcess();
            }
            progress(bytes.load(std::memory_order_relaxed));
        }
    }
}

} // namespace veltor::tool
