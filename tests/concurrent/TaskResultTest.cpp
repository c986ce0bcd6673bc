// Results: chains, ends of every kind, and lifetimes; then random chains beside a sequential oracle.

#include "Support.h"

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

} // namespace
} // namespace veltor::concurrent
