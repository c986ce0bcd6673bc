// How short tasks reach a pool's workers without a change of threads for each.

#include "PoolCore.h"
#include "TaskCore.h"

#include <utility>

namespace veltor::concurrent {
namespace {

constexpr int manyQuick = 16;
constexpr std::size_t manyQueued = 128;
constexpr std::size_t fewStaged = 24;
constexpr std::size_t atOnce = 64;
constexpr int watchMs = 1;

} // namespace

/// Only its own thread moves a task to another. From the service thread each way costs two changes of threads: more
/// than a short task. While short tasks follow one another and many wait, the first of them are therefore let go to
/// no thread, where the worker that is free next takes them by itself. A task is there for about a millisecond:
/// watch() takes it back when no worker comes for it, and onPosted() at once when it is asked to cancel.
void PoolCore::askToStage()
{
    if (m_quick >= manyQuick && !m_staging && m_staged < fewStaged && m_queue.inLine() >= manyQueued) {
        m_staging = true;
        m_service->call([this] { stage(); });
    }
}

void PoolCore::stage()
{
    std::vector<JobPtr> jobs;
    {
        const std::lock_guard lock(m_mutex);
        if (m_life == Life::Open && !m_paused) {
            jobs = m_queue.beginStaging(PoolJob::Stage::Queued, atOnce);
        }
    }
    moveStaging(jobs, nullptr, PoolJob::Stage::Staged);
    const std::lock_guard lock(m_mutex);
    m_staging = false;
    if (m_staged > 0 && !std::exchange(m_watching, true)) {
        watchAgain();
    }
}

void PoolCore::watchAgain()
{
    m_service->callLater(watchMs, [this, taken = m_taken] { watch(taken); });
}

/// @p takenBefore is how many tasks the workers had taken at the last look.
void PoolCore::watch(std::size_t takenBefore)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_staged > 0 && m_taken != takenBefore) {
            watchAgain();
            return;
        }
        m_watching = false;
    }
    recall();
}

void PoolCore::recall()
{
    std::vector<JobPtr> jobs;
    {
        const std::lock_guard lock(m_mutex);
        jobs = m_queue.beginStaging(PoolJob::Stage::Staged, std::exchange(m_staged, 0));
        m_quick = jobs.empty() ? m_quick : 0;
    }
    moveStaging(jobs, m_service, PoolJob::Stage::Queued);
}

/// In the service thread: @p jobs were begun to be staged.
void PoolCore::moveStaging(const std::vector<JobPtr>& jobs, QThread* to, PoolJob::Stage then)
{
    for (const JobPtr& job : jobs) {
        if (job->task) { // one that was withdrawn meanwhile is settled in this thread later
            static_cast<void>(moveTask(*job->task, to));
        }
    }
    const std::lock_guard lock(m_mutex);
    for (const JobPtr& job : jobs) {
        if (job->stage == PoolJob::Stage::Staging) {
            job->stage = then;
            m_staged += then == PoolJob::Stage::Staged ? 1 : 0;
        }
    }
    for (int turns = std::exchange(m_missed, 0); turns > 0; --turns) {
        static_cast<void>(dispatchOne());
    }
}

void PoolCore::onPosted(const PoolJob& job)
{
    const std::lock_guard lock(m_mutex);
    if (job.stage == PoolJob::Stage::Staged || job.stage == PoolJob::Stage::Staging) {
        m_service->call([this] { recall(); });
    }
}

} // namespace veltor::concurrent
