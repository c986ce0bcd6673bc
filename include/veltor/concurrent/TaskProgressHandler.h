#pragma once

#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/TaskState.h>

#include <QtCore/QSharedPointer>

namespace veltor::concurrent {

class Task;

/// The progress handler of a task: answers from the task's state, and hands cancellation and errors on to
/// the task while that exists. It may outlive its task, and may then be released by any thread.
class VELTOR_UTILS_EXPORT TaskProgressHandler : public ProgressHandler
{
    Q_OBJECT

public:
    /// Shares the state of @p task; with none it has a state of its own.
    explicit TaskProgressHandler(Task* task);
    ~TaskProgressHandler() override;

    /// Answers from @p state from now on. Called before the handler is used by several threads; null is
    /// ignored.
    void setTaskState(QSharedPointer<TaskState> state);

    /// The whole word of the task's state, for whoever comes after its signals.
    [[nodiscard]] TaskState::States states() const;

    /// Task::pause() in the caller's thread; nothing when the task is gone. What another thread calls,
    /// since the task may be destroyed there any moment and its handler is not.
    void pause();
    /// Task::continueWork(), likewise. It also withdraws a pause that was asked for and not entered yet.
    void continueWork();

    /// Ends a task that waits for its turn in a pool as cancelled, at once and without a turn.
    /// @return false, with nothing done, for any other
    bool withdraw();

    /// Asks the sub-handlers, the state and the task to cancel.
    void cancel() override;

protected:
    /// Answered from the task's state.
    /// @{
    bool isRunning_impl() const override;
    bool isFinished_impl() const override;
    bool isCanceled_impl() const override;
    /// @}
    /// Makes the task enter its error state, in its own thread; only once.
    void setError_impl(const err::ConcurrentNestedException& error) override;
    CancellationToken cancellationToken_impl() const override;
    bool withdraw_impl() override;

private:
    friend class Task;
};

} // namespace veltor::concurrent
