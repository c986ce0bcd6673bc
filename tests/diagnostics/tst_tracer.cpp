// Backtraces, and crashes in processes of their own.

#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/Tracer.h>

#include "platform/CrashSignals.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace veltor::test {
namespace {

using logging::LogLevel;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using utils::Tracer;

QString program()
{
    return QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
}

volatile int afterCall = 0; // written after a call that must keep its frame

template <int>
Q_NEVER_INLINE QVector<void*> namedCaller()
{
    QVector<void*> frames = Tracer::backtrace(64);
    afterCall = 1;
    return frames;
}

template <typename... Parameters>
Q_NEVER_INLINE QVector<void*> callerOfManyNames(Parameters...)
{
    QVector<void*> frames = Tracer::backtrace(2);
    afterCall = 1;
    return frames;
}

/// Calls itself until the stack holds that many frames, then @p action.
template <typename Action>
Q_NEVER_INLINE void deep(int frames, const Action& action)
{
    if (frames > 0) {
        deep(frames - 1, action);
    } else {
        action();
    }
    afterCall = 1;
}

TEST(Tracer, CapturesInnermostFirstAndNamesFunctionsThatAreNotExported)
{
    const QVector<void*> frames = namedCaller<7>();
    ASSERT_GT(frames.size(), 3);
    const QStringList lines = Tracer::symbols(frames);
    ASSERT_EQ(lines.size(), frames.size());
    const QStringList caller = lines.filter(u("namedCaller<7>"));
    ASSERT_EQ(caller.size(), 1) << qPrintable(lines.join(u("\n")));
    EXPECT_TRUE(caller[0].endsWith(u(": ") + program())) << qPrintable(caller[0]);
#ifndef Q_OS_WIN // where names have no arguments, and the innermost frame depends on the compiler
    EXPECT_TRUE(lines[0].startsWith(u("veltor::utils::Tracer::backtrace(int): "))) << qPrintable(lines[0]);
    EXPECT_TRUE(lines[1].contains(u("namedCaller<7>()"))) << qPrintable(lines[1]);
#endif
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

#ifndef Q_OS_WIN
    const std::array<QVector<void*>, 9> x;
    const QString line = Tracer::symbols(callerOfManyNames(x, x, x, x, x)).at(1);
    EXPECT_EQ(line.indexOf(u(": ") + program()), 200) << qPrintable(line);
#endif
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
#ifndef Q_OS_WIN
        EXPECT_EQ(texts[0].contains(QStringLiteral("Tracer::logBacktrace(")), lines == 64) << skip;
#endif
    }
}

void print(const logging::LogRecord& record)
{
    std::fprintf(stderr, "%d|%s|%d|%s|%s\n", static_cast<int>(record.level), qPrintable(record.file),
                 record.line, qPrintable(record.function), qPrintable(record.text));
}

Q_NEVER_INLINE void writeToNowhere()
{
    volatile std::uintptr_t nowhere = 8; // the compiler must not see where it leads
    *reinterpret_cast<volatile int*>(nowhere) = 1;
}

Q_NEVER_INLINE int fillStack(int depth) // NOLINT(misc-no-recursion)
{
    std::array<volatile char, 4096> frame;
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : fillStack(depth + 1) + frame[0];
}

[[noreturn]] void sleepForEver(const platform::CrashState&)
{
    for (;;) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}

const Role crashes("crash", [](const QStringList& arguments) {
    const QString how = arguments[0];
    logging::setLogSink([how](const logging::LogRecord& record) {
        print(record);
        if (how == u("in the report")) {
            writeToNowhere();
        } else if (how == u("in two threads") && record.line != 0) {
            std::thread(writeToNowhere).detach();
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // it crashes meanwhile
        }
    });
    Tracer::registerSignalHandler();
    std::atexit([] { std::fputs("exit functions ran\n", stderr); });
    if (how == u("here") || how == u("in two threads")) {
        writeToNowhere();
    } else if (how == u("in a thread")) {
        std::thread(writeToNowhere).join();
    } else if (how == u("by its stack")) {
        return fillStack(0);
    } else if (how == u("for ever")) {
        platform::installCrashHandler(sleepForEver);
        writeToNowhere();
    } else {
        std::raise(how == u("in the report") ? SIGTERM : how.toInt());
    }
    return 0;
});

Outcome crash(const char* how)
{
    // The sanitizers' own handlers stand back; what a crash leaks is no matter.
    const char* const options = "handle_segv=0:handle_abort=0:handle_sigfpe=0:handle_sigill=0:";
    qputenv("ASAN_OPTIONS", QByteArray(options) + "detect_leaks=0");
    qputenv("TSAN_OPTIONS", QByteArray(options) + "report_signal_unsafe=0:report_thread_leaks=0");
    return play("crash", {u(how)});
}

/// The report of a signal, naming a function where the system sees the crashed stack.
auto report(int signal, [[maybe_unused]] const char* function)
{
    return AllOf(
        HasSubstr("4|Tracer.cpp|11|void veltor::utils::signal_handler(int)|Program crashed with signal " +
                  std::to_string(signal) + "\n4||0||Backtrace:\n"),
#ifndef Q_OS_WIN
        HasSubstr(function),
#endif
        HasSubstr("exit functions ran"));
}

TEST(TracerCrash, EachSignalIsLoggedAndEndsWithCodeOne)
{
    for (const int signal : {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM}) {
        const Outcome outcome = crash(std::to_string(signal).c_str());
        EXPECT_EQ(outcome.status, 1) << signal;
        EXPECT_THAT(outcome.errors, report(signal, "playedRole()"));
    }
}

TEST(TracerCrash, TheBacktraceShowsWhereItCrashed)
{
    const std::pair<const char*, const char*> rows[] = {
        {"here", "writeToNowhere()"},
#ifndef Q_OS_WIN // whose C runtime has handlers by thread, and no second stack
        {"in a thread", "writeToNowhere()"},
        {"in two threads", "writeToNowhere()"},
        {"by its stack", "fillStack(int)"},
#endif
    };
    for (const auto& [how, function] : rows) {
        const Outcome outcome = crash(how);
        EXPECT_EQ(outcome.status, 1) << how;
        EXPECT_THAT(outcome.errors, report(SIGSEGV, function));
        EXPECT_EQ(u(outcome.errors.c_str()).count(u("crashed with")), 1) << how;
    }
}

TEST(TracerCrash, ACrashOfTheReportEndsIt)
{
    const Outcome outcome = crash("in the report");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("crashed with signal 15"), Not(HasSubstr("signal 11")),
                                      Not(HasSubstr("Backtrace"))));
}

TEST(TracerCrash, AReportThatHangsIsEnded)
{
#ifdef Q_OS_WIN
    GTEST_SKIP() << "no time limit for the report here";
#endif
    EXPECT_EQ(crash("for ever").status, 1);
}

} // namespace
} // namespace veltor::test
