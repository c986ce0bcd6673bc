// Tasks beside the peers that run functions: Qt's thread pool, QtConcurrent and KDE's thread weaver, each
// with two workers. Every one of our tasks is an object with a handler of its own.

#include <veltor/concurrent/NestedScope.h>
#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/SignalingTaskNestedScope.h>
#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QCoreApplication>
#include <QtCore/QRunnable>
#include <QtCore/QThreadPool>

#include <ThreadWeaver/Queue>
#include <ThreadWeaver/ThreadWeaver>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <sys/resource.h>

using namespace veltor::concurrent;

namespace {

int argumentCount = 1;
char programName[] = "bench_tasks";
char* arguments[] = {programName, nullptr};
const QCoreApplication application(argumentCount, arguments);

/// Counts down; whoever waits goes on at zero.
class Latch
{
public:
    explicit Latch(long count)
        : m_left(count)
    {}
    void done()
    {
        if (m_left.fetch_sub(1) == 1) {
            const std::lock_guard lock(m_mutex);
            m_zero = true;
            m_changed.notify_all();
        }
    }
    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_zero; });
    }

private:
    std::atomic<long> m_left;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_zero = false;
};

class FunctionTask : public Task
{
public:
    explicit FunctionTask(std::function<void()> function)
        : m_function(std::move(function))
    {}

protected:
    void onStart() override { m_function(); }

private:
    std::function<void()> m_function;
};

constexpr int workers = 2;

/// As many as the row says are started while all workers are held, so that so many wait at once. A round is
/// from the first start to the last end.
template <typename Start, typename Finish>
void queued(benchmark::State& state, Start start, Finish finish)
{
    for (auto _ : state) {
        Latch held(workers);
        Latch open(1);
        for (int i = 0; i < workers; ++i) {
            start([&] {
                held.done();
                open.wait();
            });
        }
        held.wait();
        Latch all(state.range(0));
        for (long i = 0; i < state.range(0); ++i) {
            start([&all] { all.done(); });
        }
        open.done();
        all.wait();
        finish();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void tasks(benchmark::State& state)
{
    TaskThreadPool pool(workers);
    queued(
        state, [&](auto work) { pool.start(new FunctionTask(work)); }, [&] { pool.waitForAllTasks(); });
}

void qThreadPool(benchmark::State& state)
{
    QThreadPool pool;
    pool.setMaxThreadCount(workers);
    queued(
        state, [&](auto work) { pool.start(QRunnable::create(work)); }, [&] { pool.waitForDone(); });
}

void qtConcurrentRun(benchmark::State& state)
{
    QThreadPool pool;
    pool.setMaxThreadCount(workers);
    queued(
        state, [&](auto work) { QtConcurrent::run(&pool, work); }, [&] { pool.waitForDone(); });
}

void threadWeaver(benchmark::State& state)
{
    ThreadWeaver::Queue queue;
    queue.setMaximumNumberOfThreads(workers);
    queued(
        state, [&](auto work) { queue.stream() << ThreadWeaver::make_job(work); }, [&] { queue.finish(); });
}

void counts(benchmark::internal::Benchmark* row)
{
    row->Arg(1000)->Arg(100000)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK(tasks)->Apply(counts);
BENCHMARK(qThreadPool)->Apply(counts);
BENCHMARK(qtConcurrentRun)->Apply(counts);
BENCHMARK(threadWeaver)->Apply(counts);

using Clock = std::chrono::steady_clock;

/// From start() on an idle pool to the first line of the work.
template <typename Start, typename Idle>
void latency(benchmark::State& state, Start start, Idle idle)
{
    for (auto _ : state) {
        Latch latch(1);
        Clock::time_point arrived;
        const Clock::time_point sent = Clock::now();
        start([&] {
            arrived = Clock::now();
            latch.done();
        });
        latch.wait();
        state.SetIterationTime(std::chrono::duration<double>(arrived - sent).count());
        idle();
    }
}

void taskLatency(benchmark::State& state)
{
    TaskThreadPool pool(workers);
    latency(
        state, [&](auto work) { pool.start(new FunctionTask(work)); }, [&] { pool.waitForAllTasks(); });
}
BENCHMARK(taskLatency)->UseManualTime()->Unit(benchmark::kMicrosecond);

void qThreadPoolLatency(benchmark::State& state)
{
    QThreadPool pool;
    pool.setMaxThreadCount(workers);
    latency(
        state, [&](auto work) { pool.start(QRunnable::create(work)); }, [&] { pool.waitForDone(); });
}
BENCHMARK(qThreadPoolLatency)->UseManualTime()->Unit(benchmark::kMicrosecond);

void setProgressDirect(benchmark::State& state)
{
    ProgressHandler handler;
    double value = 0;
    for (auto _ : state) {
        handler.setProgress(value += 1);
    }
}
BENCHMARK(setProgressDirect);

/// A flood: all writes are queued before the first is delivered. The counter is the growth of the
/// process's memory for one write.
void setProgressQueued(benchmark::State& state)
{
    const auto peakBytes = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return double(usage.ru_maxrss) * 1024;
    };
    ProgressHandler handler;
    handler.setInvokeType(Qt::QueuedConnection);
    const double before = peakBytes();
    for (auto _ : state) {
        for (long i = 0; i < state.range(0); ++i) {
            handler.setProgress(double(i));
        }
        QCoreApplication::sendPostedEvents(&handler);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["bytes_per_write"] = (peakBytes() - before) / double(state.range(0));
}
BENCHMARK(setProgressQueued)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void optionalScopeUpdate(benchmark::State& state)
{
    FunctionTask task([] {});
    SignalingTaskNestedScope scope(task);
    long long index = 0;
    for (auto _ : state) {
        ++index;
        scope.setOptionalProgress(index, double(index));
    }
}
BENCHMARK(optionalScopeUpdate);

} // namespace
