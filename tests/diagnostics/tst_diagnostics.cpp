#include "platform/HeapInfo.h"
#include "platform/MemoryInfo.h"
#include "support/Calls.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Printers.h"

#include <veltor/utils/MemoryMonitor.h>
#include <veltor/utils/ScopedTimer.h>
#include <veltor/utils/TimeTrace.h>

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <thread>
#include <tuple>
#include <vector>

#if defined(Q_OS_LINUX)
#include "platform/linux/ContainerLimit.h"
#endif

namespace veltor::utils {
namespace {

constexpr quint64 KiB = 1ULL << 10;
constexpr quint64 MiB = 1ULL << 20;
constexpr quint64 GiB = 1ULL << 30;

/// A machine of the test's making in place of the real one.
class FakeMachine
{
public:
    explicit FakeMachine(quint64 total, quint64 available)
    {
        memory = {total, available};
        queries = 0;
        platform::exchangePhysicalMemoryQuery([]() noexcept {
            ++queries;
            return memory;
        });
    }
    ~FakeMachine() { platform::exchangePhysicalMemoryQuery(nullptr); }
    FakeMachine(const FakeMachine&) = delete;
    FakeMachine& operator=(const FakeMachine&) = delete;

    static inline platform::PhysicalMemory memory;
    static inline int queries = 0;
};

TEST(TotalMem, countsTheMachinesMemory)
{
    FakeMachine machine(8 * GiB, 2 * GiB);
    TotalMem memory;
    EXPECT_EQ(memory.available(), 8 * GiB);
    EXPECT_EQ(memory.free(), 2 * GiB);
    EXPECT_EQ(memory.used(), 6 * GiB);
    EXPECT_EQ(memory.percentFree(), 25.0);
    machine.memory = {};
    EXPECT_EQ(memory.free(), 2 * GiB);
    EXPECT_EQ(memory.update().free(), 0U);
    EXPECT_TRUE(std::isnan(memory.percentFree()));
}

TEST(TotalMem, isThatOfARealMachine)
{
    const TotalMem memory;
    EXPECT_GT(memory.available(), 256 * MiB);
    EXPECT_GT(memory.free(), MiB);
    EXPECT_LE(memory.free(), memory.available());
    EXPECT_LT(TotalMem::containerLimit(), memory.available());
#if defined(Q_OS_LINUX)
    const auto told = [] {
        QFile file(QStringLiteral("/proc/meminfo"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLatin1(file.readAll());
        const QRegularExpression line(test::u("\nMemAvailable: +(\\d+)"));
        return line.match(text).captured(1).toULongLong() * KiB;
    };
    bool isSame = false;
    for (int i = 0; i < 1000 && !isSame; ++i) { // until nothing changes meanwhile
        const quint64 before = told();
        const quint64 free = TotalMem().free();
        isSame = before == free || told() == free;
    }
    EXPECT_TRUE(isSame);
#endif
}

#if defined(Q_OS_LINUX)
TEST(TotalMem, findsTheSmallestLimitOfItsContainer)
{
    using Files = std::vector<std::pair<const char*, const char*>>;
    using Row = std::tuple<const char*, const char*, Files, quint64>;
    const Row rows[] = {
        {"not limited", "0::/a\n", {{"a/memory.max", "max\n"}}, 0},
        {"own group", "0::/a\n", {{"a/memory.max", "1048576\n"}}, MiB},
        {"group above", "0::/a/b\n", {{"a/b/memory.max", "max\n"}, {"a/memory.max", "4096\n"}}, 4096},
        {"path of the outside", "0::/x/y\n", {{"memory.max", "4096\n"}}, 4096},
        {"first generation",
         "5:cpu,memory:/a\n0::/\n",
         {{"memory/a/memory.limit_in_bytes", "8192\n"},
          {"memory/memory.limit_in_bytes", "9223372036854771712"}},
         8192},
        {"no less than the machine", "0::/\n", {{"memory.max", "1073741824\n"}}, 0},
        {"broken lines", "memory\n:\n5:memory\n0::\n", {{"memory.max", "-\n"}}, 0},
    };
    for (const auto& [name, group, files, limit] : rows) {
        const test::Folder folder;
        for (const auto& [fileName, contents] : files) {
            folder.write(fileName, contents);
        }
        const QString membership = folder.write("membership", group);
        EXPECT_EQ(platform::containerMemoryLimit(membership.toStdString(), folder.path().toStdString(), GiB),
                  limit)
            << name;
    }
}
#endif

// The sanitizers put their own heap in the place of the C library's, which then has little to tell.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(TotalMem, heapFollowsWhatIsAllocated)
{
    const auto before = platform::heapStatistics();
    const std::vector<char> large(64 * MiB, 'x');
    asm volatile("" : : "r"(large.data()) : "memory"); // a compiler may do without what nobody looks at
    std::vector<std::unique_ptr<char[]>> small(4000);
    for (auto& block : small) {
        block = std::make_unique<char[]>(1000);
    }
    const auto during = platform::heapStatistics();
    EXPECT_GE(during.used, before.used + 64 * MiB + 4000 * 1000);
    EXPECT_EQ(during.allocations, before.allocations + 1);
    EXPECT_GE(during.regions, during.heaps);
    // What has no mapping of its own lies in the regions, in use or free.
    const auto mapped = [](const platform::HeapStatistics& s) { return s.used + s.free - s.regionCommitted; };
    EXPECT_EQ((mapped(during) - mapped(before)) / MiB, 64U);
    for (std::size_t i = 0; i < small.size(); i += 2) {
        small[i].reset();
    }
    const auto after = platform::heapStatistics();
    EXPECT_GE(after.freeBlocks, during.freeBlocks + 1900);
    EXPECT_GE(after.free, during.free + 1900 * 1000);
    std::thread([&] { // has a heap of its own, which gives back what is freed
        {
            std::vector<std::unique_ptr<char[]>> blocks(4000);
            for (auto& block : blocks) {
                block = std::make_unique<char[]>(1000);
            }
        }
        const auto other = platform::heapStatistics();
        EXPECT_EQ(other.heaps, after.heaps + 1);
        EXPECT_EQ(other.uncommittedRanges, after.uncommittedRanges + 1);
        EXPECT_GE(other.uncommitted, after.uncommitted + MiB);
        EXPECT_EQ(other.regionUncommitted, other.uncommitted);
        EXPECT_EQ((mapped(other) - mapped(after)) / MiB, 0U);
        const QStringList words =
            TotalMem().heap().split(QRegularExpression(test::u("\\D+")), Qt::SkipEmptyParts);
        const quint64 expected[] = {other.heaps,
                                    other.regions,
                                    other.regionCommitted,
                                    other.uncommitted,
                                    other.allocations,
                                    other.used,
                                    other.overhead,
                                    1,
                                    other.uncommitted,
                                    other.freeBlocks,
                                    other.free};
        for (int i = 0; i < 11; ++i) {
            EXPECT_NEAR(words.value(i).toDouble(), double(expected[i]), double(expected[i]) / 20 + 0.5) << i;
        }
    })
        .join();
}
#endif

TEST(TotalMem, heapIsOneLineOfElevenNumbers)
{
    const QRegularExpression line(QStringLiteral(
        "^Heap count: \\d+, region count: \\d+, region committed size: \\d+, region uncommitted "
        "size: \\d+, allocations: \\d+, used bytes: \\d+, overhead bytes: \\d+, uncommitted "
        "ranges: \\d+, uncommitted size: \\d+, free blocks: \\d+, free size: \\d+$"));
    const QString text = TotalMem().heap();
    EXPECT_TRUE(line.match(text).hasMatch()) << text.toStdString();
}

/// The limit that settings of the warning give on a machine, while those of the error stay untouched.
double warningLimit(double total, double percent, unsigned size, unsigned unit, unsigned function)
{
    using M = MemoryMonitor;
    FakeMachine machine(GiB, 0);
    M monitor;
    machine.memory = {static_cast<quint64>(total), 0};
    const quint64 untouched = M().errorLimit();
    monitor.setPercentLimit(M::WarningLimitMask, percent);
    monitor.setSizeLimit(M::WarningLimitMask, size, static_cast<M::SizeUnit>(unit));
    monitor.setLimitFunc(M::WarningLimitMask, static_cast<M::Function>(function));
    monitor.forceUpdate();
    EXPECT_EQ(monitor.errorLimit(), untouched);
    return static_cast<double>(monitor.warningLimit());
}

TEST(MemoryMonitor, limitsFollowFromTheirSettings)
{
    test::expectCalls("diagnostics/data/limits.txt", ' ', {{"warningLimit", test::call(warningLimit)}});
}

TEST(MemoryMonitor, defaultsAndBothLimitsAtOnce)
{
    FakeMachine machine(64 * GiB, 32 * GiB);
    MemoryMonitor monitor;
    EXPECT_EQ(monitor.errorLimit(), 512 * MiB);
    EXPECT_EQ(monitor.warningLimit(), GiB);
    machine.memory.total = GiB; // the limits take a snapshot of their own
    EXPECT_EQ(monitor.errorLimit(), 53675622U);
    EXPECT_EQ(monitor.warningLimit(), 107384013U);

    const auto both = MemoryMonitor::ErrorLimitMask | MemoryMonitor::WarningLimitMask;
    monitor.setSizeLimit(both, 9, MemoryMonitor::KiB);
    monitor.setLimitFunc(both, MemoryMonitor::SizeOnly);
    machine.queries = 0;
    EXPECT_EQ(monitor.errorLimit(), 9 * KiB);
    EXPECT_EQ(monitor.warningLimit(), 9 * KiB);
    EXPECT_EQ(machine.queries, 0);
}

TEST(MemoryMonitor, classifiesFreeMemoryAtTheLimits)
{
    using M = MemoryMonitor;
    using Row = std::tuple<M::Function, M::Function, quint64, M::State>;
    // Error limit 4 MiB, warning limit 8 MiB where they are on.
    const Row rows[] = {
        {M::SizeOnly, M::SizeOnly, 8 * MiB, M::Normal},   {M::SizeOnly, M::SizeOnly, 8 * MiB - 1, M::Warning},
        {M::SizeOnly, M::SizeOnly, 4 * MiB, M::Warning},  {M::SizeOnly, M::SizeOnly, 4 * MiB - 1, M::Error},
        {M::NoLimit, M::SizeOnly, 0, M::Warning},         {M::SizeOnly, M::NoLimit, 4 * MiB, M::Normal},
        {M::SizeOnly, M::NoLimit, 4 * MiB - 1, M::Error}, {M::NoLimit, M::NoLimit, 0, M::Normal},
    };
    FakeMachine machine(GiB, GiB);
    M monitor;
    EXPECT_EQ(monitor.lastState(), M::Normal);
    monitor.setSizeLimit(M::ErrorLimitMask, 4, M::MiB);
    monitor.setSizeLimit(M::WarningLimitMask, 8, M::MiB);
    for (const auto& [error, warning, free, state] : rows) {
        machine.memory.available = free;
        monitor.setLimitFunc(M::ErrorLimitMask, error);
        monitor.setLimitFunc(M::WarningLimitMask, warning);
        monitor.forceUpdate();
        EXPECT_EQ(monitor.lastState(), state) << error << ' ' << warning << ' ' << free;
    }
}

TEST(MemoryMonitor, measuresOnlyWhenTheStatesIntervalHasPassed)
{
    using M = MemoryMonitor;
    constexpr unsigned never = std::numeric_limits<unsigned>::max();
    FakeMachine machine(GiB, GiB);
    M monitor;
    monitor.setCheck(M::Normal, never);
    monitor.setCheck(M::Error, 0);
    monitor.setCheck(static_cast<M::State>(3), 0);
    monitor.setCheck(static_cast<M::State>(never), 0);
    monitor.updateDeadLine();
    machine.queries = 0;
    machine.memory.available = 0;
    EXPECT_EQ(monitor.state(), M::Normal);
    EXPECT_EQ(machine.queries, 0);

    monitor.forceUpdate();
    EXPECT_EQ(machine.queries, 1);
    EXPECT_EQ(monitor.state(), M::Error); // due at once, each time
    EXPECT_EQ(monitor.state(), M::Error);
    // A new interval counts from the next time the deadline is set.
    monitor.setCheck(M::Error, never);
    EXPECT_EQ(monitor.state(), M::Error);
    EXPECT_EQ(monitor.state(), M::Error);
    EXPECT_EQ(machine.queries, 4);
}

/// The process's summary, empty before and after.
class Summary : public testing::Test
{
protected:
    Summary() { summary.clear(); }
    ~Summary() override { summary.clear(); }

    QStringList flushed()
    {
        test::LogCapture capture;
        summary.flush();
        return capture.takeTexts(logging::LogLevel::Info);
    }

    SummaryTime& summary = SummaryTime::instance();
};

TEST_F(Summary, identifiersPackNamesInTheirOrder)
{
    using Id = SummaryTime::OperationId;
    static_assert(Id("load") == Id(0x6C6F616400000000, 0));
    static_assert(Id("0123456789abcdef") == Id(0x3031323334353637, 0x3839616263646566));
    EXPECT_EQ(Id::fromName("0123456789abcdefgh").name(), QStringLiteral("0123456789abcdef"));
    EXPECT_EQ(Id::fromName(std::string_view("ab\0cd", 5)).name(), QStringLiteral("ab"));
    EXPECT_EQ(Id("чтение").name(), QStringLiteral("чтение"));
    const Id ordered[] = {"", "a", "aaaaaaaa", "aaaaaaaaa", "aaaaaaaab", "abc", "abd", "b", "\xFF"};
    for (std::size_t i = 1; i < std::size(ordered); ++i) {
        EXPECT_TRUE(ordered[i - 1] < ordered[i] && ordered[i - 1] != ordered[i]) << i;
    }
}

TEST_F(Summary, isReportedFromItsFixedPlaceUntilCleared)
{
    EXPECT_TRUE(flushed().isEmpty());
    summary.addTime("load", 5);
    summary.addTime("load", 3);
    summary.addTime("abc", std::numeric_limits<quint64>::max());
    test::LogCapture capture;
    summary.flush();
    const auto records = capture.take();
    ASSERT_EQ(records.size(), 12U);
    QStringList texts;
    for (std::size_t i = 0; i < records.size(); ++i) {
        texts << records[i].text;
        EXPECT_EQ(records[i].level, logging::LogLevel::Info);
        EXPECT_EQ(records[i].file, QStringLiteral("SummaryTime.cpp"));
        EXPECT_EQ(records[i].line, 33 + static_cast<int>(i % 6));
        EXPECT_EQ(records[i].function, QStringLiteral("void veltor::utils::SummaryTime::flush() const"));
    }
    EXPECT_EQ(texts[1], QStringLiteral("Time taken:  18446744073709551615 ns "));
    EXPECT_EQ(
        texts.mid(6).join(QLatin1Char('|')),
        QStringLiteral("Operation:  load |Time taken:  8 ns |Call count:  2 |Average operation time:  4 ns "
                       "|Minimum operation time:  3 ns |Maximum operation time:  5 ns "));
    EXPECT_EQ(flushed(), texts);
    summary.clear();
    summary.addTime("load", 2);
    EXPECT_EQ(flushed().value(2), QStringLiteral("Call count:  1 "));
}

TEST_F(Summary, threadsAddTheirOwnOperationsWithoutLoss)
{
    constexpr unsigned threads = 4;
    constexpr unsigned runs = 2000;
    std::vector<std::thread> workers;
    for (unsigned t = 0; t < threads; ++t) {
        workers.emplace_back([this, t] {
            for (unsigned i = 0; i < runs; ++i) {
                summary.addTime({t, 0}, i);
                summary.addTime("shared", 1 + i % 7); // may lose some; must race nowhere
            }
        });
    }
    while (summary.snapshot().size() <= threads) {
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    const auto sums = summary.snapshot();
    for (unsigned t = 0; t < threads; ++t) {
        EXPECT_EQ(std::tie(sums[t].totalNs, sums[t].count), std::make_tuple(runs * (runs - 1) / 2, runs));
    }
    EXPECT_EQ(std::tie(sums[threads].minimumNs, sums[threads].maximumNs), std::make_tuple(1U, 7U));
}

TEST_F(Summary, timersTellWhatRanInsideOfWhat)
{
    const auto work = [] {
        const ScopedTimer outer("outer");
        for (int i = 0; i < 3; ++i) {
            const ScopedTimer inner("inner");
        }
    };
    work(); // nobody wants to know
    ScopedTimer::setSummed(true);
    const ScopedTimer before("before");
    TimeTrace::start(9);
    work();
    std::thread(work).join();
    work();
    TimeTrace::stop();
    ScopedTimer::setSummed(false);
    work();
    const auto spans = TimeTrace::spans();
    ASSERT_EQ(spans.size(), 9U);
    EXPECT_EQ(TimeTrace::dropped(), 3U);
    QStringList names;
    for (const TimeTrace::Span& span : spans) {
        names << QString::number(span.depth) + span.operation.name();
    }
    const QString one = QStringLiteral("0outer 1inner 1inner 1inner ");
    EXPECT_EQ(names.join(QLatin1Char(' ')), one + QStringLiteral("1inner ") + one.trimmed());
    EXPECT_EQ(summary.snapshot()[0].count, 9U);

    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    ASSERT_TRUE(TimeTrace::writeEvents(buffer));
    const QJsonArray events =
        QJsonDocument::fromJson(buffer.data()).object()[QLatin1String("traceEvents")].toArray();
    ASSERT_EQ(events.size(), 9);
    EXPECT_EQ(events[1].toObject()[QLatin1String("name")], QStringLiteral("inner"));
    EXPECT_EQ(events[8].toObject()[QLatin1String("ts")].toDouble(), double(spans[8].beginNs) / 1e3);

    test::LogCapture capture;
    TimeTrace::logFlame();
    const QStringList lines = capture.takeTexts(logging::LogLevel::Info).value(0).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 9) << lines.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(lines[5].startsWith(QStringLiteral("thread ")));
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral("^    inner +[0-9.]+ ms +3 x  #*$")).match(lines[7]).hasMatch());

    QFile full(QStringLiteral("/dev/full"));
    EXPECT_FALSE(full.open(QIODevice::WriteOnly) && TimeTrace::writeEvents(full));
    TimeTrace::start();
    TimeTrace::stop();
    EXPECT_TRUE(TimeTrace::flameText().isEmpty());
}

} // namespace
} // namespace veltor::utils
