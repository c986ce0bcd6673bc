// The unit of background work; what calls foreign code is in TaskCore.

#include <veltor/concurrent/Task.h>

#include "Post.h"
#include "ProgressHandlerPrivate.h"
#include "TaskCore.h"

#include <veltor/err/Exceptions.h>

#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <utility>

namespace veltor::concurrent {
namespace {

void registerMetaType()
{
    qRegisterMetaType<Task*>();
}

Q_CONSTRUCTOR_FUNCTION(registerMetaType)

} // namespace

Task::Task(QObject* parent)
    : QObject(parent)
    , m_core(std::make_shared<TaskCore>(this))
{
    m_core->setHandler({new TaskProgressHandler(this), &releaseHandler});
}

Task::~Task()
{
    m_core->close();
    enterCancelledState();
    m_core->destroyed();
    const std::shared_ptr<TaskProgressHandler> handler = m_core->setHandler(nullptr);
    // Others may hold the handler, and any of them release it. It has nothing to do in this thread any more,
    // which may end before: let it belong to none.
    if (handler.use_count() > 1 || !handler->m_p->followers.empty()) {
        moveHandler(*handler, nullptr);
    }
}

bool Task::isRunning() const
{
    return m_core->state->is(TaskState::Running);
}

bool Task::isWaiting() const
{
    return m_core->state->is(TaskState::Waiting);
}

bool Task::isPaused() const
{
    return m_core->state->is(TaskState::Paused);
}

bool Task::isFinished() const
{
    return m_core->state->is(TaskState::Finished);
}

bool Task::isCancelled() const
{
    return m_core->state->has(TaskState::Finished | TaskState::Cancelled);
}

bool Task::isSuccessful() const
{
    return m_core->state->has(TaskState::Finished | TaskState::Successful);
}

bool Task::cancelRequested() const
{
    return m_core->state->isCancelRequested();
}

bool Task::pauseRequested() const
{
    return m_core->state->isPauseRequsted();
}

bool Task::canCancel() const
{
    return false;
}

bool Task::canPause() const
{
    return false;
}

/// Null for no thread.
void Task::moveHandler(ProgressHandler& handler, QThread* thread)
{
    if (handler.parent()) {
        return; // goes where that goes
    }
    const QThread* home = handler.thread();
    if (!thread && home && home != QThread::currentThread()) {
        handler.m_p->homeless.store(true); // the task's thread has ended, and this is the end of the task
    } else {
        handler.moveToThread(thread);
        handler.m_p->follow(handler, thread);
    }
    for (const std::shared_ptr<ProgressHandler>& follower : handler.m_p->followers) {
        if (follower->thread() == home) {
            moveHandler(*follower, thread);
        }
    }
}

void Task::moveTaskToThread(QThread* thread)
{
    moveHandler(*m_core->handler(), thread);
    moveToThread(thread); // last: what waits for the task, a cancel() perhaps, is delivered there at once
}

std::shared_ptr<TaskProgressHandler> Task::progressHandler() const
{
    return m_core->handler();
}

void Task::setProgressHandler(std::shared_ptr<TaskProgressHandler> handler)
{
    if (!handler) {
        throw err::NullArgument(QStringLiteral("handler"));
    }
    handler->setTaskState(m_core->state);
    handler->m_p->task = m_core;
    m_core->setHandler(std::move(handler));
}

void Task::enterSuccessfulState()
{
    m_core->end(TaskState::Finished | TaskState::Successful);
}

void Task::enterCancelledState()
{
    m_core->end(TaskState::Finished | TaskState::Cancelled);
}

void Task::enterFinishedState()
{
    m_core->end(TaskState::Finished);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the slot's signature
void Task::enterErrorState(err::ConcurrentNestedException error)
{
    m_core->end(TaskState::Finished | TaskState::Cancelled | TaskState::Error, &error);
}

void Task::enterPausedState()
{
    m_core->enterPaused();
}

void Task::enterWaitingState()
{
    m_core->enterWaiting();
}

bool Task::event(QEvent* event)
{
    if (event->type() == QEvent::DeferredDelete) {
        m_core->close(); // before a subclass's destructor begins
    }
    return QObject::event(event);
}

void Task::start()
{
    if (thread() != QThread::currentThread()) {
        m_core->setHandedOver();
        post(this, [this] { start(); });
        return;
    }
    const std::shared_ptr<TaskCore> core = m_core; // an observer may delete the task
    core->run(*this);
}

void Task::cancel()
{
    if (isCancelled() || isSuccessful()) {
        return;
    }
    const std::shared_ptr<TaskCore> core = m_core; // the request may be the end of the task
    if (thread() != QThread::currentThread()) {
        core->call([](Task* task) { task->cancel(); });
        core->state->cancelRequested();
        return;
    }
    core->askToCancel(*this);
}

void Task::pause()
{
    const std::shared_ptr<TaskCore> core = m_core;
    core->pause();
}

void Task::continueWork()
{
    const std::shared_ptr<TaskCore> core = m_core;
    core->continueWork();
}

void Task::onContinue() {}

void Task::onCancelRequested()
{
    const std::shared_ptr<TaskProgressHandler> handler = m_core->handler();
    m_core->state->cancelRequested();
    Q_EMIT handler->cancelRequest();
}

void Task::onPauseRequested()
{
    m_core->state->pauseRequested();
}

bool Task::waitWhilePaused()
{
    return m_core->waitWhilePaused();
}

} // namespace veltor::concurrent
