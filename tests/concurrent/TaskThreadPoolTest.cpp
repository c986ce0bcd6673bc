#include "Support.h"

#include <veltor/concurrent/ResultReceiver.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include "support/LogCapture.h"
#include "support/Printers.h"

#include <QtCore/QPointer>
#include <QtCore/QSemaphore>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <random>

namespace veltor::concurrent {
namespace {

using test::EventLog;
using test::eventually;
using test::LambdaTask;

/// Every test ends with no task alive.
class Pool : public testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    }

    /// A task that notes its name when it runs.
    LambdaTask* named(const char* name)
    {
        return new LambdaTask([this, name](LambdaTask&) {
            const std::lock_guard lock(mutex);
            order += name;
        });
    }
    /// Occupies a worker of @p pool until the returned promise is kept.
    static std::promise<void> occupy(TaskThreadPool& pool)
    {
        std::promise<void> gate;
        auto running = std::make_shared<std::promise<void>>();
        pool.start(new LambdaTask([running, open = gate.get_future().share()](LambdaTask&) {
            running->set_value();
            open.wait();
        }));
        running->get_future().wait();
        return gate;
    }
    std::string ran()
    {
        const std::lock_guard lock(mutex);
        return order;
    }

    std::mutex mutex; // guards order
    std::string order;
};

TEST_F(Pool, WithoutWorkersQueuesUntilOneIsAdded)
{
    TaskThreadPool pool(0);
    pool.start(named("a"));
    pool.start(named("b"));
    EXPECT_FALSE(pool.waitForAllTasks(1));
    EXPECT_FALSE(pool.removeThread());
    pool.addThread();
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(ran(), "ab");
    EXPECT_TRUE(pool.removeThread());
    pool.start(named("c"));
    EXPECT_FALSE(pool.allTasksDone());
    pool.addThread();
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(ran(), "abc");
}

TEST_F(Pool, DropsATaskThatWasCancelledInTheQueueAndLeavesTheWorkerIdle)
{
    TaskThreadPool pool(1);
    auto gate = occupy(pool);
    auto* cancelled = named("x");
    cancelled->cancelAsked = [](LambdaTask& t) { t.enterCancelledState(); };
    const auto handler = cancelled->progressHandler();
    EventLog log(*handler);
    handler->setIgnoreFinal(true);
    pool.start(cancelled);
    pool.start(named("b"));
    handler->sendCancel();
    handler->waitForFinished();
    gate.set_value();
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 1; })) << "the dropped task is deleted";
    EXPECT_EQ(ran(), "") << "the worker stays idle";
    pool.start(named("a"));
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(ran(), "ab");
    EXPECT_EQ(log.take().count(QLatin1String("finished")), 1);
}

TEST_F(Pool, WakesWaitersWhenTheLastTaskIsDropped)
{
    TaskThreadPool pool(1);
    auto gate = occupy(pool);
    auto* cancelled = new LambdaTask;
    pool.start(cancelled);
    cancelled->progressHandler()->setInvokeType(Qt::DirectConnection);
    cancelled->enterCancelledState();
    gate.set_value();
    EXPECT_TRUE(pool.waitForAllTasks());
}

TEST_F(Pool, RunsTasksByPriorityThenInTheirOrder)
{
    std::vector<int> seen; // by the only worker
    TaskThreadPool pool(1);
    EXPECT_TRUE(pool.waitForAllTasks(0));
    std::function<LambdaTask*(int)> numbered = [&](int number) {
        return new LambdaTask([&, number](LambdaTask&) {
            seen.push_back(number);
            if (number == 500) { // in the middle of the queue
                pool.start(numbered(-1), TaskThreadPool::High);
                pool.start(numbered(-2), TaskThreadPool::High);
            }
        });
    };
    auto gate = occupy(pool);
    EXPECT_FALSE(pool.allTasksDone() || pool.waitForAllTasks(1));
    std::vector<int> expected;
    for (int i = 1; i <= 1000; ++i) {
        pool.start(numbered(i), TaskThreadPool::Priority(i % 2 * 7)); // no priority of its own
        expected.push_back(i);
    }
    pool.start(numbered(0), TaskThreadPool::High);
    gate.set_value();
    EXPECT_TRUE(pool.waitForAllTasks() && pool.allTasksDone());
    expected.insert(expected.begin() + 500, {-2, -1});
    expected.insert(expected.begin(), 0);
    EXPECT_EQ(seen, expected);
}

