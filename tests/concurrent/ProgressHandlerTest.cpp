#include "Support.h"

#include <veltor/concurrent/FutureWatcherProgressHandler.h>
#include <veltor/concurrent/ProgressSizeDecorator.h>
#include <veltor/concurrent/ResultReceiver.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include "support/Printers.h"

#include <QtCore/QFutureInterface>
#include <QtCore/QFutureWatcher>
#include <QtCore/QMetaMethod>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <gtest/gtest.h>

namespace veltor::concurrent {
namespace {

using test::EventLog;
using test::eventually;
using test::LambdaTask;

TEST(MetaObjects, EverySignalCanBeQueuedByName)
{
    for (const char* name : {"Range", "concurrent::Range", "veltor::concurrent::Range", "progress::Add",
                             "concurrent::CancelMethod", "err::ConcurrentNestedException"}) {
        EXPECT_NE(QMetaType::type(name), int(QMetaType::UnknownType)) << name;
    }
    // The same object as source and sink: each signal is queued into the next handler's signal.
    ProgressHandler source;
    ProgressHandler sink;
    const QMetaObject& meta = ProgressHandler::staticMetaObject;
    for (int i = meta.methodOffset(); meta.method(i).methodType() == QMetaMethod::Signal; ++i) {
        EXPECT_TRUE(QObject::connect(&source, meta.method(i), &sink, meta.method(i), Qt::QueuedConnection));
    }
    EventLog log(sink);
    bool called = false;
    QObject::connect(&sink, &ProgressHandler::cancelMethodChanged,
                     [](const CancelMethod& method) { method(); });
    source.setProgressRange({1, 2});
    source.setCancelMethod([&] { called = true; });
    source.setError({});
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(log.take(), QLatin1String("1..2 =1 +0 error"));
    EXPECT_TRUE(called);
}

TEST(ProgressHandler, ValuesAndTheirIncrements)
{
    ProgressHandler handler;
    EventLog log(handler);
    handler.setProgress(50);
    handler.setProgress(30);
    handler.setProgress(progress::Add{-5});
    EXPECT_EQ(log.take(), QLatin1String("=50 +50 =30 +20 =25 +5"));
    handler.setProgressRange({10, 20});
    handler.setFinalProgress();
    EXPECT_EQ(log.take(), QLatin1String("10..20 =10 +0 =20 +10"));
    handler.setIgnoreFinal(true);
    handler.setFinalProgress();
    EXPECT_EQ(log.take(), QString());
    handler.setIgnoreFinal(false);
    handler.setInvokeType(Qt::QueuedConnection);
    handler.setProgress(15);
    handler.setProgressRange({qInf(), 10});
    handler.setFinalProgress();
    EXPECT_EQ(log.take(), QString());
    EXPECT_EQ(handler.progress(), 20) << "the change comes with its signals";
    QCoreApplication::sendPostedEvents(&handler);
    EXPECT_EQ(log.take(), QLatin1String("=15 +5 inf..10 =inf +0 =10 +inf"));
}

TEST(ProgressHandler, CancelReachesSubHandlersWithoutHoldingTheLock)
{
    struct Sub : ProgressHandler
    {
        std::function<void()> onCancel;
        void cancel() override
        {
            ProgressHandler::cancel();
            onCancel();
        }
    };
    ProgressHandler main;
    EventLog log(main);
    auto late = std::make_shared<ProgressHandler>();
    QStringList order;
    for (int i = 0; i < 3; ++i) {
        auto sub = std::make_shared<Sub>();
        sub->onCancel = [&, i] {
            order << QString::number(i);
            std::thread([&] { main.registerSubHandler(late); }).join();
        };
        main.registerSubHandler(std::move(sub));
    }
    main.sendCancel();
    EXPECT_EQ(order.join(QString()), QLatin1String("012"));
    EXPECT_EQ(log.take(), QLatin1String("canceled cancelRequest"));
    EXPECT_FALSE(late->isCanceled());
    try {
        main.throwIfCanceled();
        ADD_FAILURE() << "did not throw";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Операция была прервана");
    }
}

TEST(ProgressHandler, WaitsForTheEnd)
{
    ProgressHandler handler;
    QTimer::singleShot(0, [&] {
        handler.finish();
        Q_EMIT handler.finished();
    });
    handler.waitForFinished();
    EXPECT_TRUE(handler.isFinished());
    bool delivered = false;
    QTimer::singleShot(0, &handler, [&] { delivered = true; });
    handler.waitForFinished();
    EXPECT_FALSE(delivered) << "no event loop when finished";
}

TEST(ProgressHandler, MayBeReleasedByAnyThreadWhileWritesAreUnderWay)
{
    test::EventLoopThread thread;
    std::atomic<int> destroyed{0};
    thread.start();
    for (int i = 0; i < 300; ++i) {
        std::shared_ptr<ProgressHandler> handler(new ProgressHandler, &releaseHandler);
        QObject::connect(handler.get(), &QObject::destroyed,
                         [&] { destroyed += QThread::currentThread() == &thread ? 1 : 0; });
        handler->moveToThread(&thread);
        handler->setProgress(1);
        handler->setProgress(2);
    }
    thread.stop();
    EXPECT_EQ(destroyed, 300);
}

TEST(FutureWatcherProgressHandler, ShowsTheWatcher)
{
    QFutureInterface<void> future;
    QFutureWatcher<void> watcher;
    FutureWatcherProgressHandler handler(&watcher);
    EventLog log(handler);
    watcher.setFuture(future.future());
    EXPECT_FALSE(handler.isRunning() || handler.isFinished());
    future.reportStarted();
    future.setProgressRange(0, 50);
    future.setProgressValue(20);
    QCoreApplication::processEvents();
    EXPECT_TRUE(handler.isRunning());
    EXPECT_EQ(handler.range().end, 50);
    EXPECT_EQ(handler.progress(), 20);
    EXPECT_TRUE(log.take().endsWith(QLatin1String("=20")));
    const auto sub = std::make_shared<ProgressHandler>();
    handler.registerSubHandler(sub);
    handler.cancel();
    EXPECT_TRUE(handler.isCanceled() && sub->isCanceled());
    bool isTold = false; // which Qt 6's watchers are finished before
    QObject::connect(&handler, &ProgressHandler::finished, [&] { isTold = true; });
    future.reportFinished();
    EXPECT_TRUE(eventually([&] { return isTold; }) && handler.isFinished());
    EXPECT_EQ(log.take(), QLatin1String("cancelRequest finished"));
    EXPECT_THROW(FutureWatcherProgressHandler(nullptr), std::invalid_argument);
}

TEST(ProgressSizeDecorator, FillsItsShareOfTheMainHandler)
{
    for (const bool installed : {false, true}) {
        const auto main = std::make_shared<ProgressHandler>();
        main->setProgress(10);
        LambdaTask task([](LambdaTask& t) {
            t.progressHandler()->setProgressRange({0, 7});
            for (int i = 1; i <= 3; ++i) {
                t.progressHandler()->setProgress(i);
            }
        });
        const auto decorator = std::make_shared<ProgressSizeDecorator>(&task, main, 30);
        if (installed) {
            task.setProgressHandler(decorator);
        }
        EventLog log(*main);
        task.start();
        EXPECT_NEAR(main->progress(), 40, 1e-9) << "completed: exactly its size";
        EXPECT_TRUE(decorator->isFinished());
        EXPECT_FALSE(main->isFinished());
        const QString events = log.take();
        EXPECT_TRUE(events.startsWith(QLatin1String("started "))) << events.toStdString();
        EXPECT_EQ(events.count(QLatin1String("finished")), 1);
    }
}

TEST(ProgressSizeDecorator, ForwardsCancellationAndErrors)
{
    const auto main = std::make_shared<ProgressHandler>();
    LambdaTask task;
    ProgressSizeDecorator decorator(&task, main, 50);
    EventLog log(*main);
    const auto sub = std::make_shared<ProgressHandler>();
    decorator.registerSubHandler(sub);
    decorator.cancel();
    EXPECT_TRUE(task.cancelRequested() && sub->isCanceled());
    EXPECT_TRUE(decorator.isCanceled());
    decorator.setError({});
    EXPECT_TRUE(task.isCancelled());
    EXPECT_EQ(log.take(), QLatin1String("=50 +50 error canceled finished"));
    EXPECT_THROW(ProgressSizeDecorator(&task, nullptr, 1), std::invalid_argument);

    ProgressSizeDecorator alone(nullptr, main, 10);
    alone.setProgressRange({0, 4});
    alone.setProgress(2);
    EXPECT_EQ(main->progress(), 55);
    alone.connectToMainPh(*main);
    alone.setFinalProgress();
    EXPECT_EQ(main->progress(), 60) << "connected once";
    alone.connectToMainPh(*std::make_unique<ProgressHandler>()); // which is gone again
    alone.setProgress(2);
    EXPECT_EQ(main->progress(), 60);
}

TEST(ProgressSizeDecorator, FollowsItsTaskIntoAPool)
{
    TaskThreadPool pool(1);
    const auto main = std::make_shared<ProgressHandler>();
    auto* task = new LambdaTask([](LambdaTask& t) {
        t.progressHandler()->setProgressRange({0, 7});
        t.progressHandler()->setProgress(7);
    });
    const auto decorator = std::make_shared<ProgressSizeDecorator>(task, main, 30);
    task->setProgressHandler(decorator);
    EventLog log(*decorator);
    pool.start(task);
    EXPECT_TRUE(pool.waitForAllTasks());
    EXPECT_TRUE(log.take().startsWith(QLatin1String("started 0..7 ")));
    EXPECT_TRUE(eventually([&] { return main->progress() == 30; }));
}

TEST(ResultReceiver, LearnsOfSuccessAndStopsItsTask)
{
    TaskThreadPool pool(1);
    int results = 0;
    auto* task = new LambdaTask;
    ResultReceiver receiver(task->progressHandler());
    QObject::connect(&receiver, &ResultReceiver::resultReady, [&] { ++results; });
    pool.start(task);
    EXPECT_TRUE(eventually([&] { return results == 1; }));

    auto* endless = new LambdaTask([](LambdaTask& t) {
        while (true) {
            t.progressHandler()->throwIfCanceled();
        }
    });
    const auto handler = endless->progressHandler();
    {
        ResultReceiver owner;
        owner.setTaskHandler(handler);
        EXPECT_EQ(owner.taskHandler(), handler);
        pool.start(endless);
    }
    EXPECT_TRUE(handler->isFinished());
    EXPECT_EQ(results, 1);
}

} // namespace
} // namespace veltor::concurrent
