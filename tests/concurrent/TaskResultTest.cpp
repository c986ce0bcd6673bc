// Results: chains, ends of every kind, and lifetimes; then random chains beside a sequential oracle.

#include "Support.h"

#include <veltor/concurrent/ResultFuture.h>
#include <veltor/concurrent/TaskResult.h>
#include <veltor/err/Exceptions.h>

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <future>
#include <random>
#include <stdexcept>

namespace veltor::concurrent {
namespace {

using test::eventually;
using State = ResultCore::State;

std::string messageOf(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& reason) {
        return reason.what();
    }
}

TEST(Results, CarryValuesOfEveryKindAlongAChain)
{
    TaskThreadPool pool(2);
    QObject context;
    QThread* seen = nullptr;
    auto chain = run(pool, [] {
                     return std::make_unique<int>(20);
                 }).then(pool, [](std::unique_ptr<int> moved) {
                       return *moved + 1;
                   }).then(&context, [&](const int& value) {
        seen = QThread::currentThread();
        return run(pool, [value](NestedScope& scope) {
            scope.setProgress(50);
            return value * 2;
        });
    });
    const auto end = chain.then(&context, [](int) {});
    EXPECT_EQ(seen, nullptr) << "never within the call that makes it";
    end.get(); // helps: the context lives here
    EXPECT_EQ(seen, QThread::currentThread());
    EXPECT_EQ(chain.get(), 42);
    EXPECT_EQ(chain.take(), 42);
    EXPECT_THROW(chain.get(), err::UnsupportedOperation);
    EXPECT_THROW(TaskResult<int>().get(), err::NullArgument);
    EXPECT_THROW(run(static_cast<TaskThreadPool*>(nullptr), [] {}), err::NullArgument);
}

TEST(Results, PassFailuresOnUntilOneIsSettled)
{
    TaskThreadPool pool(1);
    QObject context;
    std::string seen;
    const auto failing = run(pool, []() -> int { throw std::out_of_range("far"); });
    const auto looked = failing.then(&context, [](int) { return 1; })
                            .onFailed(&context, [&](const std::exception& e) { seen += e.what(); })
                            .onCanceled(&context, [&] { seen += "canceled"; });
    EXPECT_THROW(looked.get(), std::out_of_range) << "the thrown exception itself";
    EXPECT_EQ(seen, "far");
    EXPECT_EQ(looked.onFailed(&context, [](std::exception_ptr) { return 7; }).get(), 7);
    EXPECT_EQ(messageOf(failing.error()), "far");

    test::LogCapture log;
    static_cast<void>(run(pool, [] { throw std::runtime_error("unseen"); }));
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_EQ(log.takeTexts(logging::LogLevel::Error).size(), 1) << "told to the log at least";
}

TEST(Results, AreCancelledAlongTheChain)
{
    TaskThreadPool pool(1);
    QObject context;
    std::promise<void> running;
    auto busy = run(pool, [&](const CancellationToken& token) {
        running.set_value();
        token.waitFor(std::chrono::hours(1));
        return 1;
    });
    int looks = 0;
    auto queued = run(pool, [](NestedScope& scope) { return scope.isFinished(); });
    auto last = busy.then(&context, [](int) { FAIL(); }).onCanceled(&context, [&] { ++looks; });
    running.get_future().wait();
    queued.cancel();
    EXPECT_TRUE(queued.isCanceled()) << "at once, though no worker is free";
    EXPECT_FALSE(last.wait(1));
    last.progressHandler()->cancel();
    EXPECT_THROW(last.get(), Canceled);
    EXPECT_EQ(looks, 1);
    EXPECT_TRUE(busy.isCanceled()) << "what it returned after the request is not its value";
}

TEST(Results, EndWhateverGoesBeforeThem)
{
    QObject context;
    auto gone = std::make_unique<QObject>();
    auto pool = std::make_unique<TaskThreadPool>(1);
    std::promise<void> running;
    const auto busy = run(*pool, [&](NestedScope& scope) {
        running.set_value();
        while (scope.canWork()) {
            QThread::yieldCurrentThread();
        }
    });
    const auto done = run(
        *pool, [] { return 1; }, TaskThreadPool::High);
    auto held = std::make_shared<int>(0);
    const auto queued = run(*pool, [held] {});
    const auto follower = queued.then(*pool, [] {});
    const auto orphan = queued.onFinished(gone.get(), [](auto) { FAIL(); });
    running.get_future().wait();
    pool.reset();
    EXPECT_TRUE(busy.isCanceled());
    EXPECT_TRUE(queued.isCanceled() && follower.isCanceled());
    EXPECT_EQ(held.use_count(), 1) << "the function is destroyed";
    EXPECT_FALSE(orphan.isFinished());
    gone.reset();
    EXPECT_TRUE(orphan.isCanceled()) << "its event went with the context";
    EXPECT_TRUE(done.isFinished());
}

TEST(Results, WaitWithinTheirOwnPoolByHelping)
{
    TaskThreadPool pool(1);
    std::function<int(int)> sum = [&](int n) {
        return n == 0 ? 0 : n + run(pool, [&, n] { return sum(n - 1); }).get();
    };
    EXPECT_EQ(run(pool, [&] { return sum(50); }).get(), 1275);
}

TEST(Results, CrossTheBridgeToFuturesAndBack)
{
    TaskThreadPool pool(1);
    QObject context;
    EXPECT_EQ(toFuture(run(pool, [] { return 5; })).result(), 5);
    EXPECT_THROW(toFuture(run(pool, [] { throw std::out_of_range("x"); })).waitForFinished(),
                 std::out_of_range);
    const auto slow = run(pool, [](const CancellationToken& token) { token.waitFor(std::chrono::hours(1)); });
    auto back = fromFuture(toFuture(slow, &context), &context);
    back.cancel();
    EXPECT_TRUE(back.isCanceled());
    EXPECT_TRUE(eventually([&] { return slow.isCanceled(); })) << "through both";
    const auto value = fromFuture(toFuture(run(pool, [] { return 6; })), &context);
    EXPECT_TRUE(eventually([&] { return value.isFinished(); }));
    EXPECT_EQ(value.get(), 6);
}

/// A random chain, perhaps disturbed, beside an oracle that knows only what each link does.
class Chain
{
public:
    Chain(TaskThreadPool& pool, std::mt19937& random)
        : m_pool(pool)
        , m_random(random)
    {
        const Link first = link(true, true);
        m_results.push_back(run(pool, [first] { return first(0); }));
        for (int links = pick(6); links > 0; --links) {
            extend();
        }
    }
    ~Chain() { EXPECT_TRUE(m_pool.waitForAllTasks()); } // a link may still be on its way to its end

