// The presenter's model: what it shows when, and that it stays a model while tasks come and go.

#include "Support.h"

#include <veltor/concurrent/TaskListModel.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtTest/QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <random>

namespace veltor::concurrent {
namespace {

using test::eventually;
using test::LambdaTask;
using Model = TaskListModel;
using State = Model::State;

/// A model whose clock is turned by hand.
class List : public testing::Test
{
protected:
    List()
    {
        model.setClock([this] { return nowMs; });
        model.setSamplesPerSecond(1);
    }
    void after(qint64 ms)
    {
        nowMs += ms;
        model.sample();
    }
    QVariant at(int row, int role) { return model.index(row).data(role); }
    State state(int row) { return at(row, Model::StateRole).value<State>(); }

    qint64 nowMs = 0;
    Model model;
    const QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(List, ShowsWhatLastsAndKeepsWhatFailed)
{
    auto handler = std::make_shared<ProgressHandler>();
    auto task = std::make_unique<LambdaTask>();
    const auto failing = std::make_unique<LambdaTask>(
        [](LambdaTask&) { throw std::runtime_error("the whole reason, however long it may be"); });
    LambdaTask quick;
    model.add(handler, QStringLiteral("plain"));
    model.add(*task, QStringLiteral("task"));
    model.add(*failing, QStringLiteral("failing"));
    model.add(quick, QStringLiteral("quick"));
    EXPECT_EQ(model.activeCount(), 4);
    EXPECT_EQ(model.rowCount(), 0);
    failing->progressHandler()->setProgress(30);
    quick.start();
    after(100);
    failing->start();
    after(400);
    ASSERT_EQ(model.rowCount(), 3) << "the quick one never appears";
    EXPECT_EQ(model.activeCount(), 2);
    EXPECT_EQ(state(1), State::Waiting);
    EXPECT_EQ(state(2), State::Failed);
    EXPECT_DOUBLE_EQ(at(2, Model::FractionRole).toDouble(), 0.3) << "not at its end";
    EXPECT_EQ(at(2, Model::ErrorRole).toString(), QStringLiteral("the whole reason, however long it may be"));

    for (int i = 1; i <= 20; ++i) { // half a percent each 100 ms
        handler->setProgress(i * 0.5);
        after(100);
    }
    EXPECT_NEAR(at(0, Model::RateRole).toDouble(), 5, 0.1);
    EXPECT_NEAR(at(0, Model::RemainingMsRole).toDouble(), 18000, 500);
    EXPECT_FALSE(at(0, Model::RemainingTextRole).toString().isEmpty());
    handler->setProgressRange({0, 0});
    handler->setMessage(QStringLiteral("step"));
    after(1);
    EXPECT_FALSE(at(0, Model::FractionRole).isValid()) << "a scale of nothing";
    EXPECT_EQ(at(0, Qt::DisplayRole).toString(), QStringLiteral("plain: step"));

    model.cancel(0);
    task.reset(); // cancelled thereby
    after(1);
    EXPECT_EQ(state(0), State::Canceling);
    EXPECT_EQ(state(1), State::Canceled);
    handler->finish(); // without a signal: believed when seen twice
    after(1);
    after(1);
    EXPECT_EQ(state(0), State::Canceled);
    after(1000);
    ASSERT_EQ(model.rowCount(), 1) << "the failure stays";
    model.dismiss(0);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(List, AMillionWritesLeaveNothingBehind)
{
    int changes = 0;
    QObject::connect(&model, &Model::dataChanged, [&] { ++changes; });
    TaskThreadPool pool(1);
    auto* task = new LambdaTask([](LambdaTask& t) {
        for (int i = 0; i <= 1000000; ++i) {
            t.progressHandler()->setProgress(i / 10000.0);
        }
    });
    model.setShowDelay(0);
    model.setKept(State::Done, true);
    model.add(*task, {});
    pool.start(task);
    EXPECT_TRUE(pool.waitForAllTasks());
    after(1);
    EXPECT_EQ(state(0), State::Done);
    EXPECT_EQ(at(0, Model::FractionRole).toDouble(), 1);
    EXPECT_EQ(changes, 1);
}

/// A task that works a while and does as it is told.
Task* steered(bool fails)
{
    return new LambdaTask([fails](LambdaTask& t) {
        for (int i = 0; i < 50 && t.waitWhilePaused(); ++i) {
            t.progressHandler()->setProgress(i);
        }
        if (t.cancelRequested()) {
            t.enterCancelledState();
        } else if (fails) {
            throw std::runtime_error("x");
        }
    });
}

/// Tasks of every fate come, are steered by random buttons, and go, while the tester watches the model and an
/// observer of its own changes it in return.
TEST_F(List, StaysAModelWhateverHappens)
{
    std::mt19937 random(15);
    const auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
    TaskThreadPool pool(2);
    QObject::connect(&model, &Model::dataChanged, [&] {
        if (pick(20) == 0) {
            model.dismissEnded();
        }
    });
    model.setLeastShown(3);
    for (int step = 0; step < 3000; ++step) {
        const int row = pick(model.rowCount() + 1);
        switch (pick(8)) {
        case 0: {
            Task* const task = steered(pick(3) == 0);
            model.setShowDelay(pick(3));
            model.add(task->progressHandler(), {}, Model::Cancel | Model::Pause);
            pool.start(task);
            break;
        }
        case 1:
            model.cancel(row);
            break;
        case 2:
            model.pause(row);
            break;
        case 3:
            model.continueWork(row);
            break;
        case 4:
            model.dismiss(row);
            break;
        case 5:
            model.setKept(State(int(State::Done) + pick(3)), pick(2) == 0);
            break;
        default:
            after(pick(3));
            break;
        }
    }
    EXPECT_TRUE(eventually([&] { // paused ones among them
        for (int row = 0; row < model.rowCount(); ++row) {
            model.cancel(row);
        }
        after(1);
        return model.activeCount() == 0;
    }));
    model.dismissEnded();
    EXPECT_EQ(model.rowCount(), 0);
}

} // namespace
} // namespace veltor::concurrent
