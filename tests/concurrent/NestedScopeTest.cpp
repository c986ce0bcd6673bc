#include "Support.h"

#include <veltor/concurrent/NestedScope.h>
#include <veltor/concurrent/SignalingTaskNestedScope.h>

#include "support/LogCapture.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <climits>

namespace veltor::concurrent {
namespace {

using test::EventLog;
using test::LambdaTask;

TEST(NestedScopeImpl, MapsNestedRanges)
{
    NestedScopeImpl scope(0, 100);
    scope.setRange(0, 10);
    scope.setProgress(5);
    EXPECT_DOUBLE_EQ(scope.progress(), 50);
    scope.setInnerRange(2, 1, 5);
    scope.setProgress(3);
    EXPECT_DOUBLE_EQ(scope.progress(), 60);
    scope.removeInnerRange();
    EXPECT_DOUBLE_EQ(scope.progress(), 70);
    scope.removeInnerRange();
    EXPECT_DOUBLE_EQ(scope.progress(), 70) << "the outermost range stays";
    scope.addProgress(1);
    EXPECT_DOUBLE_EQ(scope.progress(), 80);

    NestedScopeImpl empty(0, 100);
    empty.setRange(3, 3); // a width of 3 + 1
    empty.setProgress(5);
    EXPECT_DOUBLE_EQ(empty.progress(), 50);
    empty.setInnerRange(2, 7, 7); // a width of 1
    empty.setProgress(8);
    EXPECT_DOUBLE_EQ(empty.progress(), 100);
}

TEST(NestedScope, LetsEveryPeriodthItemThrough)
{
    struct Row
    {
        long long period, phase, index;
        bool through;
    };
    for (const Row& row :
         {Row{100, 0, 0, true}, Row{100, 0, 250, false}, Row{100, 0, 300, true}, Row{100, 0, -300, true},
          Row{10, 3, -13, true}, Row{10, 3, 7, false}, Row{0, 0, 7, true}, Row{-1, 0, LLONG_MIN, true},
          Row{LLONG_MIN, 0, LLONG_MIN, true}}) {
        NestedScopeImpl scope(0, 100);
        {
            const NestedScopeSaveSetup saved(scope);
            scope.setPeriod(row.period);
            scope.setPhase(row.phase);
            scope.setOptionalProgress(row.index, 0.5);
        }
        EXPECT_EQ(scope.progress() > 0, row.through) << row.period << ' ' << row.phase << ' ' << row.index;
        EXPECT_EQ(scope.period(), 100);
        EXPECT_EQ(scope.phase(), 0);
    }
}

TEST(SignalingTaskNestedScope, ForwardsToTheTaskAndAnswersFromIt)
{
    const test::LogCapture capture;
    LambdaTask task([](LambdaTask& t) {
        SignalingTaskNestedScope scope(t, 0, 200);
        scope.setRange(0, 4);
        scope.setInnerRange(2, 0, 1);
        scope.setProgress(0.5);
        scope.removeInnerRange();
        scope.setOperation(QStringLiteral("reading"));
        scope.setMessage(1, QStringLiteral("note"));
        scope.setMessage(1, QString());
        EXPECT_TRUE(scope.canWork());
        t.cancel();
        EXPECT_FALSE(scope.canWork());
        EXPECT_FALSE(scope.taskReady());
        EXPECT_TRUE(scope.isFinished());
        t.enterCancelledState();
        EXPECT_TRUE(scope.taskReady());
    });
    EventLog log(*task.progressHandler());
    QObject::connect(task.progressHandler().get(), &ProgressHandler::messageChanged, &log,
                     [&](const QString& text) { log.add(text); });
    task.start();
    EXPECT_EQ(log.take(),
              QLatin1String("started 0..200 =0 +0 =0 +0 =50 +50 =100 +50 reading note cancelRequest "
                            "=200 +100 canceled finished"));
    EXPECT_EQ(SignalingTaskNestedScope(task).progress(), 0.0);
}

} // namespace
} // namespace veltor::concurrent
