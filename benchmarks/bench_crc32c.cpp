#include "utils/storage/journal/Crc32c.h"

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>

#include <string>
#include <vector>

// Cached: the same bytes again and again. Streamed: 512 MiB once through, far more than the caches
// hold, in runs of 1 MiB. All with 0 before, as the journal does.

using namespace veltor::utils;

namespace {

std::uint32_t isal(std::uint32_t previous, const void* data, std::size_t size) noexcept
{
    // Takes no const and keeps the register as it is, not complemented.
    auto* bytes = static_cast<unsigned char*>(const_cast<void*>(data));
    return ~crc32_iscsi(bytes, static_cast<int>(size), ~previous);
}

std::vector<unsigned char> someBytes(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    std::uint32_t state = 1;
    for (unsigned char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

void cached(benchmark::State& state, Crc32cFunction function)
{
    const auto bytes = someBytes(static_cast<std::size_t>(state.range(0)));
    if (function(0, bytes.data(), bytes.size()) != isal(0, bytes.data(), bytes.size())) {
        state.SkipWithError("differs from ISA-L");
        return;
    }
    const unsigned char* data = bytes.data();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(data);
        benchmark::DoNotOptimize(function(0, data, bytes.size()));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void streamed(benchmark::State& state, Crc32cFunction function)
{
    constexpr std::size_t run = std::size_t{1} << 20;
    static const auto bytes = someBytes(512 * run);
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t at = 0; at < bytes.size(); at += run)
            benchmark::DoNotOptimize(function(0, bytes.data() + at, run));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void add(const std::string& name, Crc32cFunction function)
{
    benchmark::RegisterBenchmark(("cached/" + name).c_str(), cached, function)
        ->Arg(64)
        ->Arg(4 << 10)
        ->Arg(64 << 10)
        ->Arg(1 << 20);
    benchmark::RegisterBenchmark(("streamed/" + name).c_str(), streamed, function)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    add("crc32c", &crc32c);
    add("isal", &isal);
    for (const Crc32cVariant& variant : crc32cVariants()) {
        if (variant.available)
            add(variant.name, variant.function);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