TEST_F(Pool, TakesATaskOfAnotherThreadThroughThatThread)
{
    test::EventLoopThread home;
    auto pool = std::make_unique<TaskThreadPool>(1);
    const auto startAtHome = [&](LambdaTask* task) {
        task->moveTaskToThread(&home);
        pool->start(task);
    };
    home.start();
    for (int i = 0; i < 5; ++i) {
        startAtHome(named("a"));
        startAtHome(named("b"));
    }
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    EXPECT_EQ(ran(), "ababababab");
    home.stop();
    startAtHome(named("the pool is gone when the thread would pass it on"));
    pool.reset();
    home.start();
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
}

TEST_F(Pool, ObserversSeeAQueuedTaskEndOnce)
{
    for (const Qt::ConnectionType type : {Qt::DirectConnection, Qt::QueuedConnection}) {
        TaskThreadPool pool(2);
        auto* good = new LambdaTask;
        auto* bad = new LambdaTask([](LambdaTask&) { throw std::runtime_error("bad"); });
        const auto goodHandler = good->progressHandler();
        const auto badHandler = bad->progressHandler();
        EventLog goodLog(*goodHandler, type);
        EventLog badLog(*badHandler);
        pool.start(good);
        pool.start(bad);
        EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
        QCoreApplication::processEvents();
        EXPECT_EQ(goodLog.take(), QLatin1String("started =100 +100 successful finished"));
        EXPECT_EQ(badLog.take(), QLatin1String("started =100 +100 error canceled finished"));
    }
}

TEST_F(Pool, RunsServiceTasksOneAfterAnotherInItsOwnThread)
{
    TaskThreadPool pool(0);
    for (const char* name : {"a", "b", "c"}) {
        auto* task = named(name);
        QObject::connect(
            task->progressHandler().get(), &ProgressHandler::started, &pool,
            [&pool] { EXPECT_EQ(QThread::currentThread(), pool.thread()); }, Qt::DirectConnection);
        pool.startService(task);
    }
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    EXPECT_EQ(ran(), "abc");
    EXPECT_TRUE(pool.allTasksDone());
}

TEST_F(Pool, IgnoresTheEndOfAPartOfATask)
{
    TaskThreadPool pool(1);
    std::promise<void> gate;
    auto* whole = new LambdaTask([this, open = gate.get_future().share()](LambdaTask& t) {
        Q_EMIT t.progressHandler()->finished();
        open.wait();
        const std::lock_guard lock(mutex);
        order += 'a';
    });
    pool.start(whole);
    pool.start(named("b"));
    EXPECT_FALSE(pool.waitForAllTasks(5));
    gate.set_value();
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(ran(), "ab");
}

TEST_F(Pool, KeepsATaskWhoseWorkRunsALocalEventLoopAfterItsEnd)
{
    TaskThreadPool pool(1);
    std::atomic<bool> alive{false};
    pool.start(new LambdaTask([&](LambdaTask& t) {
        const QPointer<LambdaTask> self(&t);
        t.enterSuccessfulState();
        QTest::qWait(20);
        alive = !self.isNull();
    }));
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    EXPECT_TRUE(alive);
}

TEST_F(Pool, LivesInItsThreadAndDiesWithItsParent)
{
    auto parent = std::make_unique<QObject>();
    const QPointer<TaskThreadPool> pool(TaskThreadPool::makeInstance(1, parent.get()));
    EXPECT_NE(pool->thread(), QThread::currentThread());
    EXPECT_NE(pool->thread(), nullptr);
    pool->start(named("a"));
    EXPECT_TRUE(pool->waitForAllTasks());
    parent.reset();
    EXPECT_TRUE(pool.isNull());

    const QPointer<TaskThreadPool> later(TaskThreadPool::makeInstance(1, nullptr));
    later->start(named("b"));
    later->deleteLater(); // runs the destructor in the pool's own thread
    EXPECT_TRUE(eventually([&] { return later.isNull(); }));
}

