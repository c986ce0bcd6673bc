#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/ProgressHandler.h>

#include <QtCore/QObject>
#include <QtCore/QString>

#include <climits>
#include <memory>

namespace veltor::concurrent {

class PoolCore;
class Task;

/// Runs tasks on a set of threads that it owns. A task object is moved into its worker and started there by a
/// queued call, so its slots and events live in that thread. Tasks that find no idle worker wait in a queue,
/// and live meanwhile in the pool's service thread, which delivers their events, cancel() among them.
///
/// Ownership: the pool owns every task from the call of start() or startService() on, and deletes it in its
/// own thread when its finished() has been emitted and the last call of another thread is done with it; so it
/// does with a task that it drops. The caller keeps the task's progress handler instead of the task.
///
/// A task that has ended before its turn, as one whose onCancelRequested() enters the cancelled state, is
/// dropped. A request alone ends nothing: a queued task whose cancellation was asked for is started when its
/// turn comes, and finds the request at its first throwIfCanceled(). cancel() and cancelAll() take tasks out
/// of the queue at once instead.
///
/// Destruction, on any thread: asks all tasks to cancel, waits for the work in progress, then deletes every
/// task that is left, queued, waiting or paused, which enters the cancelled state thereby. Only the task that
/// destroys its own pool, or ends the process, is not waited for. A task that never looks at its requests is
/// waited for. One that start() is given meanwhile, by a running task or another thread, ends as cancelled
/// and is deleted.
///
/// Threads: all functions are thread-safe; the pool is not to be destroyed while another thread calls one,
/// but the tasks of the pool may.
///
/// Events, and so tasks, need a QCoreApplication; without one the pool starts and ends cleanly. A process
/// that was forked has the pool without its threads: there nothing runs, and nothing is waited for at its
/// end.
class VELTOR_UTILS_EXPORT TaskThreadPool : public QObject
{
    Q_OBJECT

public:
    /// Where a task joins the queue: High in front, everything else at the back.
    enum Priority : quint8
    {
        Normal = 0, ///< after those that wait
        High = 1,   ///< before those that wait, the last come first
    };

    /// @param threads  number of workers; none when below 1, tasks then wait for addThread()
    /// @param parent   destroys the pool with itself. It does not become QObject::parent(): the pool lives
    ///                 in its service thread, and a child lives where its parent does.
    explicit TaskThreadPool(int threads, QObject* parent = nullptr);
    /// The same, with names for its threads.
    /// @param threads  number of workers
    /// @param name     in debuggers and process lists: "name-1" and so on, "name-service"
    /// @param parent   as above
    TaskThreadPool(int threads, const QString& name, QObject* parent = nullptr);
    /// One worker for each processor core.
    explicit TaskThreadPool(QObject* parent = nullptr);
    ~TaskThreadPool() override;

    /// A new pool, which the caller owns, together with @p parent when there is one. Without a number of
    /// @p threads it has a worker for each processor core.
    /// @{
    [[nodiscard]] static TaskThreadPool* makeInstance(int threads, QObject* parent);
    [[nodiscard]] static TaskThreadPool* makeInstance(QObject* parent);
    /// @}
    /// The pool of the process, with a worker for each core: made on first use, destroyed at exit. On
    /// Windows, where other threads do not live until then, its tasks are ended with the application object
    /// instead.
    [[nodiscard]] static TaskThreadPool* globalInstance();
    /// The pool whose worker, or service thread, calls; null in other threads.
    [[nodiscard]] static TaskThreadPool* current();

    /// Runs @p task on a worker, now or when its turn comes. A task that lives in another thread than the
    /// caller's is handed over by that thread's event loop.
    /// A group with a pool only waits for its parts: its turn comes as any task's, but it takes no worker.
    /// @param task      not null, without a parent, not started or handed over before
    /// @param priority  where it joins the queue
    /// @param resource  what it needs for itself, such as "disk": of the tasks that name the same, one runs
    ///                  at a time, or as many as setResourceLimit() says, and those behind them in the queue
    ///                  go first. An empty name is no resource.
    /// @throws err::NullArgument when @p task is null
    /// @throws err::UnsupportedOperation when it has a parent, belongs to no thread, or was handed over
    ///         before; it stays the caller's. What its moveTaskToThread() throws is passed on likewise.
    void start(Task* task, Priority priority = Normal, const QString& resource = {});
    /// Runs @p task in the pool's own thread, one service task after another. Workers, and
    /// waitForAllTasks(), do not count it, unless it is a group with a pool.
    /// @throws as start()
    void startService(Task* task);

    /// One more worker; it takes a queued task.
    void addThread();
    /// Ends one idle worker.
    /// @return false, with nothing done, when no worker is idle
    bool removeThread();
    /// The workers, idle ones included.
    [[nodiscard]] int threadCount() const;

    /// From now on tasks that are given to start() wait in the queue; those that run go on.
    void pauseStarts();
    /// The workers take what waits.
    void resumeStarts();
    /// Whether pauseStarts() holds.
    [[nodiscard]] bool startsPaused() const;

    /// How many tasks that name @p resource run at once, 1 at first. More of them than a lower limit allows
    /// go on.
    /// @throws err::UnexpectedValue when @p limit is below 1 or @p resource is empty
    void setResourceLimit(const QString& resource, int limit);

    /// Takes the task of @p handler out of the queue: it is asked to cancel and ends as cancelled, at once
    /// and without a turn. Any other is asked to cancel.
    /// @return whether it waited for its turn
    bool cancel(const ProgressHandlerPtr& handler);
    /// The same for all tasks that the pool has, service tasks too.
    void cancelAll();

    /// True when nothing is queued or on its way to the queue, and all workers are idle.
    [[nodiscard]] bool allTasksDone() const;
    /// True at once when allTasksDone(); else waits until the pool becomes idle, or for @p ms milliseconds;
    /// ULONG_MAX is for ever. In a thread of this pool, whose waiting would keep it busy, it does not wait.
    /// @return whether the pool was idle at some moment of the wait
    bool waitForAllTasks(unsigned long ms = ULONG_MAX);

public Q_SLOTS:
    /// The pool's own: frees the worker of a task that has ended; nothing when it was freed before.
    void onWorkerFinished(veltor::concurrent::Task* task);

private:
    friend class TaskPoolRef;

    const std::shared_ptr<PoolCore> m_core;
};

/// A weak hold on a pool, for whoever may outlive it. A cheap value to copy; all functions are thread-safe.
class VELTOR_UTILS_EXPORT TaskPoolRef
{
public:
    /// Refers to no pool: closed.
    TaskPoolRef() = default;
    /// Refers to @p pool, which lives.
    explicit TaskPoolRef(const TaskThreadPool& pool);

    /// Whether the pool takes tasks; it may close any moment.
    [[nodiscard]] bool isOpen() const;
    /// TaskThreadPool::start().
    /// @return false when the pool is closed: the task then stays the caller's. One that lives in another
    ///         thread than the caller's is the pool's when it is open now.
    bool start(Task* task, TaskThreadPool::Priority priority = TaskThreadPool::Normal,
               const QString& resource = {}) const;

private:
    std::shared_ptr<PoolCore> m_core;
};

} // namespace veltor::concurrent
