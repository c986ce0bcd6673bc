// Groups: random graphs of parts beside an oracle that runs them in its head, and what that cannot see.

#include "Support.h"

#include <veltor/concurrent/FunctionTask.h>
#include <veltor/concurrent/GroupProgressHandler.h>
#include <veltor/concurrent/GroupTask.h>
#include <veltor/err/Exceptions.h>
#include <veltor/err/HandleCurrentException.h>

#include <gtest/gtest.h>

#include <future>
#include <random>
#include <set>

namespace veltor::concurrent {
namespace {

using test::EventLoopThread;
using test::eventually;
using test::LambdaTask;
using Indices = std::set<int>;

enum class Fate
{
    Good,
    Fails,
    CancelsItself,
};

/// A random group, and what became of it.
class Scenario
{
public:
    explicit Scenario(unsigned seed)
        : m_random(seed)
    {
        const int count = pick(0, 12);
        m_fates.resize(std::size_t(count));
        m_on.resize(std::size_t(count));
        for (int i = 0; i < count; ++i) {
            m_fates[std::size_t(i)] = pick(0, 9) < 8 ? Fate::Good : Fate(pick(1, 2));
            for (int on = 0; on < i; ++on) {
                if (pick(0, 3) == 0) {
                    m_on[std::size_t(i)].insert(on);
                }
            }
        }
        m_limit = pick(0, 3);
        m_collect = pick(0, 1) == 1;
    }

    int pick(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    GroupTask* make(TaskThreadPool* pool)
    {
        auto* group = new GroupTask;
        group->setPool(pool);
        group->setMaxRunning(m_limit);
        group->setPolicy(m_collect ? GroupTask::Policy::CollectErrors : GroupTask::Policy::StopAtFirstError);
        m_most = pool ? m_limit : 1;
        for (int i = 0; i < int(m_fates.size()); ++i) {
            Task* part = new LambdaTask([this, i](LambdaTask& task) { work(i, task); });
            if (pick(0, 5) == 0) { // within a group of its own
                auto* inner = new GroupTask;
                inner->setPool(pick(0, 1) == 0 ? pool : nullptr);
                inner->add(part);
                part = inner;
            }
            m_handlers.push_back(part->progressHandler());
            EXPECT_EQ(group->add(part, pick(0, 3), QString::number(i)), i);
        }
        for (int i = 0; i < int(m_on.size()); ++i) {
            for (const int on : m_on[std::size_t(i)]) {
                group->addDependency(i, on);
            }
        }
        watch(*group->progressHandler());
        return group;
    }

    void check(bool disturbed)
    {
        const std::lock_guard lock(m_mutex); // the last progress may still be told
        EXPECT_EQ(m_ends, 1);
        EXPECT_TRUE(m_allEndedBefore) << "the group ends last";
        EXPECT_TRUE(m_forward) << "progress never goes back";
        EXPECT_TRUE(m_most < 1 || m_mostSeen <= m_most) << m_mostSeen;
        EXPECT_TRUE(m_inOrder) << "a part waits for what it depends on";
        Indices expected;
        Indices failed;
        bool good = true;
        for (int i = 0; i < int(m_fates.size()); ++i) {
            const auto& on = m_on[std::size_t(i)];
            const bool runs = std::all_of(on.begin(), on.end(), [&](int before) {
                return expected.count(before) > 0 && m_fates[std::size_t(before)] == Fate::Good;
            });
            if (runs) {
                expected.insert(i);
                good = good && m_fates[std::size_t(i)] == Fate::Good;
                if (m_fates[std::size_t(i)] == Fate::Fails) {
                    failed.insert(i);
                }
            }
        }
        EXPECT_TRUE(std::includes(expected.begin(), expected.end(), m_ran.begin(), m_ran.end()));
        EXPECT_TRUE(std::includes(failed.begin(), failed.end(), m_told.begin(), m_told.end()));
        if (disturbed) {
            EXPECT_TRUE(m_successful ? good : true);
            return;
        }
        EXPECT_EQ(m_successful, good);
        if (good || m_collect) {
            EXPECT_EQ(m_ran, expected);
            EXPECT_EQ(m_told, failed);
        }
    }

    std::atomic<bool> over{false};

private:
    void work(int i, LambdaTask& task)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_mostSeen = std::max(m_mostSeen, ++m_running);
            for (const int on : m_on[std::size_t(i)]) {
                m_inOrder = m_inOrder && m_done.count(on) > 0;
            }
            m_ran.insert(i);
        }
        bool going = true;
        for (int step = 0; step < 20 && going; ++step) {
            task.progressHandler()->setProgress(step * 5 % 60); // back, too
            going = task.waitWhilePaused();
        }
        {
            const std::lock_guard lock(m_mutex);
            --m_running;
            if (going && m_fates[std::size_t(i)] == Fate::Good) {
                m_done.insert(i);
            }
        }
        if (!going || m_fates[std::size_t(i)] == Fate::CancelsItself) {
            task.enterCancelledState();
        } else if (m_fates[std::size_t(i)] == Fate::Fails) {
            throw std::runtime_error("failed");
        }
    }