TEST_F(Pool, CancelsAndDeletesEverythingWhenDestroyed)
{
    auto pool = std::make_unique<TaskThreadPool>(3);
    std::vector<std::shared_ptr<TaskProgressHandler>> handlers;
    std::vector<std::unique_ptr<EventLog>> logs;
    const auto add = [&](LambdaTask* task, bool service = false) {
        handlers.push_back(task->progressHandler());
        logs.push_back(std::make_unique<EventLog>(*handlers.back()));
        service ? pool->startService(task) : pool->start(task);
    };
    add(new LambdaTask([](LambdaTask& t) {
        while (!t.cancelRequested()) {
            std::this_thread::yield();
        }
    }));
    auto* pausing = new LambdaTask([](LambdaTask& t) {
        t.pause();
        t.waitWhilePaused();
    });
    add(pausing);
    add(new LambdaTask([](LambdaTask& t) { t.enterWaitingState(); }));
    add(new LambdaTask([](LambdaTask& t) { t.enterWaitingState(); }), true);
    add(new LambdaTask);
    // A task that starts another one when it is asked to cancel.
    auto* waiting = new LambdaTask([](LambdaTask& t) { t.enterWaitingState(); });
    waiting->cancelAsked = [&pool](LambdaTask& t) {
        pool->start(new LambdaTask);
        t.enterCancelledState();
    };
    add(waiting, true);
    ASSERT_TRUE(eventually([&] { return pausing->isPaused(); }));
    delete pool.get(); // not reset(): a task still reaches the pool meanwhile
    static_cast<void>(pool.release());
    EXPECT_EQ(LambdaTask::alive, 0);
    for (std::size_t i = 0; i < handlers.size(); ++i) {
        EXPECT_TRUE(handlers[i]->isFinished()) << i;
        EXPECT_EQ(logs[i]->take().count(QLatin1String("finished")), 1) << i;
    }
}

/// A thread that continues or cancels paused tasks, in the order in which they were paused.
class Resumer
{
public:
    ~Resumer()
    {
        take(nullptr, false); // the last one
        m_thread.join();
    }

    void take(const std::shared_ptr<TaskProgressHandler>& paused, bool cancels)
    {
        const std::lock_guard lock(m_mutex);
        m_paused.emplace_back(paused, cancels);
        m_changed.notify_one();
    }

private:
    void run()
    {
        for (;;) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return !m_paused.empty(); });
            const auto [handler, cancels] = m_paused.front();
            m_paused.pop_front();
            lock.unlock();
            if (!handler) {
                return;
            }
            cancels ? handler->cancel() : handler->continueWork();
        }
    }

    std::mutex m_mutex; // guards m_paused
    std::condition_variable m_changed;
    std::deque<std::pair<std::shared_ptr<TaskProgressHandler>, bool>> m_paused;
    std::thread m_thread{[this] { run(); }};
};

TEST_F(Pool, StressEndsWithNothingAlive)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int tasksPerThread = 1000;
#else
    constexpr int tasksPerThread = 25000;
#endif
    std::atomic<int> ends{0};
    std::atomic<int> pauses{0};
    {
        Resumer resumer;
        TaskThreadPool pool(2);
        std::vector<std::thread> starters;
        for (unsigned seed = 1; seed <= 4; ++seed) {
            starters.emplace_back([&, seed] {
                std::mt19937 random(seed);
                std::vector<std::shared_ptr<TaskProgressHandler>> kept;
                for (int i = 0; i < tasksPerThread; ++i) {
                    const unsigned dice = random() % 16;
                    auto* task = new LambdaTask([pausing = dice >= 14](LambdaTask& t) {
                        t.progressHandler()->setProgress(10);
                        if (pausing) {
                            t.pause();
                        }
                        t.waitWhilePaused();
                        t.progressHandler()->throwIfCanceled();
                    });
                    const auto handler = task->progressHandler();
                    QObject::connect(handler.get(), &ProgressHandler::finished, [&] { ++ends; });
                    QObject::connect(handler.get(), &ProgressHandler::paused,
                                     [&, weak = std::weak_ptr(handler), cancels = dice == 15] {
                                         if (const auto paused = weak.lock()) {
                                             ++pauses;
                                             resumer.take(paused, cancels);
                                         }
                                     });
                    if (dice == 0) {
                        task->enterCancelledState();
                    } else if (dice == 1) {
                        task->cancel();
                    } else if (dice == 2) {
                        kept.push_back(handler);
                    }
                    pool.start(task, random() % 4 ? TaskThreadPool::Normal : TaskThreadPool::High);
                    if (dice == 3) {
                        handler->sendCancel();
                    } else if (dice == 4 && !kept.empty()) {
                        kept[random() % kept.size()]->setProgress(5);
                    } else if (dice == 5 && !kept.empty()) {
                        kept[random() % kept.size()]->pause();
                    }
                }
            });
        }
        for (std::thread& starter : starters) {
            starter.join();
        }
        EXPECT_TRUE(pool.waitForAllTasks());
    }
    EXPECT_EQ(LambdaTask::alive, 0);
    EXPECT_GT(pauses, tasksPerThread / 8) << "tasks do pause";
    EXPECT_EQ(ends, 4 * tasksPerThread) << "every task ends once";
}

} // namespace
} // namespace veltor::concurrent
