#include <veltor/concurrent/Task.h>

#include "Post.h"
#include "TaskLink.h"

#include <veltor/err/Exceptions.h>

#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <utility>

namespace veltor::concurrent {

Task::Task(QObject* parent)
    : QObject(parent)
    , m_state(new TaskState)
    , m_link(std::make_shared<TaskLink>(this))
{
    m_handler = {new TaskProgressHandler(this), &releaseHandler};
}

Task::~Task()
{
    m_link->clear();
    enterCancelledState();
    // The handler may be held by others and released by any of them. It has nothing to do in this thread
    // any more, which may end before: let it belong to none.
    if (m_handler.use_count() > 1 && m_handler->thread() == QThread::currentThread() &&
        !m_handler->parent()) {
        m_handler->moveToThread(nullptr);
    }
}

bool Task::isRunning() const
{
    return m_state->is(TaskState::Running);
}

bool Task::isWaiting() const
{
    return m_state->is(TaskState::Waiting);
}

bool Task::isPaused() const
{
    return m_state->is(TaskState::Paused);
}

bool Task::isFinished() const
{
    return m_state->is(TaskState::Finished);
}

bool Task::isCancelled() const
{
    return m_state->has(TaskState::Finished | TaskState::Cancelled);
}

bool Task::isSuccessful() const
{
    return m_state->has(TaskState::Finished | TaskState::Successful);
}

bool Task::cancelRequested() const
{
    return m_state->isCancelRequested();
}

bool Task::pauseRequested() const
{
    return m_state->isPauseRequsted();
}

bool Task::canCancel() const
{
    return false;
}

bool Task::canPause() const
{
    return false;
}

void Task::moveTaskToThread(QThread* thread)
{
    moveToThread(thread);
    m_handler->moveToThread(thread);
}

std::shared_ptr<TaskProgressHandler> Task::progressHandler() const
{
    return m_handler;
}

void Task::setProgressHandler(std::shared_ptr<TaskProgressHandler> handler)
{
    if (!handler) {
        throw err::NullArgument(QStringLiteral("handler"));
    }
    m_handler = std::move(handler);
    m_handler->setTaskState(m_state);
    m_handler->m_task = m_link;
}

/// The one way into a finished word. The claim comes first, so that of several threads one sets the final
/// progress, the word and the signals, in this order.
template <typename Signal>
void Task::end(TaskState::States word, Signal verdict)
{
    if (!m_state->claimEnd()) {
        return;
    }
    const std::shared_ptr<TaskProgressHandler> handler = m_handler;
    handler->setFinalProgress();
    if (word.testFlag(TaskState::Error)) {
        m_state->cancelRequested();
    }
    m_state->enterState(word);
    verdict(*handler);
    Q_EMIT handler->finished();
}

void Task::enterSuccessfulState()
{
    end(TaskState::Finished | TaskState::Successful, [](TaskProgressHandler& h) { Q_EMIT h.successful(); });
}

void Task::enterCancelledState()
{
    end(TaskState::Finished | TaskState::Cancelled, [](TaskProgressHandler& h) { Q_EMIT h.canceled(); });
}

void Task::enterFinishedState()
{
    end(TaskState::Finished, [](TaskProgressHandler&) {});
}

void Task::enterErrorState(err::ConcurrentNestedException error)
{
    end(TaskState::Finished | TaskState::Cancelled | TaskState::Error, [&](TaskProgressHandler& h) {
        Q_EMIT h.error(error);
        Q_EMIT h.canceled();
    });
}

void Task::enterPausedState()
{
    if (m_state->enterUnlessOver(TaskState::Paused)) {
        Q_EMIT m_handler->paused();
    }
}

void Task::enterWaitingState()
{
    m_state->enterUnlessOver(TaskState::Waiting);
}

bool Task::event(QEvent* event)
{
    if (event->type() == QEvent::DeferredDelete) {
        m_link->clear(); // before a subclass's destructor begins
    }
    return QObject::event(event);
}

void Task::start()
{
    if (thread() != QThread::currentThread()) {
        post(this, [this] { start(); });
        return;
    }
    if (!m_state->begin()) {
        return;
    }
    m_starting = true;
    Q_EMIT m_handler->started();
    try {
        onStart();
    } catch (...) {
        enterErrorState(err::ConcurrentNestedException());
    }
    if (isRunning()) {
        enterSuccessfulState();
    } else if (!isWaiting()) {
        enterFinishedState();
    }
    m_starting = false;
    if (m_retired) {
        deleteLater();
    }
}

void Task::cancel()
{
    if (isCancelled() || isSuccessful()) {
        return;
    }
    if (thread() != QThread::currentThread()) {
        // The request may be the end of the task, so nothing of it is touched after.
        const QSharedPointer<TaskState> state = m_state;
        post(this, [this] { cancel(); });
        state->cancelRequested();
        return;
    }
    onCancelRequested();
}

void Task::pause()
{
    if (isRunning() || isWaiting()) {
        onPauseRequested();
    }
}

void Task::continueWork()
{
    const TaskState::Resumed resumed = m_state->resumeIfPaused();
    if (resumed == TaskState::Resumed::No) {
        return;
    }
    onContinue();
    if (resumed == TaskState::Resumed::ForWait) {
        m_state->release();
    } else if (isRunning()) {
        enterSuccessfulState();
    }
}

void Task::onContinue() {}

void Task::onCancelRequested()
{
    m_state->cancelRequested();
    Q_EMIT m_handler->cancelRequest();
}

void Task::onPauseRequested()
{
    m_state->pauseRequested();
}

bool Task::waitWhilePaused()
{
    if (pauseRequested() && !cancelRequested()) {
        const TaskState::Pause pause = m_state->beginPause();
        if (pause.entered) {
            Q_EMIT m_handler->paused();
        }
        m_state->waitForRelease(pause);
    }
    return !cancelRequested();
}

/// Deletes the task, called from its thread's event loop; but not while its work runs a local one.
void Task::retire()
{
    if (m_starting) {
        m_retired = true;
    } else {
        m_link->clear(); // before a subclass's destructor begins
        delete this;
    }
}

} // namespace veltor::concurrent
