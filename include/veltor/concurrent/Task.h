#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/TaskProgressHandler.h>
#include <veltor/concurrent/TaskState.h>
#include <veltor/err/ConcurrentNestedException.h>

#include <QtCore/QObject>

#include <memory>

class QThread;

namespace veltor::concurrent {

class TaskCore;

/// One piece of background work: a subclass does it in onStart() and reports through the progress handler,
/// which emits every signal. Handed to a TaskThreadPool or to a runner (Runners.h).
///
/// Threads: start(), cancel(), the queries, progressHandler() and the requests may be called from any
/// thread while the task exists; pause() and continueWork() run in the caller's thread. A task that was
/// handed over may be destroyed any moment: other threads hold its progress handler, which outlives it.
///
/// The end comes once. The first finished state entered stands, whoever else tries meanwhile; its own
/// signal is followed by finished(). A task that is destroyed before its end enters the cancelled state.
///
/// What onStart(), onContinue(), onPauseRequested() or onCancelRequested() throws becomes the error state.
/// Observers that are called directly may wait for others, and may delete a task that lives in their thread
/// and that no pool owns: no lock is held, and nothing of the task is used after.
class VELTOR_UTILS_EXPORT Task : public QObject
{
    Q_OBJECT

public:
    /// A task that was not started, with a handler of its own. A @p parent keeps it from being moved to
    /// another thread: a pool refuses it.
    explicit Task(QObject* parent = nullptr);
    ~Task() override;

    /// The work is under way, and not paused.
    [[nodiscard]] bool isRunning() const;
    /// onStart() has returned, the end is still to come; see enterWaitingState().
    [[nodiscard]] bool isWaiting() const;
    /// Stopped by a pause, until continueWork() or a cancellation.
    [[nodiscard]] bool isPaused() const;
    /// Ended, in whatever way.
    [[nodiscard]] bool isFinished() const;
    /// Finished after a cancellation or an error.
    [[nodiscard]] bool isCancelled() const;
    /// Finished, and the work was done.
    [[nodiscard]] bool isSuccessful() const;
    /// Cancellation was asked for; the work may not have noticed yet.
    [[nodiscard]] bool cancelRequested() const;
    /// A pause was asked for, and continueWork() was not called since.
    [[nodiscard]] bool pauseRequested() const;

    /// Advice for the user interface: whether the work heeds cancel(). No by default.
    [[nodiscard]] virtual bool canCancel() const;
    /// Whether it heeds pause(). No by default.
    [[nodiscard]] virtual bool canPause() const;

    /// Moves the task and its handler to @p thread, null for none; called in the task's thread. A subclass
    /// that owns further objects moves those first: as soon as the task is there, its events are delivered.
    virtual void moveTaskToThread(QThread* thread);

    /// The handler by which others watch and steer the task; never null. It may be kept after the task.
    [[nodiscard]] std::shared_ptr<TaskProgressHandler> progressHandler() const;
    /// Replaces the handler and makes it share this task's state; before the task is handed over.
    /// @throws err::NullArgument when @p handler is null
    void setProgressHandler(std::shared_ptr<TaskProgressHandler> handler);

    /// @name Entering a state
    /// Those that end the task set the final progress first and emit the verdict's signal and finished();
    /// none has an effect once the task has ended. Called by the work.
    /// @{

    /// Ends the task: its work is done. Emits successful() and finished().
    void enterSuccessfulState();
    /// Stops a running or waiting task until continueWork(), and emits paused(). Does not block:
    /// waitWhilePaused() does.
    void enterPausedState();
    /// Ends the task: its work was given up. Emits canceled() and finished().
    void enterCancelledState();
    /// For a task whose onStart() returns before its work is done: it stays unfinished until one of the
    /// other operations is called. No signal.
    void enterWaitingState();
    /// Ends the task without a verdict. Emits finished().
    void enterFinishedState();
    /// @}

    /// Qt's; the task's own queued calls arrive here. An override calls this one.
    bool event(QEvent* event) override;

public Q_SLOTS:
    /// Runs the work in the task's thread; once. What onStart() throws becomes the error state, but Canceled
    /// the cancelled one.
    void start();
    /// Asks for cancellation. From another thread the request is visible at once, so that work that polls
    /// sees it and a paused task wakes; onCancelRequested() follows from the task's event loop.
    void cancel();
    /// Asks a running or waiting task to pause.
    void pause();
    /// Resumes a paused task. When its work waits in waitWhilePaused(), it goes on; else the task ends
    /// successfully unless onContinue() left the running state. A pause that was asked for and not entered
    /// yet is withdrawn.
    ///
    /// A paused task's thread is usually blocked: call this from the thread that resumes, or connect with
    /// Qt::DirectConnection.
    void continueWork();
    /// Ends the task with an error: error(), canceled() and finished().
    void enterErrorState(err::ConcurrentNestedException error);

protected:
    /// The work. It polls throwIfCanceled() of the handler, or waitWhilePaused(), between its steps.
    /// Returning while running is success.
    virtual void onStart() = 0;
    /// Called by continueWork(), in its caller's thread.
    virtual void onContinue();
    /// Called by cancel(), in the task's thread: sets the request and emits cancelRequest().
    virtual void onCancelRequested();
    /// Called by pause(), in its caller's thread: sets the request.
    virtual void onPauseRequested();

    /// Called by the work between its steps: when a pause was asked for, enters the paused state and
    /// blocks until continueWork() or a cancellation, without spinning. The state is running again after.
    /// @return false when cancellation was asked for
    bool waitWhilePaused();

private:
    friend class TaskCore;
    friend class TaskProgressHandler;
    friend struct TaskAccess;

    static void moveHandler(ProgressHandler& handler, QThread* thread);

    const std::shared_ptr<TaskCore> m_core;
};

} // namespace veltor::concurrent
