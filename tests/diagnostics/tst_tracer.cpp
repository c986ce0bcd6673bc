// Backtraces, and crashes in child processes: each is this program anew, killed by SIGALRM when it hangs.

#include "support/LogCapture.h"
#include "support/Printers.h"

#include <veltor/utils/Tracer.h>

#include "platform/CrashSignals.h"

#include <QtCore/QCoreApplication>

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace veltor::test {
namespace {

using logging::LogLevel;
using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;
using utils::Tracer;

template <int>
[[gnu::noinline]] QVector<void*> namedCaller()
{
    QVector<void*> frames = Tracer::backtrace(64);
    asm volatile("");
    return frames;
}

template <typename... Parameters>
[[gnu::noinline]] QVector<void*> callerOfManyNames(Parameters...)
{
    QVector<void*> frames = Tracer::backtrace(2);
    asm volatile("");
    return frames;
}

/// Calls itself until the stack holds that many frames, then @p action.
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

TEST(Tracer, CapturesInnermostFirstAndNamesFunctionsThatAreNotExported)
{
    const QVector<void*> frames = namedCaller<7>();
    ASSERT_GT(frames.size(), 3);
    const QStringList lines = Tracer::symbols(frames);
    ASSERT_EQ(lines.size(), frames.size());
    const QString program = QCoreApplication::applicationFilePath();
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("veltor::utils::Tracer::backtrace(int): ")))
        << qPrintable(lines[0]);
    EXPECT_TRUE(lines[1].contains(QStringLiteral("namedCaller<7>()"))) << qPrintable(lines[1]);
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral(": ") + program)) << qPrintable(lines[1]);
    EXPECT_EQ(Tracer::symbols(frames), lines);

    EXPECT_EQ(Tracer::backtrace(2).size(), 2);
    EXPECT_TRUE(Tracer::backtrace(0).isEmpty());
    EXPECT_TRUE(Tracer::backtrace(-1).isEmpty());
    EXPECT_TRUE(Tracer::symbols({}).isEmpty());
}

TEST(Tracer, ShowsUnknownAddressesAndCutsLongNames)
{
    const QVector<void*> nowhere = {nullptr, reinterpret_cast<void*>(std::uintptr_t{0xABC})};
    EXPECT_EQ(Tracer::symbols(nowhere), (QStringList{QStringLiteral("[0x0]: [unknown file]"),
                                                     QStringLiteral("[0xabc]: [unknown file]")}));

    const std::array<QVector<void*>, 9> x;
    const QString line = Tracer::symbols(callerOfManyNames(x, x, x, x, x)).at(1);
    EXPECT_EQ(line.indexOf(QStringLiteral(": ") + QCoreApplication::applicationFilePath()), 200)
        << qPrintable(line);
}

TEST(Tracer, SymbolsOfSeveralThreadsAtOnce)
{
    const QVector<void*> frames = namedCaller<8>();
    const QStringList lines = Tracer::symbols(frames);
    std::array<QStringList, 4> results;
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] { results[i] = Tracer::symbols(frames); });
    }
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        EXPECT_EQ(results[i], lines);
    }
}

TEST(Tracer, LeavesOutFramesUnlessNoneWouldRemain)
{
    struct Row
    {
        int skip;
        int lines;
    };
    for (const auto [skip, lines] : {Row{-5, 62}, {0, 62}, {10, 52}, {61, 1}, {62, 64}, {2147483647, 64}}) {
        LogCapture log;
        deep(70, [skip = skip] { Tracer::logBacktrace(LogLevel::Warning, skip); });
        const QStringList texts = log.takeTexts(LogLevel::Warning);
        ASSERT_EQ(texts.size(), 1) << skip;
        EXPECT_TRUE(texts[0].startsWith(QStringLiteral("Backtrace:\n"))) << qPrintable(texts[0]);
        EXPECT_EQ(texts[0].count(QLatin1Char('\n')), lines) << skip;
        EXPECT_EQ(texts[0].contains(QStringLiteral("Tracer::logBacktrace(")), lines == 64) << skip;
    }
}

