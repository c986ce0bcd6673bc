#pragma once

#include <veltor/Export.h>

#include <QtCore/QFlags>

#include <memory>

namespace veltor::concurrent {

class CancellationToken;

/// Where a task stands: one state word and two requests, shared by the task and its progress handler.
///
/// Thread-safe. The word is read and written under a mutex; the requests are atomic flags that are set
/// without it.
class VELTOR_UTILS_EXPORT TaskState
{
public:
    /// Bits of the word. A task stores only these values: one of the first five alone, Finished with
    /// Cancelled, Finished with Successful, and Finished with Cancelled and Error.
    enum State : int
    {
        Created = 0x01,    ///< not started yet
        Running = 0x02,    ///< in onStart()
        Waiting = 0x04,    ///< onStart() is over, the work is not
        Paused = 0x08,     ///< stopped until it is resumed
        Finished = 0x10,   ///< ended; alone, without a verdict
        Cancelled = 0x20,  ///< verdict: given up
        Successful = 0x40, ///< verdict: done
        Error = 0x80,      ///< verdict: failed
    };
    Q_DECLARE_FLAGS(States, State)

    /// The state of a task that was not started: Created, no requests.
    TaskState();
    ~TaskState();
    TaskState(const TaskState&) = delete;
    TaskState& operator=(const TaskState&) = delete;

    /// True when all bits of @p state are set; for 0, when the word is 0.
    [[nodiscard]] bool is(State state) const;
    /// True when all bits of @p states are set; for none, when the word is 0.
    [[nodiscard]] bool has(States states) const;
    /// The whole word.
    [[nodiscard]] States states() const;

    /// Replaces the word. Finished with Successful drops any other bit that comes with them.
    void enterState(States states);
    /// The word becomes Finished with Successful.
    void enterSuccessfulState_impl();

    /// Asks for cancellation, and wakes whoever waits in Task::waitWhilePaused().
    void cancelRequested();
    /// Cancellation was asked for. This stays so.
    [[nodiscard]] bool isCancelRequested() const noexcept;
    /// Tells isCancelRequested() to code that knows no task; it may outlive the state.
    [[nodiscard]] CancellationToken cancellationToken() const;
    /// Asks for a pause.
    void pauseRequested() noexcept;
    /// A pause was asked for, and resume() was not called since.
    [[nodiscard]] bool isPauseRequsted() const noexcept;

    /// The word becomes Running and the pause request is withdrawn.
    void resume();

private:
    friend class Task;
    friend class TaskCore;

    struct Private;
    const std::unique_ptr<Private> m_p;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TaskState::States)

} // namespace veltor::concurrent
