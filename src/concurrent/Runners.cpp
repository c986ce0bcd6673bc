#include <veltor/concurrent/Runners.h>

#include "Post.h"
#include "platform/HandlerStack.h"

#include <veltor/concurrent/Task.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QThread>

namespace veltor::concurrent {
namespace {

template <typename T>
void require(const T* argument, const char* name)
{
    if (!argument) {
        throw err::NullArgument(QLatin1String(name));
    }
}

class NewThread : public QThread
{
protected:
    void run() override
    {
        const platform::HandlerStack handlerStack;
        QThread::run();
    }
};

} // namespace

void runInNewThread(Task* task)
{
    require(task, "task");
    auto* thread = new NewThread;
    const std::shared_ptr<TaskProgressHandler> handler = task->progressHandler();
    task->moveTaskToThread(thread);
    // Direct: the thread must end whether or not the caller's thread delivers events. The handler may pass
    // on the finished() of a part of its work, which ends nothing.
    QObject::connect(handler.get(), &ProgressHandler::finished, thread,
                     Handoff([thread, watched = handler.get()] {
                         if (watched->isFinished()) {
                             thread->quit();
                         }
                     }),
                     Qt::DirectConnection);
    QObject::connect(thread, &QThread::finished, task, &QObject::deleteLater);
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    post(task, [task] { task->start(); });
    thread->start();
    if (handler->isFinished()) { // before it was started: nothing would end the thread
        thread->quit();
    }
}

void runInThread(Task* task, QThread* thread)
{
    require(task, "task");
    require(thread, "thread");
    task->moveTaskToThread(thread);
    post(task, [task] { task->start(); });
}

} // namespace veltor::concurrent
