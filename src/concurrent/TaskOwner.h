#pragma once

#include <memory>

class QThread;

namespace veltor::concurrent {

class Task;

/// Who runs a task and deletes it. Called in any thread, with no lock held.
class TaskOwner
{
public:
    TaskOwner() = default;
    TaskOwner(const TaskOwner&) = delete;
    TaskOwner& operator=(const TaskOwner&) = delete;
    virtual ~TaskOwner() = default;

    /// The task has entered a finished state; its last signals follow.
    virtual void onEnd() = 0;
    /// The task that TaskCore::mayDelete() refused may be deleted now.
    virtual void onReleased() = 0;
    /// The task is being destroyed, by whomever.
    virtual void onDestroyed() = 0;
    /// The task has an event to which it should answer at once.
    virtual void onPosted() {}
    /// Ends the task at once if it waits for its turn. Returns whether it did.
    virtual bool withdraw() = 0;
};

/// The task is its owner's from now on, which moves it to another thread.
/// @throws err::NullArgument when there is none
/// @throws err::UnsupportedOperation when it cannot be moved, or has an owner
void give(Task* task, std::shared_ptr<TaskOwner> owner);
/// Before the owner is made: what give() refuses, an owned task excepted.
void requireMovable(const Task* task);

/// Deletes an ended task, whose owner the caller was, in its thread: now, or when the last call is done with
/// it. Until then it belongs to no thread.
void discard(Task* task);

/// Moves a task from the calling thread, or from none. False when that, which is foreign code, has failed:
/// the task has ended.
[[nodiscard]] bool moveTask(Task& task, QThread* thread);

} // namespace veltor::concurrent
