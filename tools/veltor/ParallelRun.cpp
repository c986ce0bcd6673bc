#include "ParallelRun.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace veltor::tool {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

/// The first interrupt asks for a clean end, a second one kills the process.
extern "C" void onInterrupt(int signal)
{
    interrupted.store(true);
    std::signal(signal, SIG_DFL);
}

class InterruptScope
{
public:
    InterruptScope()
        : m_former(std::signal(SIGINT, &onInterrupt))
    {
        interrupted.store(false);
    }
    ~InterruptScope() { std::signal(SIGINT, m_former); }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

private:
    void (*m_former)(int);
};

class Run
{
public:
    Run(int count, const std::function<void(int)>& work)
        : m_count(count)
        , m_work(work)
        , m_running(std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, std::max(count, 1)))
    {
        for (int i = m_running; i > 0; --i) {
            m_threads.emplace_back([this] { loop(); });
        }
    }

    ~Run()
    {
        m_stop.store(true);
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// True when all threads have ended.
    bool wait(std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_mutex);
        return m_ended.wait_for(lock, limit, [this] { return m_running == 0; });
    }

    void rethrow()
    {
        const std::lock_guard lock(m_mutex);
        if (m_error) {
            std::rethrow_exception(m_error);
        }
    }

    [[nodiscard]] int done() const { return m_done.load(); }

private:
    void loop()
    {
        try {
            for (int i = m_next++; i < m_count && !m_stop.load() && !interrupted.load(); i = m_next++) {
                m_work(i);
                ++m_done;
            }
        } catch (...) {
            m_stop.store(true);
            const std::lock_guard lock(m_mutex);
            m_error = std::current_exception();
        }
        const std::lock_guard lock(m_mutex);
        --m_running;
        m_ended.notify_one();
    }

    const int m_count;
    const std::function<void(int)>& m_work;
    std::atomic<int> m_next{0};
    std::atomic<int> m_done{0};
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex; // guards m_running and m_error
    std::condition_variable m_ended;
    int m_running;
    std::exception_ptr m_error;
    std::vector<std::thread> m_threads;
};

} // namespace

bool runParallel(int count, const std::function<void(int)>& work, const std::function<void(int)>& progress)
{
    const InterruptScope scope;
    Run run(count, work);
    while (!run.wait(std::chrono::milliseconds(100))) {
        progress(run.done());
    }
    run.rethrow();
    progress(run.done());
    return run.done() == count;
}

} // namespace veltor::tool
