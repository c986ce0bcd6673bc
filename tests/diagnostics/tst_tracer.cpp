// Backtraces as text.

#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Text.h"

#include <veltor/utils/Tracer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace veltor::test {
namespace {

using logging::LogLevel;
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
    for (const std::uintptr_t address : {0x0U, 0xabcU, 0x7fffeeeeU}) {
        EXPECT_EQ(Tracer::symbols({reinterpret_cast<void*>(address)}).at(0),
                  u("[0x%1]: [unknown file]").arg(address, 0, 16));
    }

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

} // namespace
} // namespace veltor::test
