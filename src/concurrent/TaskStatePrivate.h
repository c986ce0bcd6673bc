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
    /// What continueWork() found.
    enum class Resumed
    {
        No,      // the task was not paused
        Yes,     // nobody waits in the pause: continueWork() decides how the task ends
        ForWait, // a thread waits in the pause: it goes on with the work once it is released
    };
    struct Pause
    {
        bool entered = false;  // this call entered the state
        bool waits = false;    // the request still stood
        unsigned releases = 0; // ends of pauses when the wait was announced
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
    /// Also withdraws a pause that was not entered.
    Resumed resumeIfPaused();
    void release();

    mutable std::mutex mutex; // guards what follows, the two requests excepted
    States word = Created;
    bool endClaimed = false;                        // somebody is on the way to enter a finished word
    int waiting = 0;                                // threads between beginPause() and the end of their wait
    unsigned releases = 0;                          // ends of pauses
    std::condition_variable changed;                // releases, or a cancel request
    std::optional<CancellationSource> cancellation; // once a token was asked for
    std::atomic<bool> cancelRequested{false};
    std::atomic<bool> pauseRequested{false};
};

} // namespace veltor::concurrent
