// A program of its own: the global pool goes down at process exit with tasks running, queued, waiting and
// paused, with and without an application object, by a task, and in a forked process. It fails by crashing,
// hanging or leaking.

#include "Support.h"

#include <veltor/concurrent/TaskThreadPool.h>

#include <cstdlib>
#include <cstring>
#include <future>
#include <optional>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace veltor::concurrent;
using veltor::test::LambdaTask;

#ifndef _WIN32
bool isForked = false;

/// Asked by the leak sanitizer, if there is one: what the parent's threads hold looks lost without them.
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off()
{
    return isForked ? 1 : 0;
}
#endif

/// Gives its successor to the pool, which may be going.
void handOn(LambdaTask& task)
{
    TaskThreadPool::globalInstance()->start(new LambdaTask(handOn));
    task.waitWhilePaused();
}

int main(int argc, char** argv)
{
    const bool withApplication = argc > 1 && std::strcmp(argv[1], "bare") != 0;
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
#ifndef _WIN32
        const pid_t child = fork(); // without the pool's threads
        if (child == 0) {
            isForked = true;
            std::exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        if (status != 0) {
            return 1;
        }
        if (std::strcmp(argv[1], "task") == 0) {
            pool->start(new LambdaTask([](LambdaTask&) { std::exit(0); }), TaskThreadPool::High);
            pool->addThread();
            std::promise<void>().get_future().wait();
        }
#endif
    }
    return 0;
}
