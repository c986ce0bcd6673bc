// How a task gets its owner, and goes to its thread.

#include "TaskOwner.h"

#include "TaskCore.h"

#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/err/Exceptions.h>

#include <mutex>
#include <utility>

namespace veltor::concurrent {
namespace {

/// The last owner of a task.
class Discarded : public TaskOwner
{
public:
    explicit Discarded(Task* task)
        : m_task(task)
        , m_core(TaskAccess::share(*task))
    {}

    void deleteWhenFree()
    {
        while (!m_core->mayDelete()) {
            static_cast<void>(moveTask(*m_task, nullptr)); // whichever thread ends the last call deletes it
            const std::lock_guard lock(m_mutex);
            if (!std::exchange(m_released, false)) {
                m_waits = true;
                return;
            }
        }
        delete m_task;
    }

    void onReleased() override
    {
        {
            const std::lock_guard lock(m_mutex);
            if (!std::exchange(m_waits, false)) {
                m_released = true;
                return;
            }
        }
        deleteWhenFree();
    }
    void onEnd() override {}
    void onDestroyed() override {}
    bool withdraw() override { return false; }

private:
    Task* const m_task;
    const std::shared_ptr<TaskCore> m_core;
    std::mutex m_mutex; // guards what follows
    bool m_waits = false;
    bool m_released = false;
};

} // namespace

void discard(Task* task)
{
    const auto last = std::make_shared<Discarded>(task);
    TaskAccess::core(*task).passTo(last);
    last->deleteWhenFree();
}

void requireMovable(const Task* task)
{
    if (!task) {
        throw err::NullArgument(QStringLiteral("task"));
    }
    if (task->parent()) {
        throw err::UnsupportedOperation(
            TaskThreadPool::tr("Задача с родительским объектом не может перейти в другой поток"));
    }
    if (!task->thread()) {
        throw err::UnsupportedOperation(TaskThreadPool::tr("Задача не принадлежит ни одному потоку"));
    }
}

void give(Task* task, std::shared_ptr<TaskOwner> owner)
{
    requireMovable(task);
    if (!TaskAccess::core(*task).adopt(std::move(owner))) {
        throw err::UnsupportedOperation(TaskThreadPool::tr("Задача уже передана на выполнение"));
    }
}

bool moveTask(Task& task, QThread* thread)
{
    if (task.thread() == thread) {
        return true;
    }
    const std::shared_ptr<TaskCore> core = TaskAccess::share(task);
    try {
        task.moveTaskToThread(thread);
        return true;
    } catch (...) {
        core->fail();
        return false;
    }
}

} // namespace veltor::concurrent
