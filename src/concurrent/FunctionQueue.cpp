// The runners that take functions out of a pool's queue, and the task that keeps the queue.

#include "FunctionQueue.h"

#include <veltor/concurrent/Task.h>

#include <QtCore/QElapsedTimer>

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace veltor::concurrent {
namespace {

/// More runners than a pool has workers find the queue empty and end.
constexpr int mostRunners = 64;
/// Long beside what the change of a runner costs, short beside what a waiting task minds.
constexpr qint64 turnMs = 10;

/// Tells at once, in the asking thread, of the pool's request to cancel.
class WatchedHandler : public TaskProgressHandler
{
public:
    WatchedHandler(Task* task, std::function<void()> canceled)
        : TaskProgressHandler(task)
        , m_canceled(std::move(canceled))
    {}
    void cancel() override
    {
        m_canceled();
        TaskProgressHandler::cancel();
    }

private:
    const std::function<void()> m_canceled;
};

/// The queues of all pools that have one. Never destroyed: pools may be, after everything else.
struct Registry
{
    std::mutex mutex; // guards queues
    std::map<TaskThreadPool*, std::weak_ptr<FunctionQueue>> queues;
};

Registry& registry()
{
    static Registry& all = *new Registry;
    return all;
}

} // namespace

/// Takes functions until there are none, or until its turn is over.
class FunctionQueue::Runner : public Task
{
public:
    explicit Runner(std::shared_ptr<FunctionQueue> queue)
        : m_queue(std::move(queue))
        , m_current(std::make_shared<Current>())
    {
        // Nobody has its handler but the pool, which cancels all or nothing.
        const auto cancelAll = [weak = std::weak_ptr<FunctionQueue>(m_queue), current = m_current] {
            if (const auto kept = weak.lock()) {
                kept->close();
            }
            current->cancel();
        };
        setProgressHandler({new WatchedHandler(this, cancelAll), &releaseHandler});
    }
    ~Runner() override
    {
        if (!m_ran) {
            m_queue->runnerGone();
        }
    }

    /// The runner of the calling thread; null elsewhere.
    static Runner*& here() noexcept
    {
        thread_local Runner* runner = nullptr;
        return runner;
    }
    [[nodiscard]] const FunctionQueue* queue() const noexcept { return m_queue.get(); }

    void runOne(const ResultCore::Ptr& node)
    {
        m_current->push(node);
        node->run();
        m_current->pop();
    }

protected:
    void onStart() override
    {
        m_ran = true;
        Runner* const outer = std::exchange(here(), this);
        m_queue->work(*this);
        here() = outer;
    }

private:
    /// The functions that run, one within a wait of another, as other threads see them.
    class Current
    {
    public:
        void push(const ResultCore::Ptr& node)
        {
            const std::lock_guard lock(m_mutex);
            m_nodes.push_back(node);
        }
        void pop()
        {
            const std::lock_guard lock(m_mutex);
            m_nodes.pop_back(); // the runner has a share of its own
        }
        void cancel()
        {
            std::vector<ResultCore::Ptr> nodes;
            {
                const std::lock_guard lock(m_mutex);
                nodes = m_nodes;
            }
            for (const ResultCore::Ptr& node : nodes) {
                node->cancel();
            }
        }

    private:
        std::mutex m_mutex; // guards m_nodes
        std::vector<ResultCore::Ptr> m_nodes;
    };

    const std::shared_ptr<FunctionQueue> m_queue;
    const std::shared_ptr<Current> m_current;
    bool m_ran = false;
};

/// Holds the queue as long as the pool exists.
class FunctionQueue::Keeper : public Task
{
public:
    explicit Keeper(std::shared_ptr<FunctionQueue> queue)
        : m_queue(std::move(queue))
    {
        setProgressHandler({new WatchedHandler(this,
                                               [weak = std::weak_ptr<FunctionQueue>(m_queue)] {
                                                   if (const auto kept = weak.lock()) {
                                                       kept->close();
                                                   }
                                               }),
                            &releaseHandler});
    }
    ~Keeper() override { m_queue->close(); }

protected:
    void onStart() override
    {
        if (cancelRequested()) {
            enterCancelledState();
        } else {
            enterWaitingState();
        }
    }
    void onCancelRequested() override
    {
        m_queue->close();
        Task::onCancelRequested();
        enterCancelledState();
    }

private:
    const std::shared_ptr<FunctionQueue> m_queue;
};

std::shared_ptr<FunctionQueue> FunctionQueue::of(TaskThreadPool* pool)
{
    std::shared_ptr<FunctionQueue> made;
    {
        Registry& all = registry();
        const std::lock_guard lock(all.mutex);
        std::weak_ptr<FunctionQueue>& known = all.queues[pool];
        if (std::shared_ptr<FunctionQueue> queue = known.lock()) {
            return queue;
        }
        made = std::make_shared<FunctionQueue>(pool);
        known = made;
    }
    pool->startService(new Keeper(made)); // one that is refused closes the queue
    return made;
}

bool FunctionQueue::runHere(const ResultCore::Ptr& node)
{
    Runner* const runner = Runner::here();
    if (!runner || runner->queue() != this) {
        return false;
    }
    runner->runOne(node);
    return true;
}

FunctionQueue::FunctionQueue(TaskThreadPool* pool)
    : m_pool(pool)
{}

FunctionQueue::~FunctionQueue() = default;

void FunctionQueue::push(ResultCore::Ptr node, TaskThreadPool::Priority priority)
{
    bool closed = false;
    bool runnerNeeded = false;
    {
        const std::lock_guard lock(m_mutex);
        closed = m_closed;
        if (!closed && priority == TaskThreadPool::High) {
            m_nodes.push_front(node);
            runnerNeeded = true; // the others may wait behind tasks
        } else if (!closed) {
            m_nodes.push_back(node);
            runnerNeeded = m_runners < mostRunners;
        }
        m_runners += runnerNeeded ? 1 : 0;
    }
    if (closed) {
        node->abandon();
    } else if (runnerNeeded && !startRunner(priority)) {
        runnerGone(); // closed meanwhile: close() sees to the node
    }
}

bool FunctionQueue::startRunner(TaskThreadPool::Priority priority)
{
    const std::lock_guard lock(m_poolMutex);
    if (m_pool) {
        m_pool->start(new Runner(shared_from_this()), priority);
    }
    return m_pool != nullptr;
}

void FunctionQueue::runnerGone()
{
    const std::lock_guard lock(m_mutex);
    --m_runners;
}

/// The next function, or the end of a runner.
ResultCore::Ptr FunctionQueue::next()
{
    const std::lock_guard lock(m_mutex);
    if (m_nodes.empty()) {
        --m_runners;
        return nullptr;
    }
    ResultCore::Ptr node = std::move(m_nodes.front());
    m_nodes.pop_front();
    return node;
}

void FunctionQueue::work(Runner& runner)
{
    QElapsedTimer turn;
    turn.start();
    while (const ResultCore::Ptr node = next()) {
        runner.runOne(node);
        if (turn.elapsed() > turnMs) {
            // Another runner takes this one's place, before the pool can see it leave.
            if (!startRunner(TaskThreadPool::Normal)) {
                runnerGone();
            }
            return;
        }
    }
}

void FunctionQueue::close()
{
    TaskThreadPool* pool = nullptr;
    {
        const std::lock_guard lock(m_poolMutex);
        pool = std::exchange(m_pool, nullptr);
    }
    if (pool) {
        Registry& all = registry();
        const std::lock_guard lock(all.mutex);
        const auto known = all.queues.find(pool);
        if (known != all.queues.end() && known->second.lock().get() == this) {
            all.queues.erase(known);
        }
    }
    std::deque<ResultCore::Ptr> nodes;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        nodes.swap(m_nodes);
    }
    for (const ResultCore::Ptr& node : nodes) {
        node->abandon();
    }
}

} // namespace veltor::concurrent