    /// One that nobody disturbed ends exactly as the oracle says.
    void check()
    {
        const int disturbed = pick(4);
        if (disturbed == 0) {
            m_results[std::size_t(pick(int(m_results.size())))].cancel();
        } else if (disturbed == 1) {
            m_context.reset();
        }
        const auto& last = m_results.back();
        while (!last.isFinished()) {
            QCoreApplication::processEvents();
            QThread::yieldCurrentThread();
        }
        if (disturbed < 2) {
            EXPECT_LE(m_calls, int(m_results.size()));
            return;
        }
        EXPECT_EQ(last.state(), m_expected);
        EXPECT_EQ(m_calls, m_expectedCalls);
        if (m_expected == State::Succeeded) {
            EXPECT_EQ(last.get(), m_value);
        }
    }

private:
    using Link = std::function<int(int)>;

    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

    /// What the next link does with the value before it.
    Link link(bool reached, bool startsAnew)
    {
        const int how = pick(6);
        const int add = pick(10);
        if (reached) {
            m_value = (startsAnew ? 0 : m_value) + add;
            m_expected = how == 0 ? State::Failed : how == 1 ? State::Canceled : State::Succeeded;
            ++m_expectedCalls;
        }
        return [this, how, add](int value) {
            ++m_calls;
            if (how == 0) {
                throw std::runtime_error("failed");
            }
            if (how == 1) {
                throw Canceled();
            }
            return value + add;
        };
    }

    void extend()
    {
        const TaskResult<int> last = m_results.back();
        QObject* const context = m_context.get();
        const int kind = pick(5);
        const State needed = kind == 3 ? State::Failed : kind == 4 ? State::Canceled : State::Succeeded;
        const Link act = link(m_expected == needed, needed != State::Succeeded);
        if (kind == 0) {
            m_results.push_back(last.then(context, act));
        } else if (kind == 1) {
            m_results.push_back(last.then(m_pool, act));
        } else if (kind == 2) { // a result within a result
            m_results.push_back(last.then(context, [this, act](int value) {
                return run(m_pool, [act, value] { return act(value); });
            }));
        } else if (kind == 3) {
            m_results.push_back(last.onFailed(context, [act](std::exception_ptr) { return act(0); }));
        } else {
            m_results.push_back(last.onCanceled(context, [act] { return act(0); }));
        }
    }

    TaskThreadPool& m_pool;
    std::mt19937& m_random;
    std::atomic<int> m_calls{0};
    int m_expectedCalls = 0;
    State m_expected = State::Succeeded;
    int m_value = 0;
    std::unique_ptr<QObject> m_context = std::make_unique<QObject>();
    std::vector<TaskResult<int>> m_results;
};

TEST(Results, RandomChainsEndAsTheirLinksSay)
{
    std::mt19937 random(15);
    const test::LogCapture log; // of the failures that nobody looks at
    TaskThreadPool pool(2);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        Chain(pool, random).check();
    }
}

} // namespace
} // namespace veltor::concurrent
