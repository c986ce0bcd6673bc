// One task in a thread, without a pool.

#include <veltor/concurrent/Runners.h>

#include "EventThread.h"
#include "TaskCore.h"

#include <veltor/err/Exceptions.h>

#include <QtCore/QPointer>

#include <memory>
#include <mutex>
#include <utility>

namespace veltor::concurrent {
namespace {

/// Whoever may still ask the thread of a task to end, after it did so.
class ThreadOwner : public TaskOwner
{
public:
    void setThread(QThread* thread)
    {
        const std::lock_guard lock(m_mutex);
        m_thread = thread;
    }

    void onEnd() override { quit(); }
    void onReleased() override { quit(); }
    void onDestroyed() override { quit(); }
    bool withdraw() override { return false; }

private:
    void quit()
    {
        const std::lock_guard lock(m_mutex);
        if (m_thread) {
            m_thread->quit();
        }
    }

    std::mutex m_mutex;          // guards m_thread
    QThread* m_thread = nullptr; // null once it ends
};

/// The thread of one task, which it owns: ends with the task, whether or not the caller's thread delivers
/// events, and deletes it last of all.
class TaskThread : public EventThread
{
public:
    TaskThread(Task* task, std::shared_ptr<ThreadOwner> owner)
        : m_task(task)
        , m_core(TaskAccess::share(*task))
        , m_owner(std::move(owner))
    {
        setObjectName(QStringLiteral("task"));
        m_owner->setThread(this);
    }
    ~TaskThread() override { join(); }

protected:
    void atEnd() override
    {
        while (m_task && !m_core->mayDelete()) { // a call of another thread is not done with it
            exec();
        }
        delete m_task.data();
        m_owner->setThread(nullptr);
    }

private:
    const QPointer<Task> m_task; // it is destroyed in this thread alone
    const std::shared_ptr<TaskCore> m_core;
    const std::shared_ptr<ThreadOwner> m_owner;
};

} // namespace

void runInNewThread(Task* task)
{
    const auto owner = std::make_shared<ThreadOwner>();
    give(task, owner);
    auto thread = std::make_unique<TaskThread>(task, owner);
    const std::shared_ptr<TaskProgressHandler> handler = task->progressHandler();
    try {
        task->moveTaskToThread(thread.get());
    } catch (...) {
        owner->setThread(nullptr);
        TaskAccess::core(*task).release();
        throw;
    }
    QObject::connect(thread.get(), &QThread::finished, thread.get(), &QObject::deleteLater);
    post(task, [task] { task->start(); });
    thread->start();
    if (handler->isFinished()) { // before it was started: nothing would end the thread
        thread->quit();
    }
    static_cast<void>(thread.release()); // the event loop's of this thread
}

void runInThread(Task* task, QThread* thread)
{
    if (!thread) {
        throw err::NullArgument(QStringLiteral("thread"));
    }
    give(task, std::make_shared<ThreadOwner>());
    task->moveTaskToThread(thread);
    post(task, [task] { task->start(); });
}

} // namespace veltor::concurrent
