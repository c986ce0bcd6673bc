#pragma once

#include <veltor/concurrent/ResultCore.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <deque>
#include <memory>
#include <mutex>

namespace veltor::concurrent {

/// The functions that wait for the workers of one pool. A few runners, which are tasks of the pool, take them
/// one after another: so a function costs a place in a queue instead of an object that is moved between
/// threads. A runner that has worked for a while goes back behind the tasks that wait.
///
/// The queue is kept by a service task of its pool. That is asked to cancel when the pool goes, before
/// anything else is: then the queue closes, and what waits in it is cancelled.
class FunctionQueue : public std::enable_shared_from_this<FunctionQueue>
{
public:
    /// The queue of @p pool, made when it has none.
    static std::shared_ptr<FunctionQueue> of(TaskThreadPool* pool);
    /// In a runner of this queue: runs @p node now, should it still wait, and returns true.
    bool runHere(const ResultCore::Ptr& node);

    explicit FunctionQueue(TaskThreadPool* pool);
    ~FunctionQueue();

    /// Runs @p node when its turn comes; cancels it when the queue is closed.
    void push(ResultCore::Ptr node, TaskThreadPool::Priority priority);
    /// The pool is not touched after this returned.
    void close();

private:
    class Runner;
    class Keeper;

    void work(Runner& runner);
    ResultCore::Ptr next();
    bool startRunner(TaskThreadPool::Priority priority);
    void runnerGone();

    std::mutex m_poolMutex; // guards m_pool, and its life while a runner is started
    TaskThreadPool* m_pool;
    std::mutex m_mutex; // guards what follows
    std::deque<ResultCore::Ptr> m_nodes;
    int m_runners = 0; // that will look into the queue
    bool m_closed = false;
};

} // namespace veltor::concurrent
