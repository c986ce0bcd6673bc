#include "support/LogCapture.h"
#include "support/Platform.h"
#include "support/Printers.h"

#include <QtCore/QtGlobal>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace veltor::logging {
namespace {

QStringList qtLines;

void recordQtLine(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    qtLines << QStringLiteral("%1 %2 %3:%4 %5 ")
                       .arg(type)
                       .arg(QLatin1String(context.category), QLatin1String(context.file),
                            QString::number(context.line), QLatin1String(context.function)) +
                   text;
}

TEST(Logging, defaultSinkHandsThePlaceToQt)
{
    qtLines.clear();
    const auto former = qInstallMessageHandler(recordQtLine);
    QStringList expected;
    for (const auto& [level, type] : {std::pair(LogLevel::Detail, QtInfoMsg),
                                      {LogLevel::Info, QtInfoMsg},
                                      {LogLevel::Warning, QtWarningMsg},
                                      {LogLevel::Error, QtCriticalMsg}}) {
        LoggerMessager(level, "a.cpp", 7, "f()").write(QStringLiteral("100 %s ы"));
        expected << QStringLiteral("%1 veltor.utils a.cpp:7 f() 100 %s ы").arg(type);
    }
    qInstallMessageHandler(former);
    EXPECT_EQ(qtLines, expected);
}

TEST(Logging, streamWritesOneLineWithASpaceAfterEachItem)
{
    test::LogCapture capture;
    {
        LogStream stream = LoggerMessager(LogLevel::Info, "a.cpp", 7, "f()").write();
        LogStream moved = std::move(stream);
        moved << "имя" << 5 << QStringLiteral("x");
        EXPECT_TRUE(capture.take().empty());
    }
    LoggerFacade::write(LogLevel::Error, QStringLiteral("plain"));
    const auto records = capture.take();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text, QStringLiteral("имя 5 x "));
    EXPECT_EQ(records[0].line, 7);
    EXPECT_EQ(records[1].level, LogLevel::Error);
    EXPECT_EQ(records[1].file, QString());
    EXPECT_EQ(records[1].line, 0);
}

TEST(Logging, sinkIsExchangedRestoredAndMayThrow)
{
    int calls = 0;
    EXPECT_FALSE(setLogSink([&calls](const LogRecord&) {
        ++calls;
        throw std::runtime_error("sink");
    }));
    EXPECT_NO_THROW(LoggerFacade::write(LogLevel::Error, QStringLiteral("a")));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(setLogSink({}));

    qtLines.clear();
    const auto former = qInstallMessageHandler(recordQtLine);
    LoggerFacade::write(LogLevel::Error, QStringLiteral("b"));
    qInstallMessageHandler(former);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(qtLines.size(), 1);
}

TEST(Logging, everyLineReachesOneSinkAndNoFormerOneAfterTheWait)
{
    constexpr int threads = 3;
    constexpr int lines = 500;
    std::atomic<int> received{0};
    const auto counting = [&received] {
        auto inForce = std::make_shared<std::atomic<bool>>(true);
        setLogSink([&received, inForce](const LogRecord&) {
            received += *inForce && !waitForFormerLogSinks() ? 1 : 0;
        });
        return inForce;
    };
    auto last = counting();
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([] {
            for (int i = 0; i < lines; ++i) {
                LoggerFacade::write(LogLevel::Info, QStringLiteral("line"));
            }
        });
    }
    for (int i = 0; i < lines; ++i) {
        const auto former = std::exchange(last, counting());
        EXPECT_TRUE(waitForFormerLogSinks());
        EXPECT_EQ(former.use_count(), 1); // and nothing of it is left
        *former = false;
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    setLogSink({});
    EXPECT_EQ(received, threads * lines);
}

TEST(Logging, theWaitIsForALineThatIsStillInAFormerSink)
{
    std::promise<void> inside;
    std::promise<void> go;
    bool over = false;
    const auto held = std::make_shared<int>();
    setLogSink([&, held](const LogRecord&) {
        inside.set_value();
        go.get_future().wait();
        over = true;
    });
    std::thread writer([] { LoggerFacade::write(LogLevel::Info, QStringLiteral("line")); });
    inside.get_future().wait();
    setLogSink({});
    std::thread later([&go] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        go.set_value();
    });
    EXPECT_TRUE(waitForFormerLogSinks());
    EXPECT_TRUE(over);
    EXPECT_EQ(held.use_count(), 1);
    writer.join();
    later.join();
}

TEST(Logging, aThreadMayBeCancelledInsideTheSink)
{
    setLogSink([](const LogRecord&) { test::endThisThread(); });
    std::thread([] { LoggerMessager(LogLevel::Info, "", 0, "").write() << "line"; }).join();
    EXPECT_TRUE(setLogSink({}));
    EXPECT_TRUE(waitForFormerLogSinks());
}

} // namespace
} // namespace veltor::logging
