// What once hung or crashed, each in a process of its own with a limit.

#include "Support.h"

#include <veltor/concurrent/ProgressSizeDecorator.h>
#include <veltor/concurrent/ResultReceiver.h>
#include <veltor/concurrent/Runners.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include "support/Process.h"

#include <QtCore/QSemaphore>
#include <QtCore/QTimer>

#include <gtest/gtest.h>

namespace veltor::concurrent {
namespace {

using test::eventually;
using test::LambdaTask;

/// Gives the next of its kind to the pool before it ends.
void handOn(LambdaTask& task, TaskThreadPool* pool)
{
    if (!task.cancelRequested()) {
        for (int i = 0; i < 2; ++i) {
            pool->start(new LambdaTask([pool](LambdaTask& next) { handOn(next, pool); }));
        }
    }
}

void successorsWhileThePoolGoes()
{
    for (int i = 0; i < 100; ++i) {
        TaskThreadPool pool(2);
        for (int j = 0; j < 300; ++j) { // some of which live in no thread
            pool.start(new LambdaTask);
        }
        pool.start(new LambdaTask([&pool](LambdaTask& task) { handOn(task, &pool); }));
        std::this_thread::sleep_for(std::chrono::microseconds(i * 20));
    }
    EXPECT_EQ(LambdaTask::alive, 0);
}

void tasksOfAnotherThreadWhileThePoolGoes()
{
    test::EventLoopThread home;
    home.start();
    for (int i = 0; i < 200; ++i) {
        TaskThreadPool pool(1);
        for (int j = 0; j < 5; ++j) {
            auto* task = new LambdaTask;
            task->moveTaskToThread(&home);
            j % 2 ? pool.start(task) : pool.startService(task);
        }
    }
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
}

void observersOfAContinuedTask()
{
    TaskThreadPool pool(1);
    auto* task = new LambdaTask([](LambdaTask& t) { t.enterWaitingState(); });
    const auto handler = task->progressHandler();
    pool.start(task);
    EXPECT_TRUE(eventually([&] { return handler->states() == TaskState::Waiting; }));
    task->enterPausedState();
    QObject::connect(handler.get(), &ProgressHandler::finished, [&] { EXPECT_TRUE(pool.waitForAllTasks()); });
    handler->continueWork();
    EXPECT_TRUE(handler->isFinished());

    auto* own = new LambdaTask([](LambdaTask& t) {
        t.enterPausedState();
        t.enterWaitingState();
    });
    own->start();
    own->enterPausedState();
    QObject::connect(own->progressHandler().get(), &ProgressHandler::finished, [own] { delete own; });
    own->continueWork();
    auto* started = new LambdaTask;
    QObject::connect(started->progressHandler().get(), &ProgressHandler::finished,
                     [started] { delete started; });
    started->start();
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));

    // The observer ends the pool whose task it is.
    auto* going = new TaskThreadPool(1);
    auto* last = new LambdaTask([](LambdaTask& t) { t.enterWaitingState(); });
    const auto lastHandler = last->progressHandler();
    going->start(last);
    EXPECT_TRUE(eventually([&] { return lastHandler->states() == TaskState::Waiting; }));
    last->continued = [](LambdaTask& t) { t.enterFinishedState(); }; // within the call of the hook
    last->enterPausedState();
    QObject::connect(lastHandler.get(), &ProgressHandler::finished, [going] { delete going; });
    lastHandler->continueWork();
    EXPECT_EQ(LambdaTask::alive, 0);
}

