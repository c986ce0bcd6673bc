#pragma once

#include "PoolJob.h"
#include "PoolQueue.h"
#include "PoolThread.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace veltor::concurrent {

class TaskThreadPool;

/// The machinery of a pool. Whatever is on its way through an event queue holds a share in it, and none a
/// pointer to the pool.
///
/// Its life is Open, Closing, Stopped, in this order, read and changed under the mutex, which guards
/// everything here but constants. enter() and hand() pass the gate: they find it Open and count themselves in
/// `m_passing`, and close() waits for those before a thread is asked to end.
///
///     life                   service thread   workers          a task given to start()
///     Open                   runs             run              is moved, then run or queued
///     Closing, m_passing > 0 runs             run              is refused: it ends as cancelled
///     Closing                runs             end one by one   the same
///     Closing, then          ends             are joined       the same
///     Stopped                is joined        are joined       the same
///
/// Each thread deletes the tasks that live in it before it ends. Where that is:
///
///     stage      the task lives in
///     Arriving   its former thread: the caller's, or one whose event loop will hand it over
///     Queued     the service thread, which delivers its events
///     Staged     none, for a moment: see PoolStaging.cpp
///     Handed     the service thread, then the worker
///     Running    the worker (a service task, and one that only waits for others: the service thread)
///     Ended      the same, until its last call is over; deleted there. When its thread ends before that
///                call, which is another thread's, it lives in none, and that call deletes it
class PoolCore : public std::enable_shared_from_this<PoolCore>
{
public:
    PoolCore(TaskThreadPool* ofPool, QString name);
    ~PoolCore();

    /// Starts the service thread.
    void open();
    /// Ends everything; see TaskThreadPool::~TaskThreadPool(). Again, it does nothing.
    void close();

    /// False when the pool is closed and the task stays the caller's.
    bool start(Task* task, PoolJob::Terms terms);

    void addThread();
    bool removeThread();
    [[nodiscard]] int threadCount() const;
    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] bool isOpen() const;
    void setLimit(const QString& resource, int limit);
    void cancelAll();
    [[nodiscard]] bool allDone() const;
    bool waitForAll(unsigned long ms);
    void finished(const Task* task);

    [[nodiscard]] PoolThread* serviceThread() const { return m_service; }
    TaskThreadPool* const facade;

    // What jobs and threads report.
    void onEnd(const JobPtr& job);
    void onReleased(const JobPtr& job);
    void onDestroyed(PoolJob& job);
    void onPosted(const PoolJob& job);
    [[nodiscard]] bool withdraw(const JobPtr& job);
    void atEndOf(PoolThread& thread);

private:
    class Arrival;
    class Bin;
    enum class Life : quint8
    {
        Open,
        Closing,
        Stopped,
    };
    enum class Turn : quint8
    {
        None,
        Dropped,
        Here, // the worker takes it by itself
        Next, // the service thread hands it over
    };

    // In the task's thread.
    [[nodiscard]] bool enter(const JobPtr& job);
    [[nodiscard]] bool pass(const JobPtr& job);
    void undo(const JobPtr& job);
    void admit(const JobPtr& job);
    void throwAway(const JobPtr& job);
    void retire(const JobPtr& job);
    void dispose(const JobPtr& job);
    static void emptyBin(Bin* bin);

    // In a worker.
    void serve(PoolThread& worker, JobPtr job);
    [[nodiscard]] bool runOne(const JobPtr& job);
    [[nodiscard]] JobPtr following(PoolThread& worker, const JobPtr& ended, bool wasQuick);
    void afterEnd(PoolThread& worker, const JobPtr& job);

    // In the service thread.
    void feed();
    void hand(const JobPtr& job);
    void serveService(const JobPtr& job);
    void endService(const JobPtr& job);
    void settle();
    void stage();
    void recall();
    void watch(std::size_t takenBefore);
    void moveStaging(const std::vector<JobPtr>& jobs, QThread* to, PoolJob::Stage then);
    void reap(PoolThread* worker);

    // Under the mutex.
    [[nodiscard]] bool idle() const;
    void wakeIfIdle();
    [[nodiscard]] Turn nextTurn(PoolThread& worker);
    Turn dispatchOne();
    void setAside(const JobPtr& job);
    [[nodiscard]] bool unqueue(PoolJob& job);
    void beginService(const JobPtr& job);
    void askToStage();
    void watchAgain();
    void passed();
    [[nodiscard]] std::vector<JobPtr> lastOf(PoolThread& thread);

    mutable std::mutex m_mutex;
    Life m_life = Life::Open;
    int m_passing = 0;                 // calls between the gate and their end
    int m_entering = 0;                // of these, with a task to be queued
    std::set<JobPtr> m_arriving;       // through other threads
    std::condition_variable m_changed; // m_passing, m_idleCount

    const QString m_name;
    PoolThread* m_service = nullptr;
    std::vector<PoolThread*> m_workers; // all that are not deleted, removed ones included
    std::vector<PoolThread*> m_idle;
    std::size_t m_threadCount = 0;
    int m_lastNumber = 0;
    unsigned m_idleCount = 0; // how often the pool became idle

    PoolQueue m_queue;
    bool m_paused = false;
    std::deque<JobPtr> m_requests; // handed over by feed()
    bool m_feeding = false;
    int m_quick = 0; // tasks in a row that were short
    std::size_t m_staged = 0;
    std::size_t m_taken = 0; // of the staged ones, so far
    int m_missed = 0;        // turns that found the queue held up
    bool m_staging = false;
    bool m_watching = false;
    std::vector<JobPtr> m_aside; // to be ended and deleted by settle()
    std::size_t m_unsettled = 0;
    std::set<JobPtr> m_services; // tasks that run in the service thread
    std::size_t m_waiting = 0;   // of these, the ones that wait for others
    std::map<const QThread*, Bin*> m_bins;
};

} // namespace veltor::concurrent
