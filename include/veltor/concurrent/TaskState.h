#pragma once

#include <veltor/Export.h>

#include <QtCore/QFlags>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace veltor::concurrent {

class Task;

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
    TaskState() = default;
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
    /// Asks for a pause.
    void pauseRequested() noexcept;
    /// A pause was asked for, and resume() was not called since.
    [[nodiscard]] bool isPauseRequsted() const noexcept;

    /// The word becomes Running and the pause request is withdrawn.
    void resume();

private:
    friend class Task;

    /// What continueWork() found.
    enum class Resumed
    {
        No,      // the task was not paused
        Yes,     // nobody waits in the pause: continueWork() decides how the task ends
        ForWait, // a thread waits in the pause: it goes on with the work once it is released
    };
    struct Pause
    {
        bool entered;      // this call entered the state
        unsigned releases; // m_releases when the wait was announced
    };

    [[nodiscard]] bool over() const;
    void replaceWord(States states);
    /// Created to Running; false when the task was started, or ended, before.
    bool begin();
    /// True for the first caller only: it enters the finished word and tells the observers.
    bool claimEnd();
    bool enterUnlessOver(State state);
    /// Enters Paused and announces a wait in one step: a continueWork() that comes before the wait itself
    /// already knows of it.
    Pause beginPause();
    void waitForRelease(const Pause& pause);
    Resumed resumeIfPaused();
    void release();

    mutable std::mutex m_mutex; // guards what follows, the two requests excepted
    States m_state = Created;
    bool m_endClaimed = false;         // somebody is on the way to enter a finished word
    int m_waiting = 0;                 // threads between beginPause() and the end of their wait
    unsigned m_releases = 0;           // ends of pauses
    std::condition_variable m_changed; // m_releases, or a cancel request
    std::atomic<bool> m_cancelRequested{false};
    std::atomic<bool> m_pauseRequested{false};
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TaskState::States)

} // namespace veltor::concurrent
