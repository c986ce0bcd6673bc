// A pool's work: workers that run tasks, the service thread that hands them over, and how tasks are deleted.

#include "PoolCore.h"
#include "TaskCore.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QThread>

#include <algorithm>
#include <chrono>
#include <utility>

namespace veltor::concurrent {
namespace {

/// How many tasks a thread serves before it returns to its event loop.
constexpr int atATime = 64;
/// A task that is worth staging().
constexpr std::chrono::microseconds quick{100};

} // namespace

/// Tasks that were refused in a thread with an event loop, which deletes them: the caller of start() may
/// still look at them. One event for all, since each object that leaves the thread looks through all of its
/// events.
class PoolCore::Bin : public QObject
{
public:
    explicit Bin(std::shared_ptr<PoolCore> core)
        : m_core(std::move(core))
    {}
    ~Bin() override
    {
        {
            const std::lock_guard lock(m_core->m_mutex);
            m_core->m_bins.erase(QThread::currentThread());
        }
        for (const JobPtr& job : m_jobs) {
            m_core->dispose(job);
        }
    }
    void add(const JobPtr& job) { m_jobs.push_back(job); }

private:
    const std::shared_ptr<PoolCore> m_core;
    std::vector<JobPtr> m_jobs; // in the bin's thread only
};

void PoolCore::emptyBin(Bin* bin)
{
    delete bin;
}

/// The pool does not run the task: it had ended before, or was withdrawn, or the pool is closed.
void PoolCore::throwAway(const JobPtr& job)
{
    const std::shared_ptr<TaskCore> core = TaskAccess::share(*job->task);
    job->task->cancel();
    core->end(TaskState::Finished | TaskState::Cancelled);
    if (QAbstractEventDispatcher::instance()) {
        Bin*& bin = [this]() -> Bin*& {
            const std::lock_guard lock(m_mutex);
            return m_bins[QThread::currentThread()]; // no other thread touches this entry
        }();
        if (!bin) {
            bin = new Bin(shared_from_this());
            bin->deleteLater();
        }
        bin->add(job);
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_life != Life::Open) {
            job->home = nullptr;
        } else {
            job->home = m_service;
            ++m_passing;
        }
    }
    if (!job->home) {
        dispose(job);
        return;
    }
    job->task->moveToThread(m_service);
    const std::lock_guard lock(m_mutex);
    setAside(job);
    passed();
}

/// In a worker: runs @p job and those that follow it.
void PoolCore::serve(PoolThread& worker, JobPtr job)
{
    auto last = std::chrono::steady_clock::now();
    for (int served = 0; job; ++served) {
        if (served == atATime) {
            worker.call([this, &worker, job] { serve(worker, job); });
            return;
        }
        if (!runOne(job)) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        job = following(worker, job, now - last < quick);
        last = now;
    }
}

/// True when the task has ended.
bool PoolCore::runOne(const JobPtr& job)
{
    Task* task = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (m_life != Life::Open) {
            return false; // atEndOf() deletes it
        }
        task = job->task; // nobody else destroys it
    }
    if (task) {
        job->starting = true;
        if (moveTask(*task, job->home)) {
            task->start();
        }
        job->starting = false;
    }
    return job->state->is(TaskState::Finished);
}

/// In a worker whose task has ended: the next task, when it is there at once.
JobPtr PoolCore::following(PoolThread& worker, const JobPtr& ended, bool wasQuick)
{
    Turn turn = Turn::None;
    {
        const std::lock_guard lock(m_mutex);
        m_quick = wasQuick ? m_quick + 1 : 0;
        worker.job = nullptr;
        ended->stage = PoolJob::Stage::Ended;
        m_queue.release(ended->terms.resource);
        turn = nextTurn(worker);
        if (!ended->terms.resource.isEmpty()) {
            static_cast<void>(dispatchOne());
        }
    }
    if (ended->home == &worker) {
        retire(ended);
    }
    const std::lock_guard lock(m_mutex);
    if (turn == Turn::None) { // there may be one by now
        turn = nextTurn(worker);
    }
    if (turn == Turn::Here) {
        return worker.job;
    }
    if (turn != Turn::Next) {
        m_idle.push_back(&worker);
        wakeIfIdle();
    }
    return nullptr;
}

