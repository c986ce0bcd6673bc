#include "Support.h"

#include <veltor/concurrent/ProgressSizeDecorator.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include "support/Printers.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <gmock/gmock.h>

#include <condition_variable>
#include <deque>
#include <future>
#include <list>
#include <mutex>
#include <random>
#include <regex>

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
    LambdaTask* named(const std::string& name)
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

TEST_F(Pool, HasTheWorkersThatItIsGiven)
{
    TaskThreadPool pool(0, QStringLiteral("few"));
    EXPECT_TRUE(pool.waitForAllTasks(0));
    pool.start(named("a"));
    pool.start(named("b"));
    EXPECT_FALSE(pool.waitForAllTasks(1) || pool.removeThread());
    pool.addThread();
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(ran(), "ab");
    EXPECT_TRUE(pool.removeThread());
    EXPECT_EQ(pool.threadCount(), 0);
    pool.start(new LambdaTask([&](LambdaTask&) {
        EXPECT_EQ(TaskThreadPool::current(), &pool);
        EXPECT_EQ(QThread::currentThread()->objectName(), QLatin1String("few-2"));
    }));
    EXPECT_FALSE(pool.allTasksDone() || TaskThreadPool::current());
    pool.addThread();
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_THROW(pool.setResourceLimit(QStringLiteral("disk"), 0), std::out_of_range);
    EXPECT_THROW(pool.start(nullptr), std::invalid_argument);
}

TEST_F(Pool, ATaskThatEndedInTheQueueUsesUpItsTurn)
{
    TaskThreadPool pool(1);
    auto gate = occupy(pool);
    auto* cancelled = named("x");
    cancelled->cancelAsked = [](LambdaTask& t) { t.enterCancelledState(); };
    const auto handler = cancelled->progressHandler();
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

    auto again = occupy(pool);
    auto* last = new LambdaTask;
    pool.start(last);
    last->progressHandler()->setInvokeType(Qt::DirectConnection);
    last->enterCancelledState();
    again.set_value();
    EXPECT_TRUE(pool.waitForAllTasks()) << "the last one was dropped";
}

/// The queue beside a list: starts in front and at the back, withdrawals, and tasks that start others in
/// their turn.
TEST_F(Pool, TakesTasksInTheOrderOfItsQueue)
{
    for (unsigned seed = 1; seed <= 10; ++seed) {
        std::mt19937 random(seed);
        TaskThreadPool pool(1);
        std::list<int> model;
        std::vector<int> expected;
        std::vector<int> seen; // by the only worker
        std::vector<std::pair<int, std::shared_ptr<TaskProgressHandler>>> queued;
        const auto late = [&](int number) { return number % 400 == 399; };
        const std::function<LambdaTask*(int)> numbered = [&](int number) {
            return new LambdaTask([&, number](LambdaTask&) {
                seen.push_back(number);
                if (late(number)) {
                    pool.start(numbered(-1), TaskThreadPool::High);
                    pool.start(numbered(-2), TaskThreadPool::High);
                }
            });
        };
        pool.pauseStarts();
        EXPECT_TRUE(pool.startsPaused());
        for (int i = 0; i < 1500; ++i) {
            auto* task = numbered(i);
            queued.emplace_back(i, task->progressHandler());
            const int priority = int(random() % 4);
            pool.start(task, TaskThreadPool::Priority(priority)); // 2 and 3 are no priorities of their own
            model.insert(priority == TaskThreadPool::High ? model.begin() : model.end(), i);
            if (random() % 4 == 0) {
                const auto& [number, handler] = queued[random() % queued.size()];
                const bool waited = std::count(model.begin(), model.end(), number) > 0;
                EXPECT_EQ(pool.cancel(handler), waited);
                EXPECT_TRUE(handler->isCanceled());
                model.remove(number);
            }
        }
        for (const int number : model) {
            expected.push_back(number);
            if (late(number)) {
                expected.insert(expected.end(), {-2, -1});
            }
        }
        EXPECT_FALSE(pool.allTasksDone() || pool.waitForAllTasks(1));
        pool.resumeStarts();
        EXPECT_TRUE(pool.waitForAllTasks() && pool.allTasksDone());
        EXPECT_EQ(seen, expected);
        EXPECT_EQ(LambdaTask::alive, 0) << "an idle pool has deleted its tasks";
    }
}

