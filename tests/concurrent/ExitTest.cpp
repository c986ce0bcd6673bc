// A program of its own: the global pool goes down at process exit with tasks running, queued, waiting and
// paused, with and without an application object. It fails by crashing, hanging or leaking.

#include "Support.h"

#include <veltor/concurrent/TaskThreadPool.h>

#include <cstring>
#include <future>
#include <optional>

using namespace veltor::concurrent;
using veltor::test::LambdaTask;

/// Gives its successor to the pool, which may be going.
void handOn(LambdaTask& task)
{
    TaskThreadPool::globalInstance()->start(new LambdaTask(handOn));
    task.waitWhilePaused();
}

int main(int argc, char** argv)
{
    const bool withApplication = argc > 1 && std::strcmp(argv[1], "application") == 0;
    std::optional<QCoreApplication> application;
    if (withApplication) {
        application.emplace(argc, argv);
    }
    const auto work = [](LambdaTask& task) {
        while (task.waitWhilePaused()) {
            std::this_thread::yield();
        }
    };
    const auto pause = [work](LambdaTask& task) {
        task.pause();
        work(task);
    };
    const auto wait = [](LambdaTask& task) { task.enterWaitingState(); };
    TaskThreadPool* pool = TaskThreadPool::globalInstance();
    auto* first = new LambdaTask(pause);
    const auto handler = first->progressHandler();
    std::promise<void> paused;
    QObject::connect(handler.get(), &ProgressHandler::paused, [&paused] { paused.set_value(); });
    pool->start(first);
    pool->addThread();
    pool->start(new LambdaTask(handOn), TaskThreadPool::High);
    for (int i = 0; i < 14; ++i) {
        pool->start(new LambdaTask(work));
        pool->start(new LambdaTask(pause));
        pool->start(new LambdaTask(wait));
    }
    pool->startService(new LambdaTask(handOn));
    pool->startService(new LambdaTask(wait));
    if (withApplication) { // no task starts without one
        paused.get_future().wait();
    }
    return 0;
}
