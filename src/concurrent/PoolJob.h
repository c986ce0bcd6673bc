#pragma once

#include "TaskOwner.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <memory>

namespace veltor::concurrent {

class PoolCore;
class PoolJob;
class PoolThread;
class Task;
class TaskState;

using JobPtr = std::shared_ptr<PoolJob>;

/// A pool's record of one task, and its owner's face to the task. It outlives the task.
class PoolJob : public TaskOwner, public std::enable_shared_from_this<PoolJob>
{
public:
    /// Where the task lives in each is said in PoolCore.h.
    enum class Stage : quint8
    {
        Arriving, // on its way from the thread of the call
        Queued,
        Staging, // queued, on its way to or from Staged
        Staged,  // queued, about to be taken by whichever worker is free next
        Handed,  // on its way from the service thread to a worker
        Running,
        Ended, // the worker is free, the task perhaps not yet deleted
    };
    /// How a task was given to the pool.
    struct Terms
    {
        bool high = false;
        bool service = false;
        bool waits = false;          // for other tasks, by events: its turn comes, but it needs no worker
        bool keepWhenClosed = false; // the task stays the caller's then
        QString resource{};
    };

    PoolJob(std::shared_ptr<PoolCore> pool, Task* owned, Terms agreed);
    ~PoolJob() override;

    void onEnd() override;
    void onReleased() override;
    void onDestroyed() override;
    void onPosted() override;
    bool withdraw() override;

    const std::shared_ptr<PoolCore> core;
    const QSharedPointer<TaskState> state;
    const Terms terms;

    // Under the pool's mutex.
    Task* task; // null once it is destroyed, or its last call alone is waited for
    PoolThread* home = nullptr;
    qint64 order = 0;
    Stage stage = Stage::Arriving;
    bool withdrawn = false;

    bool starting = false; // the task's start() is on the stack; in the home thread only
};

} // namespace veltor::concurrent
