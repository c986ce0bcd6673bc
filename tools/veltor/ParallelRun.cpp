#include "ParallelRun.h"

#include "Command.h"

#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <QtCore/QThread>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>

namespace veltor::tool {
namespace {

/// What the tasks of one run have in common.
struct Work
{
    const int count;
    const std::function<void(int)>& call;
    std::atomic<int> next{0};
    std::atomic<int> done{0};
    std::mutex mutex{}; // guards error
    std::exception_ptr error{};
};

/// One worker's part: takes the next number until none is left.
class PartTask : public concurrent::Task
{
public:
    explicit PartTask(Work& work)
        : m_work(work)
    {}

    [[nodiscard]] bool canCancel() const override { return true; }

protected:
    void onStart() override
    {
        try {
            for (int i = m_work.next++; i < m_work.count; i = m_work.next++) {
                progressHandler()->throwIfCanceled();
                m_work.call(i);
                ++m_work.done;
            }
        } catch (...) {
            m_work.next.store(m_work.count);
            const std::lock_guard lock(m_work.mutex);
            if (!m_work.error) {
                m_work.error = std::current_exception();
            }
        }
    }

private:
    Work& m_work;
};

} // namespace

bool runParallel(int count, const std::function<void(int)>& work, const std::function<void(int)>& progress)
{
    const InterruptWatch watch;
    Work shared{count, work};
    {
        const int threads = std::clamp(QThread::idealThreadCount(), 1, std::max(count, 1));
        concurrent::TaskThreadPool pool(threads); // cancels its tasks and waits for them at the end
        for (int i = 0; i < threads; ++i) {
            pool.start(new PartTask(shared));
        }
        while (!pool.waitForAllTasks(100) && !InterruptWatch::interrupted()) {
            progress(shared.done.load());
        }
    }
    if (InterruptWatch::interrupted() && shared.done.load() < count) {
        return false;
    }
    if (shared.error) {
        std::rethrow_exception(shared.error);
    }
    progress(count);
    return true;
}

} // namespace veltor::tool