void hooksThatThrow()
{
    const auto failing = [](LambdaTask&) { throw std::runtime_error("hook"); };
    for (const int hook : {0, 1, 2, 3}) {
        TaskThreadPool pool(1);
        auto* task = new LambdaTask([hook](LambdaTask& t) {
            if (hook == 0) {
                t.pause();
            } else if (hook == 2) { // asked from its event loop
                t.enterWaitingState();
                return;
            }
            while (t.waitWhilePaused()) {
                std::this_thread::yield();
            }
        });
        const auto handler = task->progressHandler();
        int errors = 0;
        QObject::connect(
            handler.get(), &ProgressHandler::error, handler.get(), [&] { ++errors; }, Qt::DirectConnection);
        task->continued = failing;
        task->pauseAsked = hook == 1 ? failing : std::function<void(LambdaTask&)>();
        task->cancelAsked = hook == 2 ? failing : std::function<void(LambdaTask&)>();
        task->moves = hook == 3 ? failing : std::function<void(LambdaTask&)>();
        if (hook == 3) {
            EXPECT_THROW(pool.start(task), std::runtime_error);
            EXPECT_TRUE(pool.allTasksDone());
            delete task; // still ours
            continue;
        }
        pool.start(task);
        EXPECT_TRUE(eventually([&] { return handler->states() != TaskState::Created; }));
        if (hook == 0) {
            EXPECT_TRUE(eventually([&] { return task->isPaused(); }));
            handler->continueWork();
        } else {
            hook == 1 ? handler->pause() : handler->cancel();
        }
        EXPECT_TRUE(pool.waitForAllTasks());
        EXPECT_TRUE(handler->states().testFlag(TaskState::Error)) << hook;
        EXPECT_EQ(errors, 1);
    }
}

void endsOfParts()
{
    TaskThreadPool pool(1);
    QSemaphore parted;
    QSemaphore go;
    const auto whole = [&](LambdaTask& t) {
        LambdaTask part;
        ProgressSizeDecorator share(&part, t.progressHandler(), 50);
        part.start();
        parted.release();
        go.acquire();
    };
    for (const bool receiver : {false, true}) {
        auto* task = new LambdaTask(whole);
        const auto handler = task->progressHandler();
        std::atomic<int> ends{0};
        QObject::connect(handler.get(), &ProgressHandler::finished, [&] { ++ends; });
        auto owner = std::make_unique<ResultReceiver>(receiver ? handler : nullptr);
        pool.start(task);
        parted.acquire();
        EXPECT_FALSE(handler->waitForFinished(QDeadlineTimer(20)));
        EXPECT_FALSE(receiver && owner->stopTask(QDeadlineTimer(20)));
        QTimer::singleShot(20, [&] { go.release(); });
        handler->waitForFinished();
        EXPECT_TRUE(handler->isFinished());
        owner.reset();
        EXPECT_TRUE(pool.waitForAllTasks());
        EXPECT_EQ(ends, 1);
    }
    const auto main = std::make_shared<ProgressHandler>();
    int ends = 0;
    QObject::connect(main.get(), &ProgressHandler::finished, [&] { ++ends; });
    LambdaTask first;
    LambdaTask second;
    const ProgressSizeDecorator shares[] = {{&first, main, 50}, {&second, main, 50}};
    first.start();
    EXPECT_EQ(ends, 0);
    second.start();
    EXPECT_EQ(ends, 1);
}

/// Some of those that wait live in no thread, for a moment.
void requestsToManyThatWait()
{
    enum class Way
    {
        Cancel,
        Withdraw,
        Event,
    };
    for (const auto& [shortOnes, way] :
         {std::pair(0, Way::Cancel), {600, Way::Cancel}, {600, Way::Withdraw}, {600, Way::Event}}) {
#ifdef __SANITIZE_THREAD__ // which does not see the lock of Qt's queue of events
        if (way == Way::Event) {
            continue;
        }
#endif
        TaskThreadPool pool(1);
        QSemaphore reached;
        QSemaphore go;
        const auto block = [&](LambdaTask&) {
            reached.release();
            go.acquire();
        };
        pool.start(new LambdaTask(block));
        reached.acquire();
        for (int i = 0; i < shortOnes; ++i) {
            pool.start(new LambdaTask);
        }
        pool.start(new LambdaTask(block));
        std::atomic<int> asked{0};
        std::vector<std::pair<LambdaTask*, std::shared_ptr<TaskProgressHandler>>> tasks;
        for (int i = 0; i < 600; ++i) {
            auto* task = new LambdaTask;
            task->cancelAsked = [&](LambdaTask& t) {
                ++asked;
                EXPECT_EQ(t.thread(), pool.thread());
            };
            tasks.emplace_back(task, task->progressHandler());
            pool.start(task);
        }
        go.release();
        reached.acquire(); // the second one holds the worker
        for (const auto& [task, handler] : tasks) {
            if (way == Way::Event) {
                QMetaObject::invokeMethod(
                    task, [&] { ++asked; }, Qt::QueuedConnection);
            } else if (way == Way::Withdraw) {
                EXPECT_TRUE(pool.cancel(handler));
            } else {
                handler->cancel();
            }
        }
        EXPECT_TRUE(eventually([&] { return asked == 600; })) << asked;
        go.release();
        EXPECT_TRUE(pool.waitForAllTasks());
    }
}