/// In a worker: its task has ended otherwise than by the return of start().
void PoolCore::afterEnd(PoolThread& worker, const JobPtr& job)
{
    {
        const std::lock_guard lock(m_mutex);
        if (worker.job != job || job->starting) {
            return;
        }
    }
    serve(worker, following(worker, job, false));
}

/// In the service thread: lets tasks go to the workers that wait for them.
void PoolCore::feed()
{
    for (int served = 0; served < atATime; ++served) {
        JobPtr job;
        {
            const std::lock_guard lock(m_mutex);
            if (m_requests.empty() || m_life != Life::Open) {
                m_feeding = false;
                return;
            }
            job = std::move(m_requests.front());
            m_requests.pop_front();
            ++m_passing;
        }
        hand(job);
    }
    m_service->call([this] { feed(); });
}

void PoolCore::hand(const JobPtr& job)
{
    PoolThread* const worker = job->home;
    if (job->task && !moveTask(*job->task, worker)) { // only this thread destroys it
        dispose(job);
    }
    const std::lock_guard lock(m_mutex);
    job->stage = PoolJob::Stage::Running;
    worker->call([this, worker, job] { serve(*worker, job); });
    passed();
}

void PoolCore::serveService(const JobPtr& job)
{
    if (runOne(job)) {
        endService(job);
    }
}

void PoolCore::endService(const JobPtr& job)
{
    {
        const std::lock_guard lock(m_mutex);
        if (job->starting || m_services.erase(job) == 0) {
            return;
        }
        job->stage = PoolJob::Stage::Ended;
        if (!job->terms.service) { // its turn had come
            m_queue.release(job->terms.resource);
            static_cast<void>(dispatchOne());
        }
    }
    retire(job);
    const std::lock_guard lock(m_mutex);
    m_waiting -= job->terms.waits ? 1 : 0;
    wakeIfIdle();
}

void PoolCore::beginService(const JobPtr& job)
{
    m_services.insert(job);
    m_waiting += job->terms.waits ? 1 : 0;
}

/// In the service thread: ends and deletes what was taken out of the queue.
void PoolCore::settle()
{
    std::vector<JobPtr> jobs;
    {
        const std::lock_guard lock(m_mutex);
        jobs.swap(m_aside);
    }
    for (const JobPtr& job : jobs) {
        if (job->task) {
            static_cast<void>(moveTask(*job->task, m_service));
        }
        if (job->task && !job->state->is(TaskState::Finished)) {
            const std::shared_ptr<TaskCore> core = TaskAccess::share(*job->task);
            job->task->cancel();
            core->end(TaskState::Finished | TaskState::Cancelled);
        }
        retire(job);
    }
    const std::lock_guard lock(m_mutex);
    m_unsettled -= jobs.size();
    wakeIfIdle();
}

void PoolCore::setAside(const JobPtr& job)
{
    job->stage = PoolJob::Stage::Ended;
    job->home = m_service;
    ++m_unsettled;
    m_aside.push_back(job);
    if (m_aside.size() == 1) {
        m_service->call([this] { settle(); });
    }
}

/// Gives @p worker the first task of the queue that needs one. One that has ended there is dropped and uses up
/// the turn.
PoolCore::Turn PoolCore::nextTurn(PoolThread& worker)
{
    if (m_life != Life::Open || m_paused) {
        return Turn::None;
    }
    JobPtr job = m_queue.take();
    for (; job && job->terms.waits && !job->state->is(TaskState::Finished); job = m_queue.take()) {
        beginService(job);
        job->stage = PoolJob::Stage::Running;
        m_service->call([this, job] { serveService(job); });
    }
    if (!job) {
        m_missed += m_queue.isHeldUp() ? 1 : 0;
        return Turn::None;
    }
    const bool staged = job->stage == PoolJob::Stage::Staged;
    m_staged -= staged ? 1 : 0;
    m_taken += staged ? 1 : 0;
    if (job->state->is(TaskState::Finished)) {
        m_queue.release(job->terms.resource);
        setAside(job);
        return Turn::Dropped;
    }
    worker.job = job;
    job->home = &worker;
    askToStage();
    if (staged) {
        job->stage = PoolJob::Stage::Running;
        return Turn::Here;
    }
    job->stage = PoolJob::Stage::Handed;
    m_requests.push_back(job);
    if (!std::exchange(m_feeding, true)) {
        m_service->call([this] { feed(); });
    }
    return Turn::Next;
}