void print(const logging::LogRecord& record)
{
    std::fprintf(stderr, "%d|%s|%d|%s|%s\n", static_cast<int>(record.level), qPrintable(record.file),
                 record.line, qPrintable(record.function), qPrintable(record.text));
}

/// The child's part: dies of @p crash.
template <typename Crash>
void dieOf(const Crash& crash, logging::LogSink sink = print)
{
    alarm(100);
    logging::setLogSink(std::move(sink));
    Tracer::registerSignalHandler();
    std::atexit([] { std::fputs("exit functions ran\n", stderr); });
    crash();
}

[[gnu::noinline]] void writeToNowhere()
{
    volatile std::uintptr_t nowhere = 8; // the compiler must not see where it leads
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

[[gnu::noinline]] int fillStack(int depth) // NOLINT(misc-no-recursion)
{
    std::array<volatile char, 4096> frame;
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : fillStack(depth + 1) + frame[0];
}

auto crashLine(int signal)
{
    return HasSubstr("4|Tracer.cpp|11|void veltor::utils::signal_handler(int)|Program crashed with signal " +
                     std::to_string(signal) + "\n4||0||Backtrace:\n");
}

class TracerCrash : public testing::Test
{
protected:
    TracerCrash()
    {
        testing::GTEST_FLAG(death_test_style) = "threadsafe";
        // The sanitizers' own handlers stand back; what a crash leaks is no matter.
        setenv("ASAN_OPTIONS", "handle_segv=0:handle_abort=0:handle_sigfpe=0:handle_sigill=0:detect_leaks=0",
               1);
        setenv("TSAN_OPTIONS",
               "handle_segv=0:handle_abort=0:handle_sigfpe=0:handle_sigill=0:"
               "report_signal_unsafe=0:report_thread_leaks=0",
               1);
    }
};

TEST_F(TracerCrash, EachSignalIsLoggedAndEndsWithCodeOne)
{
    for (const int signal : {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM}) {
        EXPECT_EXIT(dieOf([signal] { std::raise(signal); }), ExitedWithCode(1),
                    AllOf(crashLine(signal), HasSubstr("TestBody()"), HasSubstr("exit functions ran")))
            << signal;
    }
}

TEST_F(TracerCrash, TheBacktraceShowsWhereItCrashed)
{
    EXPECT_EXIT(dieOf(writeToNowhere), ExitedWithCode(1),
                AllOf(crashLine(SIGSEGV), HasSubstr("writeToNowhere()")));
    EXPECT_EXIT(dieOf([] { std::thread(writeToNowhere).join(); }), ExitedWithCode(1),
                AllOf(crashLine(SIGSEGV), HasSubstr("writeToNowhere()")));
}

TEST_F(TracerCrash, AnOverflowOfTheStackIsReported)
{
    EXPECT_EXIT(dieOf([] { std::exit(fillStack(0)); }), ExitedWithCode(1),
                AllOf(crashLine(SIGSEGV), HasSubstr("fillStack(int)"), HasSubstr("exit functions ran")));
}

TEST_F(TracerCrash, ACrashOfTheHandlerEndsIt)
{
    const auto crashingSink = [](const logging::LogRecord& record) {
        print(record);
        writeToNowhere();
    };
    EXPECT_EXIT(
        dieOf([] { std::raise(SIGTERM); }, crashingSink), ExitedWithCode(1),
        AllOf(HasSubstr("crashed with signal 15"), Not(HasSubstr("signal 11")), Not(HasSubstr("Backtrace"))));
}

TEST_F(TracerCrash, AHandlerThatHangsIsEnded)
{
    const auto hang = [] {
        alarm(100);
        platform::installCrashHandler(
            [](int) {
                for (;;) {
                    pause();
                }
            },
            1);
        writeToNowhere();
    };
    EXPECT_EXIT(hang(), ExitedWithCode(1), "");
}

} // namespace
} // namespace veltor::test