TEST_F(Pool, TakesATaskOfAnotherThreadThroughThatThread)
{
    test::EventLoopThread home;
    auto pool = std::make_unique<TaskThreadPool>(1);
    const TaskPoolRef ref(*pool);
    const auto startAtHome = [&](LambdaTask* task) {
        task->moveTaskToThread(&home);
        return ref.start(task);
    };
    home.start();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(startAtHome(named("a")));
        EXPECT_TRUE(startAtHome(named("b")));
    }
    EXPECT_TRUE(pool->waitForAllTasks());
    EXPECT_EQ(ran(), "ababababab");
    home.stop();
    startAtHome(named("the pool is gone when the thread would pass it on"));
    pool.reset();
    LambdaTask own;
    EXPECT_FALSE(ref.isOpen() || ref.start(&own));
    home.start();
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 1; }));
    own.start();
    EXPECT_TRUE(own.isSuccessful());
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
    EXPECT_NE(pool.thread(), QThread::currentThread());
    for (const char* name : {"a", "b", "c"}) {
        auto* task = named(name);
        QObject::connect(
            task->progressHandler().get(), &ProgressHandler::started, &pool,
            [&pool] { EXPECT_EQ(QThread::currentThread(), pool.thread()); }, Qt::DirectConnection);
        pool.startService(task);
    }
    EXPECT_TRUE(pool.allTasksDone());
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
    EXPECT_EQ(ran(), "abc");
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
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_TRUE(alive);
}