/// Gives an idle worker a turn.
PoolCore::Turn PoolCore::dispatchOne()
{
    if (m_idle.empty()) {
        return Turn::None;
    }
    PoolThread* const worker = m_idle.back();
    const Turn turn = nextTurn(*worker);
    if (turn == Turn::Here) {
        worker->call([this, worker, job = worker->job] { serve(*worker, job); });
    }
    if (turn == Turn::Here || turn == Turn::Next) {
        m_idle.pop_back();
    }
    return turn;
}

void PoolCore::onEnd(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    PoolThread* const home = job->home;
    const bool inStart = QThread::currentThread() == home && job->starting;
    if (job->stage != PoolJob::Stage::Running || home->ended || inStart) {
        return; // queued: it is dropped when its turn comes; in start(): that returns
    }
    if (home == m_service) {
        home->call([this, job] { endService(job); });
    } else {
        home->call([this, home, job] { afterEnd(*home, job); });
    }
}

void PoolCore::finished(const Task* task)
{
    JobPtr job;
    {
        const std::lock_guard lock(m_mutex);
        for (const PoolThread* worker : m_workers) {
            if (worker->job && worker->job->task == task && worker->job->state->is(TaskState::Finished)) {
                job = worker->job;
            }
        }
    }
    if (job) {
        onEnd(job);
    }
}

bool PoolCore::unqueue(PoolJob& job)
{
    const bool staged = job.stage == PoolJob::Stage::Staged;
    if (!m_queue.remove(job)) {
        return false;
    }
    m_staged -= staged ? 1 : 0;
    return true;
}

bool PoolCore::withdraw(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    // Past the gate, one that is to be queued can still be set aside; one with a thread of its own runs.
    const bool bound = job->home && (job->home != m_service || job->terms.service);
    const bool arriving = job->stage == PoolJob::Stage::Arriving && !bound;
    const bool queued = unqueue(*job);
    if (arriving) {
        job->withdrawn = true; // it is refused at the gate, or set aside after it
    } else if (queued) {
        setAside(job);
    }
    if (arriving || queued) {
        job->state->cancelRequested();
    }
    return arriving || queued;
}

/// In the thread of an ended task: deletes it, now or when the last call is done with it.
void PoolCore::retire(const JobPtr& job)
{
    if (!job->task) { // only this thread destroys it
        return;
    }
    if (TaskAccess::share(*job->task)->mayDelete()) {
        delete job->task;
        return;
    }
    const std::lock_guard lock(m_mutex);
    std::vector<JobPtr>& lingering = job->home->lingering;
    if (std::find(lingering.begin(), lingering.end(), job) == lingering.end()) {
        lingering.push_back(job);
    }
}

/// In the thread of a task for which there is no event loop any more.
void PoolCore::dispose(const JobPtr& job)
{
    Task* task = nullptr; // only this thread destroys it
    {
        const std::lock_guard lock(m_mutex);
        task = std::exchange(job->task, nullptr);
    }
    if (task) {
        discard(task);
    }
}

void PoolCore::onReleased(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    if (job->home && !job->home->ended) { // else its thread, which ends, disposes of it
        job->home->call([this, job] { retire(job); });
    }
}

/// By whomever, in the thread in which it lives.
void PoolCore::onDestroyed(PoolJob& job)
{
    const std::lock_guard lock(m_mutex);
    job.task = nullptr;
    if (unqueue(job)) {
        job.stage = PoolJob::Stage::Ended;
        wakeIfIdle();
    }
    if (job.home) {
        std::vector<JobPtr>& lingering = job.home->lingering;
        lingering.erase(std::remove(lingering.begin(), lingering.end(), job.shared_from_this()),
                        lingering.end());
    }
}

} // namespace veltor::concurrent