    void watch(const TaskProgressHandler& handler)
    {
        QObject::connect(&handler, &ProgressHandler::progressValueChanged, [this](double value) {
            const std::lock_guard lock(m_mutex);
            m_forward = m_forward && value >= m_value;
            m_value = value;
        });
        QObject::connect(&handler, &ProgressHandler::successful, [this] { m_successful = true; });
        QObject::connect(&handler, &ProgressHandler::error, [this](const err::ConcurrentNestedException& e) {
            try {
                e.raise();
            } catch (...) {
                err::handleCurrentException([this](unsigned) {
                    try {
                        throw;
                    } catch (const PartFailed& part) {
                        if (std::string(part.what()).rfind(std::to_string(part.part()) + ':', 0) == 0) {
                            m_told.insert(part.part()); // and not a group's within
                        }
                    } catch (const std::exception&) {
                    }
                    return true;
                });
            }
        });
        QObject::connect(&handler, &ProgressHandler::finished, [this] {
            ++m_ends;
            for (const auto& part : m_handlers) {
                m_allEndedBefore = m_allEndedBefore && part->isFinished();
            }
            over = true;
        });
    }

    std::mt19937 m_random;
    std::vector<Fate> m_fates;
    std::vector<Indices> m_on;
    int m_limit;
    bool m_collect;
    int m_most = 0;
    std::vector<std::shared_ptr<TaskProgressHandler>> m_handlers;
    std::mutex m_mutex; // guards what the parts and the observers write
    int m_running = 0;
    int m_mostSeen = 0;
    bool m_inOrder = true;
    Indices m_ran;
    Indices m_done;
    bool m_forward = true;
    double m_value = 0;
    std::atomic<int> m_ends{0};
    std::atomic<bool> m_successful{false};
    bool m_allEndedBefore = true;
    Indices m_told;
};

TEST(Groups, EndAsTheirPartsDoWhateverTheGraph)
{
    constexpr unsigned rounds = 150;
    TaskThreadPool pool(3);
    for (unsigned seed = 1; seed <= rounds; ++seed) {
        SCOPED_TRACE(seed);
        Scenario scenario(seed);
        const bool pooled = scenario.pick(0, 3) > 0;
        GroupTask* group = scenario.make(pooled ? &pool : nullptr);
        const auto handler = group->progressHandler();
        if (pooled) {
            runGroup(pool, group);
        } else {
            pool.start(group);
        }
        const bool cancels = scenario.pick(0, 3) == 0;
        const auto pauseAndContinue = [&handler](int times) {
            for (; times > 0; --times) {
                handler->pause();
                QThread::yieldCurrentThread();
                handler->continueWork();
            }
        };
        std::thread other(pauseAndContinue, scenario.pick(0, 4));
        pauseAndContinue(scenario.pick(0, 4));
        if (cancels) {
            handler->cancel();
        }
        other.join();
        EXPECT_TRUE(pool.waitForAllTasks());
        while (!scenario.over) { // its last signal
            QThread::yieldCurrentThread();
        }
        scenario.check(cancels);
    }
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_TRUE(eventually([] { return LambdaTask::alive == 0; }));
}

TEST(Groups, RefuseCirclesAndForeignParts)
{
    GroupTask group;
    const int a = group.add(new LambdaTask, 1, QStringLiteral("a"));
    const int b = group.add(new LambdaTask, 1, QStringLiteral("b"));
    const int c = group.add(new LambdaTask, 1, QStringLiteral("c"));
    group.addDependency(b, a);
    group.addDependency(c, b);
    try {
        group.addDependency(a, c);
        FAIL();
    } catch (const err::UnsupportedOperation& error) {
        EXPECT_NE(std::string(error.what()).find("a, c, b, a"), std::string::npos) << error.what();
    }
    EXPECT_THROW(group.addDependency(a, a), err::UnsupportedOperation);
    EXPECT_THROW(group.addDependency(a, 3), err::OutOfRange);
    LambdaTask part;
    EXPECT_THROW(group.add(&part, -1), err::UnexpectedValue);
    EXPECT_THROW(group.add(&group), err::UnsupportedOperation);
    EXPECT_THROW(group.add(nullptr), err::NullArgument);
}

TEST(Groups, SpeakForTheirPartsAndMayBeDestroyedByAnObserver)
{
    QString said;
    auto group = std::make_unique<GroupTask>();
    const auto handler = group->progressHandler();
    for (const char* name : {"read", "write"}) {
        group->add(new FunctionTask([](NestedScope& scope) { scope.setOperation(QStringLiteral("x")); }), 1,
                   QLatin1String(name));
    }
    QObject::connect(handler.get(), &ProgressHandler::messageChanged,
                     [&](const QString& text) { said += text + QLatin1Char('|'); });
    QObject::connect(handler.get(), &ProgressHandler::progressValueChanged, [&](double value) {
        if (value >= 50) {
            group.reset(); // within the first part's end
        }
    });
    group->start();
    EXPECT_TRUE(eventually([&] { return handler->isFinished(); }));
    EXPECT_EQ(said, QStringLiteral("read|read: x|"));
    EXPECT_FALSE(group);
}

TEST(Groups, EndWithTheirPool)
{
    std::shared_ptr<TaskProgressHandler> handler;
    {
        TaskThreadPool pool(1);
        std::promise<void> running;
        std::vector<Task*> parts;
        for (int i = 0; i < 5; ++i) {
            parts.push_back(new LambdaTask([&running, i](LambdaTask& task) {
                if (i == 0) {
                    running.set_value();
                }
                while (!task.cancelRequested()) {
                    QThread::yieldCurrentThread();
                }
            }));
        }
        handler = runGroup(pool, parts);
        running.get_future().wait();
    }
    EXPECT_TRUE(handler->isFinished());
    EXPECT_EQ(LambdaTask::alive, 0);
}

} // namespace
} // namespace veltor::concurrent
