#pragma once

#include "Post.h"
#include "TaskOwner.h"

#include <veltor/concurrent/Task.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QThread>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace veltor::concurrent {

/// What a task shares with its handlers and its owner, and what therefore outlives it. The transitions that
/// call foreign code live here: they touch the task only while it is certain to exist, and hold no lock
/// meanwhile.
///
/// Two counts, both guarded by the mutex. *Visits* are calls of a virtual function of the task: its
/// destructor waits for those of other threads. *Uses* are calls on some stack that are not done with the
/// task, visits, its start() and its last signals: an owner does not delete it before they are over
/// (mayDelete()), and nobody waits for them.
class TaskCore : public std::enable_shared_from_this<TaskCore>
{
public:
    explicit TaskCore(Task* task);

    const QSharedPointer<TaskState> state;

    [[nodiscard]] std::shared_ptr<TaskProgressHandler> handler() const;
    /// Returns the former one.
    std::shared_ptr<TaskProgressHandler> setHandler(std::shared_ptr<TaskProgressHandler> handler);

    /// The task is its @p owner's from now on. False when it has one.
    [[nodiscard]] bool adopt(std::shared_ptr<TaskOwner> owner);
    /// The same, whoever had it.
    void passTo(std::shared_ptr<TaskOwner> owner);
    /// Undoes adopt().
    void release();
    /// Somebody has been asked to run the task.
    [[nodiscard]] bool isHandedOver() const;
    void setHandedOver();
    bool withdraw();
    /// The task's work is to wait for other tasks, by events: it needs no thread of its own.
    [[nodiscard]] bool onlyWaits() const;
    void setOnlyWaits(bool waits);

    /// In the task's thread, by its owner: true when it may delete the task now, which no call reaches any
    /// more. Else the owner's onReleased() follows.
    [[nodiscard]] bool mayDelete();
    /// The destructor begins: no new call reaches the task, and those of other threads are over.
    void close();
    void destroyed();
    [[nodiscard]] bool isClosed() const;

    void run(Task& task);
    void pause();
    void continueWork();
    void askToCancel(Task& task);
    void enterPaused();
    void enterWaiting();
    /// The pause of a task without a thread that waits in it, while it is asked for.
    void enterPausedIfAsked();
    /// In onContinue(): the task goes on.
    void leaveRunning();
    /// The one way into a finished @p word. The claim comes first, so that of several threads one sets the
    /// final progress, the word and the signals, in this order. The task may be destroyed meanwhile.
    /// With the number of a @p write of the word, only while that is the last one.
    void end(TaskState::States word, const err::ConcurrentNestedException* error = nullptr,
             unsigned write = 0);
    /// Ends the task with the exception in flight.
    void fail();
    bool waitWhilePaused();

    /// Calls @p function with the task in the task's thread: now when that is this thread, else from its
    /// event loop. Does nothing when the task is gone.
    template <typename F>
    void call(F function)
    {
        std::shared_ptr<TaskOwner> owner;
        Task* task = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            task = m_task;
            if (!task) {
                return;
            }
            if (task->thread() != QThread::currentThread()) {
                post(task, [task, f = std::move(function)]() mutable { f(task); });
                task = nullptr;
                owner = m_owner;
            }
        }
        if (task) {         // which only this thread can destroy
            function(task); // NOLINT(bugprone-use-after-move): moved only where there is no task here
        } else if (owner) {
            owner->onPosted();
        }
    }

private:
    class Use;
    /// Calls a virtual function of the task in the caller's thread; what it throws becomes the error state.
    void visit(const std::function<void(Task&)>& function);

    mutable std::mutex m_mutex; // guards what follows; also m_task's life while a call is posted
    Task* m_task;
    std::shared_ptr<TaskProgressHandler> m_handler;
    std::shared_ptr<TaskOwner> m_owner;
    int m_uses = 0;
    bool m_handedOver = false;
    bool m_onlyWaits = false;
    bool m_deleteWanted = false;
    std::vector<std::thread::id> m_visitors;
    std::condition_variable m_visited;
};

/// For the rest of the room.
struct TaskAccess
{
    static TaskCore& core(const Task& task) { return *task.m_core; }
    static std::shared_ptr<TaskCore> share(const Task& task) { return task.m_core; }
};

} // namespace veltor::concurrent
