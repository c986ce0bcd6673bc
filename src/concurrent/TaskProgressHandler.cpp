// A task's handler: answers from the task's state, and reaches the task while it exists.

#include <veltor/concurrent/TaskProgressHandler.h>

#include "ProgressHandlerPrivate.h"
#include "TaskCore.h"

#include <utility>

namespace veltor::concurrent {

TaskProgressHandler::TaskProgressHandler(Task* task)
{
    m_p->state = task ? task->m_core->state : QSharedPointer<TaskState>::create();
    m_p->task = task ? task->m_core : nullptr;
}

TaskProgressHandler::~TaskProgressHandler() = default;

void TaskProgressHandler::setTaskState(QSharedPointer<TaskState> state)
{
    if (state) {
        m_p->state = std::move(state);
    }
}

TaskState::States TaskProgressHandler::states() const
{
    return m_p->state->states();
}

void TaskProgressHandler::cancel()
{
    ProgressHandler::cancel();
    m_p->state->cancelRequested();
    if (m_p->task && !isFinished_impl()) {
        m_p->task->call([](Task* task) { task->cancel(); });
    }
}

void TaskProgressHandler::pause()
{
    if (m_p->task) {
        m_p->task->pause();
    }
}

void TaskProgressHandler::continueWork()
{
    if (m_p->task) {
        m_p->task->continueWork();
    }
}

bool TaskProgressHandler::withdraw()
{
    return m_p->task && m_p->task->withdraw();
}

bool TaskProgressHandler::isRunning_impl() const
{
    return m_p->state->is(TaskState::Running);
}

bool TaskProgressHandler::isFinished_impl() const
{
    return m_p->state->is(TaskState::Finished);
}

bool TaskProgressHandler::isCanceled_impl() const
{
    return m_p->state->isCancelRequested();
}

void TaskProgressHandler::setError_impl(const err::ConcurrentNestedException& error)
{
    if (m_p->task && !m_p->state->has(TaskState::Finished | TaskState::Error)) {
        m_p->task->call([copy = error](Task* task) { task->enterErrorState(copy); });
    }
}

CancellationToken TaskProgressHandler::cancellationToken_impl() const
{
    return m_p->state->cancellationToken();
}

bool TaskProgressHandler::withdraw_impl()
{
    if (!m_p->task) {
        return true;
    }
    withdraw();
    return m_p->task->isHandedOver() || !m_p->state->is(TaskState::Created);
}

} // namespace veltor::concurrent
