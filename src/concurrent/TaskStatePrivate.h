#pragma once

#include <veltor/concurrent/CancellationToken.h>
#include <veltor/concurrent/TaskState.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace veltor::concurrent {

struct TaskState::Private
{
    /// What continueWork() found. When nobody waits in the pause, it decides how the task ends.
    struct Resumed
    {
        bool was = false;     // the task was paused
        bool forWait = false; // a thread waits in the pause: it goes on with the work once it is released
        unsigned write = 0;   // the number of the word that was entered
    };
    struct Pause
    {
        bool entered = false;  // this call entered the state
        bool waits = false;    // the request still stood
        unsigned releases = 0; // ends of pauses when the wait was announced
    };

    [[nodiscard]] bool over() const;
    void write(States states);
    void replaceWord(States states);
    /// Created to Running; false when the task was started, or ended, before.
    bool begin();
    /// The word when onStart() has returned: Waiting, too, while a continueWork() is deciding on the end.
    [[nodiscard]] States wordAtReturn() const;
    /// True for the first caller only: it enters the finished word and tells the observers. With the number
    /// of a @p write, only while that is the last one.
    bool claimEnd(unsigned write = 0);
    bool enterUnlessOver(State state);
    /// Enters Paused from another state, and only while the request stands.
    bool enterPausedIfAsked();
    /// Running becomes Waiting, and nothing else does.
    void leaveRunning();
    /// Enters Paused and announces a wait in one step: a continueWork() that comes before the wait itself
    /// already knows of it.
    Pause beginPause();
    void waitForRelease(const Pause& pause);
    /// Also withdraws a pause that was not entered.
    Resumed resumeIfPaused();
    void release();

    mutable std::mutex mutex; // guards what follows, the two requests excepted
    States word = Created;
    unsigned writes = 0;                            // of the word, so far
    unsigned deciding = 0;                          // the number of that which a continueWork() entered last
    bool endClaimed = false;                        // somebody is on the way to enter a finished word
    int waiting = 0;                                // threads between beginPause() and the end of their wait
    unsigned releases = 0;                          // ends of pauses
    std::condition_variable changed;                // releases, or a cancel request
    std::optional<CancellationSource> cancellation; // once a token was asked for
    std::atomic<bool> cancelRequested{false};
    std::atomic<bool> pauseRequested{false};
};

} // namespace veltor::concurrent