void waitsOfAnyLength()
{
    TaskThreadPool pool(1);
    for (const unsigned long ms : {ULONG_MAX, ULONG_MAX - 1, ULONG_MAX / 2 + 1, ULONG_MAX / 4}) {
        std::atomic<bool> done{false};
        pool.start(new LambdaTask([&](LambdaTask&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            done = true;
        }));
        EXPECT_TRUE(pool.waitForAllTasks(ms) && done);
    }
    bool waited = true;
    pool.start(new LambdaTask([&](LambdaTask&) { waited = pool.waitForAllTasks(); }));
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_FALSE(waited) << "a task cannot wait for itself";
}

void countsWhatIsOnItsWay()
{
    TaskThreadPool pool(1);
    test::EventLoopThread home;
    bool ran = false;
    auto* task = new LambdaTask([&](LambdaTask&) { ran = true; });
    task->moveTaskToThread(&home);
    pool.start(task);
    EXPECT_FALSE(pool.allTasksDone() || pool.waitForAllTasks(5));
    home.start();
    EXPECT_TRUE(pool.waitForAllTasks() && ran);
}

void whatNobodyWillEnd()
{
    LambdaTask never;
    {
        ResultReceiver receiver(never.progressHandler());
    }
    never.progressHandler()->stopTaskWithoutEvents();
    EXPECT_TRUE(never.cancelRequested());
    never.progressHandler()->setInvokeType(Qt::BlockingQueuedConnection);
    never.progressHandler()->setProgress(5);
    EXPECT_EQ(never.progressHandler()->progress(), 5);

    TaskThreadPool pool(1);
    pool.pauseStarts();
    auto* queued = new LambdaTask;
    const auto handler = queued->progressHandler();
    pool.start(queued);
    EXPECT_TRUE(ResultReceiver(handler).stopTask(QDeadlineTimer(QDeadlineTimer::Forever)));
    EXPECT_TRUE(handler->isFinished() && handler->isCanceled());

    QObject parent;
    LambdaTask homeless;
    homeless.moveTaskToThread(nullptr);
    auto* child = new LambdaTask;
    child->setParent(&parent);
    LambdaTask twice;
    test::EventLoopThread thread;
    runInThread(&twice, &thread);
    for (Task* refused : std::initializer_list<Task*>{child, &homeless, &twice}) {
        EXPECT_THROW(pool.start(refused), std::logic_error);
        EXPECT_THROW(pool.startService(refused), std::logic_error);
        EXPECT_THROW(runInNewThread(refused), std::logic_error);
    }
    EXPECT_TRUE(pool.waitForAllTasks(5000));
}

const std::map<QString, void (*)()> attacks = {
    {QStringLiteral("successors while the pool goes"), successorsWhileThePoolGoes},
    {QStringLiteral("tasks of another thread while the pool goes"), tasksOfAnotherThreadWhileThePoolGoes},
    {QStringLiteral("observers of a continued task"), observersOfAContinuedTask},
    {QStringLiteral("hooks that throw"), hooksThatThrow},
    {QStringLiteral("ends of parts"), endsOfParts},
    {QStringLiteral("requests to many that wait"), requestsToManyThatWait},
    {QStringLiteral("waits of any length"), waitsOfAnyLength},
    {QStringLiteral("what is on its way"), countsWhatIsOnItsWay},
    {QStringLiteral("what nobody will end"), whatNobodyWillEnd},
};

const test::Role attack("attack", [](const QStringList& arguments) {
    attacks.at(arguments.value(0))();
    return testing::Test::HasFailure() ? 1 : 0;
});

TEST(Ends, ComeWithoutAHangOrACrash)
{
    for (const auto& [name, function] : attacks) {
        const test::Outcome outcome = test::play("attack", {name});
        EXPECT_EQ(outcome.status, 0) << name.toStdString() << '\n' << outcome.output << outcome.errors;
    }
}

} // namespace
} // namespace veltor::concurrent