TEST_F(Pool, DiesWithItsParentOrByItsOwnThread)
{
    auto parent = std::make_unique<QObject>();
    const QPointer<TaskThreadPool> pool(TaskThreadPool::makeInstance(1, parent.get()));
    pool->start(named("a"));
    EXPECT_TRUE(pool->waitForAllTasks());
    parent.reset();
    EXPECT_TRUE(pool.isNull());

    const QPointer<TaskThreadPool> later(TaskThreadPool::makeInstance(1, nullptr));
    later->start(named("b"));
    later->deleteLater();
    EXPECT_TRUE(eventually([&] { return later.isNull(); }));
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

/// What is known of one task.
struct Life
{
    std::shared_ptr<TaskProgressHandler> handler;
    bool withdrawn = false;
    std::mutex mutex; // guards events
    std::string events;

    explicit Life(std::shared_ptr<TaskProgressHandler> ofTask)
        : handler(std::move(ofTask))
    {
        note(&ProgressHandler::started, 's');
        note(&ProgressHandler::paused, 'p');
        note(&ProgressHandler::successful, 'u');
        note(&ProgressHandler::canceled, 'c');
        note(&ProgressHandler::finished, 'f');
        QObject::connect(handler.get(), &ProgressHandler::error, [this] { add('e'); });
    }
    template <typename Signal>
    void note(Signal signal, char letter)
    {
        QObject::connect(handler.get(), signal, [this, letter] { add(letter); });
    }
    void add(char letter)
    {
        const std::lock_guard lock(mutex);
        events += letter;
    }
    /// One start at most, pauses in between, one end, and this agrees with the state.
    void check() const
    {
        const TaskState::States word = handler->states();
        const char* end = word.testFlag(TaskState::Error)        ? "ecf"
                          : word.testFlag(TaskState::Cancelled)  ? "cf"
                          : word.testFlag(TaskState::Successful) ? "uf"
                                                                 : "f";
        EXPECT_TRUE(word.testFlag(TaskState::Finished));
        EXPECT_TRUE(std::regex_match(events, std::regex(std::string("(sp*)?") + end))) << events;
        EXPECT_FALSE(withdrawn && events.front() == 's') << events;
    }
};

/// Threads throw dice: tasks of many kinds are started, cancelled, paused, withdrawn, and their pool may go
/// meanwhile.
class Game
{
public:
    explicit Game(unsigned seed)
        : m_owner(std::make_unique<TaskThreadPool>(int(seed % 4)))
        , m_pool(m_owner.get())
    {
        m_pool->setResourceLimit(names[1], 2);
        std::vector<std::thread> players;
        for (unsigned player = 0; player < 3; ++player) {
            players.emplace_back([this, seed, player] { play(std::mt19937(seed * 3 + player)); });
        }
        std::thread housekeeper([this, seed] { keepHouse(std::mt19937(seed)); });
        const bool goes = seed % 3 == 0; // with work in progress
        for (std::thread& player : players) {
            player.join();
        }
        housekeeper.join();
        m_pool->addThread();
        EXPECT_TRUE(goes || eventually([this] {
                        m_pool->resumeStarts(); // workers left idle by dropped tasks too
                        return m_pool->waitForAllTasks(1);
                    }));
        m_owner.reset();
        EXPECT_EQ(LambdaTask::alive, 0);
        for (const auto& life : m_lives) {
            life->check();
        }
    }

private:
    static inline const QString names[] = {QStringLiteral("one"), QStringLiteral("two"), QString()};

    LambdaTask* make(int kind, int name, bool cancels)
    {
        auto* task = new LambdaTask([this, kind, name](LambdaTask& t) {
            const std::shared_ptr<void> running(nullptr, [&count = m_running[name]](void*) { --count; });
            const int together = ++m_running[name];
            EXPECT_TRUE(names[name].isEmpty() || together <= name + 1) << name;
            work(t, kind);
        });
        if (kind % 2) {
            task->cancelAsked = [](LambdaTask& t) { t.enterCancelledState(); };
        }
        if (kind == 9) {
            task->setProgressHandler(
                std::make_shared<ProgressSizeDecorator>(task, std::make_shared<ProgressHandler>(), 10));
        }
        const auto life = std::make_shared<Life>(task->progressHandler());
        QObject::connect(life->handler.get(), &ProgressHandler::paused,
                         [this, weak = std::weak_ptr(life->handler), cancels] {
                             if (const auto paused = weak.lock()) {
                                 m_resumer.take(paused, cancels);
                             }
                         });
        const std::lock_guard lock(m_mutex);
        m_lives.push_back(life);
        return task;
    }

    void work(LambdaTask& t, int kind)
    {
        t.progressHandler()->setProgress(kind);
        if (kind == 0) {
            throw std::runtime_error("dice");
        }
        if (kind == 1) {
            t.deleteLater(); // not its own to delete, but it may
        } else if (kind == 2) {
            t.progressHandler()->cancellationToken().waitFor(std::chrono::milliseconds(1));
            t.progressHandler()->cancellationToken().throwIfCanceled();
        } else if (kind == 3) {
            m_pool->start(make(4, 2, false), TaskThreadPool::High);
        } else if (kind == 5) { // ends in the thread that continues it
            t.enterWaitingState();
            QTimer::singleShot(0, &t, [&t] { t.enterPausedState(); });
        } else if (kind == 6) {
            QCoreApplication::processEvents();
        } else if (kind == 7) {
            t.enterSuccessfulState();
        } else if (kind == 8) {
            t.pause();
        }
        if (kind != 5) {
            t.waitWhilePaused();
        }
    }

    void play(std::mt19937 random)
    {
        for (int i = 0; i < tasks; ++i) {
            const auto dice = random() % 24;
            const int name = dice == 2 ? 2 : std::min(int(random() % 8), 2);
            auto* task = make(int(random() % 12), name, random() % 2 == 0);
            std::shared_ptr<Life> life;
            {
                const std::lock_guard lock(m_mutex);
                life = m_lives[m_lives.size() - 1 - random() % std::min<std::size_t>(m_lives.size(), 20)];
            }
            if (dice == 0) {
                task->cancel();
            } else if (dice == 1) {
                task->enterCancelledState();
            }
            if (dice == 2) {
                m_pool->startService(task);
            } else {
                m_pool->start(task, random() % 4 ? TaskThreadPool::Normal : TaskThreadPool::High,
                              names[name]);
            }
            if (dice == 3 && m_pool->cancel(life->handler)) {
                life->withdrawn = true;
            } else if (dice == 4) {
                life->handler->cancel();
            } else if (dice == 5) {
                life->handler->pause();
            } else if (dice == 6) {
                life->handler->setProgress(5);
            } else if (dice == 7) {
                life->handler->setError({});
            }
        }
    }

    void keepHouse(std::mt19937 random)
    {
        for (int i = 0; i < 50; ++i) {
            const auto dice = random() % 6;
            if (dice == 0) {
                m_pool->pauseStarts();
            } else if (dice == 1) {
                m_pool->addThread();
            } else if (dice == 2) {
                static_cast<void>(m_pool->removeThread());
            } else if (dice == 3) {
                static_cast<void>(m_pool->waitForAllTasks(1));
            } else {
                m_pool->resumeStarts();
            }
            std::this_thread::yield();
        }
    }

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr int tasks = 300;
#else
    static constexpr int tasks = 500;
#endif
    std::mutex m_mutex; // guards m_lives
    std::vector<std::shared_ptr<Life>> m_lives;
    std::atomic<int> m_running[3] = {};
    Resumer m_resumer;
    std::unique_ptr<TaskThreadPool> m_owner;
    TaskThreadPool* const m_pool; // tasks reach it while it goes
};

TEST_F(Pool, DiceFindNoTaskThatEndsOtherwiseThanOnce)
{
    for (unsigned seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const Game game(seed);
    }
}

} // namespace
} // namespace veltor::concurrent
