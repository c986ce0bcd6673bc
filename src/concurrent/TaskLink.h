#pragma once

#include "Post.h"

#include <veltor/concurrent/Task.h>

#include <QtCore/QThread>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace veltor::concurrent {

/// A task as its handlers see it: there until its destructor begins. A QPointer would not do, since the
/// task may be destroyed in its thread between another thread's test and use of it.
class TaskLink
{
public:
    explicit TaskLink(Task* task)
        : m_task(task)
    {}

    /// The task is going. Waits for calls of other threads that are under way.
    void clear()
    {
        std::unique_lock lock(m_mutex);
        m_task = nullptr;
        m_unused.wait(lock, [this] { return m_visits == 0; });
    }

    /// Calls @p function with the task in the caller's thread. The task stays while the call lasts, but
    /// no lock is held. Does nothing when the task is gone.
    template <typename F>
    void visit(F function)
    {
        Task* task = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            task = m_task;
            m_visits += task ? 1 : 0;
        }
        if (task) {
            function(task);
            const std::lock_guard lock(m_mutex);
            --m_visits;
            m_unused.notify_all();
        }
    }

    /// Calls @p function with the task in the task's thread: now when that is this thread, else from its
    /// event loop. Does nothing when the task is gone.
    template <typename F>
    void call(F function)
    {
        Task* task = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            task = m_task;
            if (!task) {
                return;
            }
            if (task->thread() != QThread::currentThread()) {
                post(task, [task, f = std::move(function)]() mutable { f(task); });
                return;
            }
        }
        function(task); // only this thread can destroy it
    }

private:
    std::mutex m_mutex; // guards m_task, and its life while a call is posted
    Task* m_task;
    int m_visits = 0; // guarded by m_mutex too
    std::condition_variable m_unused;
};

} // namespace veltor::concurrent
