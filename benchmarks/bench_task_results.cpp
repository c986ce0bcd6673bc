// Functions with a result beside QtConcurrent::run and the thread weaver, each with two workers; the
// presenter's model with ten thousand tasks.

#include <veltor/concurrent/TaskListModel.h>
#include <veltor/concurrent/TaskResult.h>

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QCoreApplication>
#include <QtCore/QThreadPool>

#include <ThreadWeaver/Queue>
#include <ThreadWeaver/ThreadWeaver>

#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <vector>

using namespace veltor::concurrent;

namespace {

int argumentCount = 1;
char programName[] = "bench_task_results";
char* arguments[] = {programName, nullptr};
const QCoreApplication application(argumentCount, arguments);

/// Functions that nobody watches, from the first start to the last end.
void functions(benchmark::State& state)
{
    TaskThreadPool pool(2);
    std::atomic<long> sum{0};
    for (auto _ : state) {
        for (long i = 0; i < state.range(0); ++i) {
            run(pool, [&sum] { ++sum; });
        }
        pool.waitForAllTasks();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(functions)->Arg(1000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

void threadWeaverFunctions(benchmark::State& state)
{
    ThreadWeaver::Queue queue;
    queue.setMaximumNumberOfThreads(2);
    std::atomic<long> sum{0};
    for (auto _ : state) {
        for (long i = 0; i < state.range(0); ++i) {
            queue.stream() << ThreadWeaver::make_job([&sum] { ++sum; });
        }
        queue.finish();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(threadWeaverFunctions)->Arg(1000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Functions whose values are all asked for.
void results(benchmark::State& state)
{
    TaskThreadPool pool(2);
    std::vector<TaskResult<long>> all;
    for (auto _ : state) {
        all.clear();
        for (long i = 0; i < state.range(0); ++i) {
            all.push_back(run(pool, [i] { return i; }));
        }
        long sum = 0;
        for (const auto& result : all) {
            sum += result.get();
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(results)->Arg(1000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

void qtConcurrentResults(benchmark::State& state)
{
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    std::vector<QFuture<long>> all;
    for (auto _ : state) {
        all.clear();
        for (long i = 0; i < state.range(0); ++i) {
            all.push_back(QtConcurrent::run(&pool, [i] { return i; }));
        }
        long sum = 0;
        for (const auto& result : all) {
            sum += result.result();
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(qtConcurrentResults)->Arg(1000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

/// One look of the model at so many operations, all of which have moved.
void modelSample(benchmark::State& state)
{
    TaskListModel model;
    model.setShowDelay(0);
    std::vector<ProgressHandlerPtr> handlers;
    for (long i = 0; i < state.range(0); ++i) {
        handlers.push_back(std::make_shared<ProgressHandler>());
        model.add(handlers.back(), QStringLiteral("operation"));
    }
    double value = 0;
    for (auto _ : state) {
        state.PauseTiming();
        value = value < 99 ? value + 0.01 : 0;
        for (const ProgressHandlerPtr& handler : handlers) {
            handler->setProgress(value);
        }
        state.ResumeTiming();
        model.sample();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(modelSample)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace
