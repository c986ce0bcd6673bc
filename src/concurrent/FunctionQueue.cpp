// The functions that wait for a pool's workers, and the runners that take them.

#include "FunctionQueue.h"

#include <veltor/concurrent/Task.h>

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <map>
#include <utility>

namespace veltor::concurrent {
namespace {

/// More runners than a pool has workers find the queue empty and end.
constexpr int mostRunners = 64;
/// Long beside what the change of a runner costs, short beside what a waiting task minds.
constexpr qint64 turnMs = 10;

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
    {
        setProgressHandler({new Handler(this, m_queue), &releaseHandler});
    }
    ~Runner() override
    {
        if (!m_ran) {
            m_queue->runnerGone();
        }
    }

protected:
    void onStart() override
    {
        m_ran = true;
        m_queue->work();
    }

private:
    /// Nobody has it but the pool, which cancels when it goes, or everything.
    class Handler : public TaskProgressHandler
    {
    public:
        Handler(Task* task, const std::shared_ptr<FunctionQueue>& queue)
            : TaskProgressHandler(task)
            , m_queue(queue)
        {}
        void cancel() override
        {
            if (const std::shared_ptr<FunctionQueue> queue = m_queue.lock()) {
                queue->drop();
            }
            TaskProgressHandler::cancel();
        }

    private:
        const std::weak_ptr<FunctionQueue> m_queue;
    };

    const std::shared_ptr<FunctionQueue> m_queue;
    bool m_ran = false;
};

std::shared_ptr<FunctionQueue> FunctionQueue::of(TaskThreadPool* pool)
{
    std::shared_ptr<FunctionQueue> former; // destroyed after the lock, which its destructor takes too
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    std::weak_ptr<FunctionQueue>& known = all.queues[pool];
    former = known.lock();
    if (former && former->m_pool.isOpen()) { // not of another pool that was at this address
        return former;
    }
    auto made = std::make_shared<FunctionQueue>(pool);
    known = made;
    return made;
}

FunctionQueue::FunctionQueue(TaskThreadPool* pool)
    : m_address(pool)
    , m_pool(*pool)
{}

FunctionQueue::~FunctionQueue()
{
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto known = all.queues.find(m_address);
    if (known != all.queues.end() && known->second.expired()) {
        all.queues.erase(known);
    }
}

void FunctionQueue::push(const ResultCore::Ptr& node, TaskThreadPool::Priority priority)
{
    bool runnerNeeded = true;
    {
        const std::lock_guard lock(m_mutex);
        if (priority == TaskThreadPool::High) {
            m_nodes.push_front(node); // a runner of its own: the others may wait behind tasks
        } else {
            m_nodes.push_back(node);
            runnerNeeded = m_runners < mostRunners;
        }
        m_runners += runnerNeeded ? 1 : 0;
    }
    if (runnerNeeded) {
        startRunner(priority);
    }
}

/// One that was counted already.
void FunctionQueue::startRunner(TaskThreadPool::Priority priority)
{
    auto runner = std::make_unique<Runner>(shared_from_this());
    if (m_pool.start(runner.get(), priority)) {
        static_cast<void>(runner.release());
    } // else the pool has closed, and the runner's end is that of all that waits
}

/// A runner that will not run: the pool has closed, or was told to cancel everything.
void FunctionQueue::runnerGone()
{
    {
        const std::lock_guard lock(m_mutex);
        --m_runners;
    }
    drop();
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
    m_running.push_back(node);
    return node;
}

void FunctionQueue::work()
{
    QElapsedTimer turn;
    turn.start();
    while (const ResultCore::Ptr node = next()) {
        runNode(node);
        const TaskThreadPool* const pool = TaskThreadPool::current();
        if (turn.elapsed() > turnMs || (pool && pool->startsPaused())) {
            // Another runner takes this one's place, before the pool can see it leave.
            startRunner(TaskThreadPool::Normal);
            return;
        }
    }
}

/// One of m_running.
void FunctionQueue::runNode(const ResultCore::Ptr& node)
{
    if (!m_pool.isOpen()) { // it was taken while the others were dropped
        node->cancel();
    }
    node->run();
    const std::lock_guard lock(m_mutex);
    m_running.erase(std::find(m_running.begin(), m_running.end(), node));
}

bool FunctionQueue::runHere(const ResultCore::Ptr& node)
{
    if (TaskThreadPool::current() != m_address) {
        return false;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_running.push_back(node);
    }
    runNode(node);
    return true;
}

void FunctionQueue::drop()
{
    std::deque<ResultCore::Ptr> nodes;
    std::vector<ResultCore::Ptr> running;
    {
        const std::lock_guard lock(m_mutex);
        nodes.swap(m_nodes);
        running = m_running;
    }
    for (const ResultCore::Ptr& node : nodes) {
        node->abandon();
    }
    for (const ResultCore::Ptr& node : running) {
        node->cancel();
    }
}

} // namespace veltor::concurrent
