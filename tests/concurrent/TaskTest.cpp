#include "Support.h"

#include <veltor/concurrent/Runners.h>

#include "support/Printers.h"

#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace veltor::concurrent {
namespace {

using test::EventLog;
using test::eventually;
using test::LambdaTask;

struct Scenario
{
    const char* name;
    LambdaTask::Work work;                 // in onStart()
    std::function<void(LambdaTask&)> then; // after start()
    int word;
    const char* events;
};

#define FINAL "=100 +100 "
// clang-format off
const Scenario scenarios[] = {
    {"success", {}, [](auto& t) { t.start(); t.cancel(); }, 0x50, "started " FINAL "successful finished"},
    {"throws", [](auto&) { throw std::runtime_error("broken"); }, {}, 0xB0, "started " FINAL "error canceled finished"},
    {"throws after a verdict", [](auto& t) { t.enterSuccessfulState(); throw std::runtime_error("late"); }, {},
     0x50, "started " FINAL "successful finished"},
    {"every cancel is announced once", [](auto& t) { t.cancel(); t.cancel(); }, {},
     0x50, "started cancelRequest cancelRequest " FINAL "successful finished"},
    {"cancel is heeded", [](auto& t) { t.cancel(); t.progressHandler()->throwIfCanceled(); }, {},
     0xB0, "started cancelRequest " FINAL "error canceled finished"},
    {"sendCancel while it runs", [](auto& t) { t.progressHandler()->sendCancel(); }, {},
     0x50, "started cancelRequest canceled cancelRequest " FINAL "successful finished"},
    {"waiting stays open", [](auto& t) { t.enterWaitingState(); }, [](auto& t) { t.continueWork(); }, 0x04, "started"},
    {"waiting ends later", [](auto& t) { t.enterWaitingState(); }, [](auto& t) { t.enterFinishedState(); },
     0x10, "started " FINAL "finished"},
    {"paused on return is finished", [](auto& t) { t.enterPausedState(); }, {}, 0x10, "started paused " FINAL "finished"},
    {"continued without a waiter is successful", [](auto& t) { t.enterWaitingState(); },
     [](auto& t) { t.pause(); t.enterPausedState(); t.continueWork(); EXPECT_FALSE(t.pauseRequested()); },
     0x50, "started paused " FINAL "successful finished"},
    {"continued into waiting",
     [](auto& t) { t.continued = [](auto& task) { task.enterWaitingState(); }; t.enterWaitingState(); },
     [](auto& t) { t.enterPausedState(); t.continueWork(); }, 0x04, "started paused"},
    {"a pause is withdrawn before it is entered", [](auto& t) { t.pause(); t.continueWork(); t.waitWhilePaused(); EXPECT_TRUE(t.isRunning()); }, {},
     0x50, "started " FINAL "successful finished"},
    {"the quiet way to cancel", [](auto& t) { t.cancel(); t.progressHandler()->cancellationToken().throwIfCanceled(); }, {},
     0x30, "started cancelRequest " FINAL "canceled finished"},
    {"no verdict is left", [](auto& t) { t.enterCancelledState(); },
     [](auto& t) { t.enterPausedState(); t.enterWaitingState(); t.continueWork(); t.enterErrorState({}); },
     0x30, "started " FINAL "canceled finished"},
    {"no final progress", [](auto& t) { t.progressHandler()->setIgnoreFinal(true); }, {},
     0x50, "started successful finished"},
};
// clang-format on

void expectSignals(const Scenario& scenario, Qt::ConnectionType type)
{
    LambdaTask task(scenario.work);
    EventLog log(*task.progressHandler(), type);
    task.start();
    if (scenario.then) {
        scenario.then(task);
    }
    if (type == Qt::QueuedConnection) {
        EXPECT_EQ(log.take(), QString());
        QCoreApplication::sendPostedEvents(&log);
    }
    EXPECT_EQ(log.take(), QLatin1String(scenario.events));
    const int word = (task.isRunning() ? 0x02 : 0) | (task.isWaiting() ? 0x04 : 0) |
                     (task.isPaused() ? 0x08 : 0) | (task.isFinished() ? 0x10 : 0) |
                     (task.isCancelled() ? 0x20 : 0) | (task.isSuccessful() ? 0x40 : 0);
    EXPECT_EQ(word, scenario.word & ~0x80);
    EXPECT_EQ(task.cancelRequested(),
              (scenario.word & 0x80) ||
                  QLatin1String(scenario.events).contains(QLatin1String("cancelRequest")));
}

TEST(Task, EmitsTheSignalsOfItsScenarioInOrder)
{
    for (const Scenario& scenario : scenarios) {
        for (const auto type : {Qt::DirectConnection, Qt::QueuedConnection}) {
            SCOPED_TRACE(scenario.name + std::string(type == Qt::DirectConnection ? "" : ", queued"));
            expectSignals(scenario, type);
        }
    }
}

TEST(Task, DestroyedBeforeItsEndIsSeenAsCancelled)
{
    auto task = std::make_unique<LambdaTask>();
    const auto handler = task->progressHandler();
    EventLog log(*handler);
    task.reset();
    EXPECT_EQ(log.take(), QLatin1String("=100 +100 canceled finished"));
    EXPECT_TRUE(handler->isFinished());
    handler->waitForFinished();
    const auto sub = std::make_shared<ProgressHandler>();
    handler->registerSubHandler(sub);
    handler->cancel(); // no task to reach any more
    EXPECT_TRUE(sub->isCanceled());
    handler->pause();
    handler->continueWork();
    handler->setProgress(5);
    EXPECT_EQ(log.take(), QLatin1String("=5 +95"));
}

TEST(Task, PausedInAThreadOfItsOwnGoesOnWhenContinued)
{
    std::atomic<bool> finish{false};
    auto* task = new LambdaTask([&](LambdaTask& t) {
        while (t.waitWhilePaused() && !finish) {
            std::this_thread::yield();
        }
    });
    const auto handler = task->progressHandler();
    EventLog log(*handler);
    handler->setIgnoreFinal(true);
    task->pause(); // not running yet: nothing
    EXPECT_FALSE(task->pauseRequested());
    runInNewThread(task);
    ASSERT_TRUE(eventually([&] { return handler->isRunning(); }));
    for (int i = 0; i < 2; ++i) {
        task->pause();
        ASSERT_TRUE(eventually([&] { return task->isPaused(); }));
        finish = i == 1;
        i == 0 ? task->continueWork() : handler->continueWork();
        EXPECT_TRUE(finish || (task->isRunning() && !task->pauseRequested()))
            << "the work decides how it ends";
    }
    handler->waitForFinished();
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    EXPECT_EQ(log.take(), QLatin1String("started paused paused successful finished"));
}

TEST(Runners, RunInThreadLeavesThreadAndTaskToTheCaller)
{
    test::EventLoopThread thread;
    LambdaTask task([&](LambdaTask&) { EXPECT_EQ(QThread::currentThread(), &thread); });
    const auto handler = task.progressHandler();
    runInThread(&task, &thread);
    thread.start();
    handler->waitForFinished();
    thread.stop();
    EXPECT_TRUE(task.isSuccessful());
    EXPECT_THROW(runInThread(&task, nullptr), std::invalid_argument);
    EXPECT_THROW(runInNewThread(nullptr), std::invalid_argument);
}

TEST(Runners, ANewThreadEndsWithoutTheCallersEventLoop)
{
    std::shared_ptr<TaskProgressHandler> handler;
    std::thread([&] {
        std::array<std::atomic<QThread*>, 2> threads{};
        for (std::size_t i = 0; i < threads.size(); ++i) {
            auto* task = new LambdaTask;
            QObject::connect(task, &QObject::destroyed, [&, i] { threads[i] = QThread::currentThread(); });
            if (i == 0) {
                handler = task->progressHandler();
            } else {
                task->enterCancelledState();
            }
            runInNewThread(task);
        }
        while (!threads[0] || !threads[1]) {
            std::this_thread::yield();
        }
        const QPointer<QThread> first(threads[0].load());
        const QPointer<QThread> second(threads[1].load());
        while (first || second) {
            QEventLoop().processEvents(); // deletes the thread objects
        }
    }).join();
    EXPECT_TRUE(handler->isFinished());
}

} // namespace
} // namespace veltor::concurrent
