#include <veltor/utils/NamedMutex.h>
#include <veltor/utils/RandomFile.h>

#include <QtCore/QFile>
#include <QtCore/QSystemSemaphore>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

// The block file and the named mutex, each beside what a caller would use instead. The file has 1024
// blocks and lies in the page cache: what is measured is the price of reaching it, not the disk.

using veltor::utils::NamedMutex;
using veltor::utils::RandomFile;

namespace {

constexpr std::uint32_t FileBlocks = 1024;
constexpr std::uint32_t HotBlocks = 32;

const QString& path()
{
    static const QTemporaryDir directory;
    static const QString file = [] {
        QFile made(directory.filePath(QStringLiteral("blocks")));
        made.open(QIODevice::WriteOnly);
        for (std::uint32_t i = 0; i < FileBlocks; ++i) {
            made.write(QByteArray(RandomFile::BlockSize, static_cast<char>('a' + i % 26)));
        }
        return made.fileName();
    }();
    return file;
}

/// Numbers below @p bound without a pattern, made before the clock runs.
std::vector<std::uint32_t> numbers(std::uint32_t bound)
{
    std::vector<std::uint32_t> result(4096);
    std::uint32_t state = 1;
    for (std::uint32_t& number : result) {
        state = state * 1664525u + 1013904223u;
        number = (state >> 8) % bound;
    }
    return result;
}

enum class Hit
{
    LookUp,
    LookUpAndTouch,
    TouchAlone
};

/// A block that is mapped already, anywhere among as many as the argument says: what finding it costs, what
/// touching its memory costs, and both.
template <Hit What>
void blockHit(benchmark::State& state)
{
    const auto count = static_cast<std::uint32_t>(state.range(0));
    const QTemporaryDir directory;
    RandomFile file(directory.filePath(QStringLiteral("blocks")), count);
    if (!file.open(QIODevice::ReadWrite) || !file.resize(qint64{count} * RandomFile::BlockSize)) {
        state.SkipWithError("cannot make the file");
        return;
    }
    std::vector<const volatile unsigned char*> blocks;
    for (std::uint32_t i = 0; i < count; ++i) {
        blocks.push_back(file.block(i));
        (void)*blocks.back();
    }
    const auto order = numbers(count);
    std::size_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::uint32_t index = order[at++ % order.size()];
        const volatile unsigned char* const bytes =
            What == Hit::TouchAlone ? blocks[index] : file.block(index);
        benchmark::DoNotOptimize(What == Hit::LookUp ? bytes : bytes + *bytes);
    }
}
BENCHMARK_TEMPLATE(blockHit, Hit::LookUp)->Arg(8)->Arg(512)->Arg(8192);
BENCHMARK_TEMPLATE(blockHit, Hit::LookUpAndTouch)->Arg(8)->Arg(512)->Arg(8192);
BENCHMARK_TEMPLATE(blockHit, Hit::TouchAlone)->Arg(8)->Arg(512)->Arg(8192);

/// 64 bytes at any place of 32 blocks, by seek and read.
template <typename File>
void hotRead(benchmark::State& state)
{
    File file(path());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        state.SkipWithError("cannot open");
        return;
    }
    const auto places = numbers(HotBlocks * RandomFile::BlockSize - 64);
    char bytes[64];
    std::size_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        file.seek(places[at++ % places.size()]);
        benchmark::DoNotOptimize(file.read(bytes, sizeof bytes));
    }
}
BENCHMARK(hotRead<RandomFile>);
BENCHMARK(hotRead<QFile>);

/// Touched as a value that the compiler cannot leave out, on both sides alike.
void touch(const unsigned char* bytes)
{
    benchmark::DoNotOptimize(static_cast<int>(*static_cast<const volatile unsigned char*>(bytes)));
}

void blockMiss(benchmark::State& state)
{
    RandomFile file(path(), 1);
    file.open(QIODevice::ReadOnly);
    std::uint32_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        touch(file.block(at++ % FileBlocks));
    }
}
BENCHMARK(blockMiss);

void rawMiss(benchmark::State& state)
{
    QFile file(path());
    file.open(QIODevice::ReadOnly);
    std::uint32_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        const auto offset = static_cast<off_t>(at++ % FileBlocks) * RandomFile::BlockSize;
        void* const bytes =
            mmap(nullptr, RandomFile::BlockSize, PROT_READ, MAP_SHARED, file.handle(), offset);
        touch(static_cast<const unsigned char*>(bytes));
        munmap(bytes, RandomFile::BlockSize);
    }
}
BENCHMARK(rawMiss);

constexpr std::size_t Run = std::size_t{1} << 20;

void sequentialBlocks(benchmark::State& state)
{
    RandomFile file(path());
    file.open(QIODevice::ReadOnly);
    std::vector<char> bytes(Run);
    for ([[maybe_unused]] auto _ : state) {
        if (file.read(bytes.data(), static_cast<qint64>(Run)) <= 0) {
            file.seek(0);
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Run));
}
BENCHMARK(sequentialBlocks);

void sequentialRawMap(benchmark::State& state)
{
    QFile file(path());
    file.open(QIODevice::ReadOnly);
    std::vector<char> bytes(Run);
    off_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t done = 0; done < Run; done += RandomFile::BlockSize) {
            void* const block =
                mmap(nullptr, RandomFile::BlockSize, PROT_READ, MAP_SHARED, file.handle(), at);
            std::memcpy(bytes.data() + done, block, RandomFile::BlockSize);
            munmap(block, RandomFile::BlockSize);
            at = (at + RandomFile::BlockSize) % (off_t{FileBlocks} * RandomFile::BlockSize);
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Run));
}
BENCHMARK(sequentialRawMap);

void sequentialPread(benchmark::State& state)
{
    QFile file(path());
    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    const int fd = file.handle();
    std::vector<char> bytes(Run);
    off_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        const ssize_t got = pread(fd, bytes.data(), Run, at);
        at = got > 0 ? at + got : 0;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Run));
}
BENCHMARK(sequentialPread);

void namedMutex(benchmark::State& state)
{
    NamedMutex mutex;
    if (!mutex.open("veltor-utils benchmark")) {
        state.SkipWithError("cannot open");
        return;
    }
    mutex.enter();
    while (mutex.unlock()) {
    }
    for ([[maybe_unused]] auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(namedMutex);

void rawRobustMutex(benchmark::State& state)
{
    void* const memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const mutex = static_cast<pthread_mutex_t*>(memory);
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    for ([[maybe_unused]] auto _ : state) {
        pthread_mutex_lock(mutex);
        pthread_mutex_unlock(mutex);
    }
    pthread_mutex_destroy(mutex);
    munmap(memory, 4096);
}
BENCHMARK(rawRobustMutex);

void systemSemaphore(benchmark::State& state)
{
    QSystemSemaphore semaphore(QStringLiteral("veltor-utils benchmark"), 1, QSystemSemaphore::Create);
    for ([[maybe_unused]] auto _ : state) {
        semaphore.acquire();
        semaphore.release();
    }
}
BENCHMARK(systemSemaphore);

} // namespace

BENCHMARK_MAIN();
