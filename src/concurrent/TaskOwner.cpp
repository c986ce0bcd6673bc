// How a task gets its owner.

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

} // namespace veltor::concurrent
