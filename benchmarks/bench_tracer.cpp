#include <veltor/utils/CrashHandlerStack.h>
#include <veltor/utils/Tracer.h>

#include <benchmark/benchmark.h>
#include <execinfo.h>

#include <array>
#include <thread>

#include <boost/stacktrace.hpp>

// A stack of more than 64 frames: its capture beside the C library's, and its text beside Boost's, which
// looks only exported functions up and remembers nothing. And what a stack for the crash handler adds to a
// thread.

using veltor::utils::Tracer;

namespace {

constexpr int Frames = 64;

template <typename Action>
[[gnu::noinline]] void deep(int frames, const Action& action)
{
    if (frames > 0) {
        deep(frames - 1, action);
    } else {
        action();
    }
    asm volatile("");
}

void capture(benchmark::State& state)
{
    deep(Frames, [&] {
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(Tracer::backtrace(Frames));
        }
    });
}
BENCHMARK(capture)->Name("backtrace/veltor");

void captureLibrary(benchmark::State& state)
{
    deep(Frames, [&] {
        for ([[maybe_unused]] auto _ : state) {
            std::array<void*, Frames> frames;
            benchmark::DoNotOptimize(backtrace(frames.data(), Frames));
            benchmark::ClobberMemory();
        }
    });
}
BENCHMARK(captureLibrary)->Name("backtrace/glibc");

void symbols(benchmark::State& state)
{
    deep(Frames, [&] {
        const QVector<void*> frames = Tracer::backtrace(Frames);
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(Tracer::symbols(frames));
        }
    });
}
BENCHMARK(symbols)->Name("symbols/veltor");

void symbolsBoost(benchmark::State& state)
{
    deep(Frames, [&] {
        const boost::stacktrace::stacktrace frames(0, Frames);
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(boost::stacktrace::to_string(frames));
        }
    });
}
BENCHMARK(symbolsBoost)->Name("symbols/Boost.Stacktrace");

void threads(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        std::thread([] {}).join();
    }
}
BENCHMARK(threads)->Name("thread/bare")->UseRealTime();

void threadsWithStack(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        std::thread([] { benchmark::DoNotOptimize(veltor::utils::CrashHandlerStack().isActive()); }).join();
    }
}
BENCHMARK(threadsWithStack)->Name("thread/with a CrashHandlerStack")->UseRealTime();

} // namespace
