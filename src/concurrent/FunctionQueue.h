#pragma once

#include <veltor/concurrent/ResultCore.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace veltor::concurrent {

/// The functions that wait for the workers of one pool. A few runners, which are tasks of the pool, take them
/// one after another: so a function costs a place in a queue instead of an object that is moved between
/// threads. A runner that has worked for a while goes back behind the tasks that wait.
///
/// While a function waits there is a runner to come. The pool asks its tasks to cancel when it goes, runners
/// among them: then what waits is cancelled, and what runs is asked to be.
class FunctionQueue : public std::enable_shared_from_this<FunctionQueue>
{
public:
    /// The queue of @p pool, made when it has none.
    static std::shared_ptr<FunctionQueue> of(TaskThreadPool* pool);

    explicit FunctionQueue(TaskThreadPool* pool);
    ~FunctionQueue();

    /// Runs @p node when its turn comes; cancels it when the pool has closed.
    void push(const ResultCore::Ptr& node, TaskThreadPool::Priority priority);
    /// In a thread of the pool: runs @p node now, should it still wait, and returns true.
    bool runHere(const ResultCore::Ptr& node);

private:
    class Runner;

    [[nodiscard]] ResultCore::Ptr next();
    void work();
    void runNode(const ResultCore::Ptr& node);
    void startRunner(TaskThreadPool::Priority priority);
    void runnerGone();
    void drop();

    TaskThreadPool* const m_address; // to know it by; it may be gone
    const TaskPoolRef m_pool;
    std::mutex m_mutex; // guards what follows
    std::deque<ResultCore::Ptr> m_nodes;
    std::vector<ResultCore::Ptr> m_running;
    int m_runners = 0; // that will look into the queue
};

} // namespace veltor::concurrent
