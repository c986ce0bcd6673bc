#include <veltor/utils/MemoryMonitor.h>
#include <veltor/utils/NamedMutex.h>
#include <veltor/utils/ScopedTimer.h>
#include <veltor/utils/SummaryTime.h>
#include <veltor/utils/TimeTrace.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QSystemSemaphore>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>

// The memory monitor between measurements beside the look at the clock it needs; a snapshot beside the
// same file through QFile, and beside the system call alone, which no reader can undercut; the timing
// summary beside the mutex and the map that one would write otherwise; the named mutex beside the
// semaphore of Qt, which neither tells of dead owners nor knows threads; timers of scopes that nobody
// wants, and that are recorded.

using namespace veltor::utils;

namespace {

void stateBetweenMeasurements(benchmark::State& state)
{
    MemoryMonitor monitor;
    monitor.setCheck(monitor.lastState(), 24 * 60 * 60 * 1000);
    monitor.updateDeadLine();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(monitor.state());
    }
}
BENCHMARK(stateBetweenMeasurements)->Name("state/veltor");

void stateDeadline(benchmark::State& state)
{
    const QDeadlineTimer deadline(24 * 60 * 60 * 1000, Qt::CoarseTimer);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(deadline.hasExpired());
    }
}
BENCHMARK(stateDeadline)->Name("state/QDeadlineTimer");

void snapshot(benchmark::State& state)
{
    TotalMem memory;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(memory.update().free());
    }
}
BENCHMARK(snapshot)->Name("snapshot/veltor");

void snapshotQFile(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        QFile file(QStringLiteral("/proc/meminfo"));
        if (!file.open(QIODevice::ReadOnly) || file.readAll().isEmpty()) {
            state.SkipWithError("cannot read");
        }
    }
}
BENCHMARK(snapshotQFile)->Name("snapshot/QFile");

void snapshotKernel(benchmark::State& state)
{
    const int fd = ::open("/proc/meminfo", O_RDONLY | O_CLOEXEC);
    char buffer[256];
    for ([[maybe_unused]] auto _ : state) {
        if (::pread(fd, buffer, sizeof buffer, 0) <= 0) {
            state.SkipWithError("cannot read");
        }
    }
    ::close(fd);
}
BENCHMARK(snapshotKernel)->Name("snapshot/pread alone");

constexpr SummaryTime::OperationId operations[] = {"load", "index", "project", "clip", "draw", "label"};

void addTime(benchmark::State& state)
{
    SummaryTime& summary = SummaryTime::instance();
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        summary.addTime(operations[i], i);
        i = (i + 1) % std::size(operations);
    }
}
BENCHMARK(addTime)->Name("addTime/veltor")->ThreadRange(1, 2)->UseRealTime();

/// What one would write without the summary; exact where two threads meet.
class MutexAndMap
{
public:
    void addTime(SummaryTime::OperationId operation, quint64 durationNs)
    {
        const std::lock_guard lock(m_mutex);
        Record& record = m_records.try_emplace(operation, Record{0, 0, durationNs, durationNs}).first->second;
        record.total += durationNs;
        ++record.count;
        record.minimum = std::min(record.minimum, durationNs);
        record.maximum = std::max(record.maximum, durationNs);
    }

private:
    struct Record
    {
        quint64 total;
        quint64 count;
        quint64 minimum;
        quint64 maximum;
    };
    std::mutex m_mutex; // guards m_records
    std::map<SummaryTime::OperationId, Record> m_records;
};

void addTimeMutexAndMap(benchmark::State& state)
{
    static MutexAndMap summary;
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        summary.addTime(operations[i], i);
        i = (i + 1) % std::size(operations);
    }
}
BENCHMARK(addTimeMutexAndMap)->Name("addTime/mutex and map")->ThreadRange(1, 2)->UseRealTime();

void namedMutex(benchmark::State& state)
{
    NamedMutex mutex;
    if (!mutex.open("bench_diagnostics") || !mutex.enter()) {
        state.SkipWithError("cannot open");
    }
    const bool again = state.range(0) != 0;
    for (bool owns = again || mutex.unlock(); owns && state.KeepRunning();) {
        benchmark::DoNotOptimize(mutex.lock());
        mutex.unlock();
    }
    while (mutex.unlock()) {
    }
}
BENCHMARK(namedMutex)->Name("mutex/veltor")->ArgName("again")->Arg(0)->Arg(1);

void systemSemaphore(benchmark::State& state)
{
    QSystemSemaphore semaphore(QStringLiteral("bench_diagnostics"), 1, QSystemSemaphore::Create);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(semaphore.acquire());
        semaphore.release();
    }
}
BENCHMARK(systemSemaphore)->Name("mutex/QSystemSemaphore");

void scopedTimer(benchmark::State& state)
{
    if (state.range(0) != 0) {
        TimeTrace::start(1 << 20);
    }
    for ([[maybe_unused]] auto _ : state) {
        const ScopedTimer timer("bench");
        benchmark::ClobberMemory();
    }
    TimeTrace::stop();
}
BENCHMARK(scopedTimer)->Name("ScopedTimer")->ArgName("traced")->Arg(0)->Arg(1);

} // namespace
