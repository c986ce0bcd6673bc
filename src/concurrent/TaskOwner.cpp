// How a task gets its owner, and goes to its thread.

#include "TaskOwner.h"

#include "TaskCore.h"

#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/err/Exceptions.h>

#include <utility>

namespace veltor::concurrent {

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
