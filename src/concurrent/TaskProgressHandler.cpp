#include <veltor/concurrent/TaskProgressHandler.h>

#include "TaskLink.h"

#include <utility>

namespace veltor::concurrent {

TaskProgressHandler::TaskProgressHandler(Task* task)
    : m_state(task ? task->m_state : QSharedPointer<TaskState>(new TaskState))
    , m_task(task ? task->m_link : nullptr)
{}

TaskProgressHandler::~TaskProgressHandler() = default;

void TaskProgressHandler::setTaskState(QSharedPointer<TaskState> state)
{
    if (state) {
        m_state = std::move(state);
    }
}

void TaskProgressHandler::cancel()
{
    ProgressHandler::cancel();
    m_state->cancelRequested();
    if (m_task && !isFinished_impl()) {
        m_task->call([](Task* task) { task->cancel(); });
    }
}

void TaskProgressHandler::pause()
{
    if (m_task) {
        m_task->visit([](Task* task) { task->pause(); });
    }
}

void TaskProgressHandler::continueWork()
{
    if (m_task) {
        m_task->visit([](Task* task) { task->continueWork(); });
    }
}

bool TaskProgressHandler::isRunning_impl() const
{
    return m_state->is(TaskState::Running);
}

bool TaskProgressHandler::isFinished_impl() const
{
    return m_state->is(TaskState::Finished);
}

bool TaskProgressHandler::isCanceled_impl() const
{
    return m_state->isCancelRequested();
}

void TaskProgressHandler::setError_impl(const err::ConcurrentNestedException& error)
{
    if (m_task && !m_state->has(TaskState::Finished | TaskState::Error)) {
        m_task->call([copy = error](Task* task) { task->enterErrorState(copy); });
    }
}

} // namespace veltor::concurrent
