#pragma once

#include <veltor/Export.h>

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtCore/QVector>

#include <climits>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace veltor::concurrent {

class Task;
class TaskProgressHandler;

/// Runs tasks on a fixed set of threads that it owns. A task object is moved into its worker and started
/// there by a queued call, so its slots and events live in that thread. Tasks that find no idle worker
/// wait in a queue, parked in the pool's service thread without any event. While hundreds wait, the next
/// ones belong to no thread for a short time, so that a worker can take them by itself: events for them,
/// cancel() among them, are delivered when their turn comes.
///
/// Ownership: the pool owns every task from the call of start() or startService() on, and deletes it in its
/// own thread after its finished() was delivered to the pool; so it does with a task that it drops. The
/// caller keeps the task's progress handler instead of the task.
///
/// A task that has ended before its turn, as one whose onCancelRequested() enters the cancelled state, is
/// dropped. A request alone ends nothing: a queued task whose cancellation was asked for is started when its
/// turn comes, and finds the request at its first throwIfCanceled().
///
/// Destruction, on any thread that runs none of the pool's tasks: asks all tasks to cancel, waits for the
/// work in progress, then deletes every task that is left, queued, waiting or paused, which enters the
/// cancelled state thereby. A task that never looks at its requests is waited for.
///
/// Events, and so tasks, need a QCoreApplication; without one the pool starts and ends cleanly.
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

    /// Runs @p task on a worker, now or when its turn comes. Thread-safe; a task that lives in another
    /// thread than the caller's is handed over by that thread's event loop.
    /// @throws err::NullArgument when @p task is null
    void start(Task* task, Priority priority = Normal);
    /// Runs @p task in the pool's own thread, one service task after another. Workers, and
    /// waitForAllTasks(), do not count it.
    /// @throws err::NullArgument when @p task is null
    void startService(Task* task);

    /// One more worker; it takes a queued task. Thread-safe.
    void addThread();
    /// Ends one idle worker. Thread-safe.
    /// @return false, with nothing done, when no worker is idle
    bool removeThread();

    /// True when nothing is queued and all workers are idle. Thread-safe.
    [[nodiscard]] bool allTasksDone() const;
    /// True at once when allTasksDone(); else waits until the pool becomes idle, or for @p ms milliseconds;
    /// ULONG_MAX is for ever. Thread-safe, but not for tasks of this pool.
    /// @return whether the pool was idle at some moment of the wait
    bool waitForAllTasks(unsigned long ms = ULONG_MAX);

public Q_SLOTS:
    /// The pool's own, called in its thread: takes the worker back, deletes the task, starts the next.
    void onWorkerFinished(veltor::concurrent::Task* task);

private:
    using HandlerPtr = std::shared_ptr<TaskProgressHandler>;
    struct Run
    {
        quint64 id;
        QThread* worker; // null for a service task
        HandlerPtr handler;
    };
    struct Launch
    {
        Task* task = nullptr;
        Run run{};
    };

    bool handOver(Task* task, void (TaskThreadPool::*startHere)(Task*, Priority), Priority priority);
    void start_internal(Task* task, Priority priority);
    void startService_internal(Task* task, Priority priority);
    [[nodiscard]] Launch reserve(Task* task, QThread* worker);
    void launch(const Launch& launch, Task* former);
    void run(const Launch& launch, Task* former);
    [[nodiscard]] bool serveNext(const Launch& ended);
    void stage();
    [[nodiscard]] Task* takeQueued();
    void onFinished(Task* task, quint64 id);
    void dispatchNext(QThread* freed, Task* former);
    void forgetDeleted();
    void drop(Task* task);
    void onThreadFinished(QThread* worker);
    [[nodiscard]] bool idle() const;
    void wakeIfIdle();
    void cancelAll();
    void stopThreads();

    QList<Task*> m_queue;
    QVector<QThread*> m_idleThreads;
    int m_threadCount = 0;
    QThread* m_serviceThread;
    int m_requestedThreads;
    mutable std::mutex m_mutex; // guards all but the two above
    std::condition_variable m_allDone;

    unsigned m_idleCount = 0; // how often the pool became idle
    quint64 m_lastRun = 0;
    std::unordered_map<Task*, Run> m_runs; // started and not yet taken back
    std::vector<QPointer<Task>> m_retired; // to be deleted by their threads
    QVector<QThread*> m_workers;           // all that are not deleted, removed ones included
    bool m_closing = false;

    std::deque<Task*> m_staged; // the first of the queue, in no thread, but behind m_ahead of m_queue
    int m_ahead = 0;
    bool m_staging = false; // tasks are between m_queue and m_staged
};

} // namespace veltor::concurrent
