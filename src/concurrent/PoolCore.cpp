// A pool's life, its gate and its threads. How tasks get through it is in PoolWork.cpp.

#include "PoolCore.h"

#include "LongWait.h"
#include "TaskCore.h"

#include <QtCore/QThread>

#include <algorithm>
#include <utility>

namespace veltor::concurrent {

/// A task on its way through the event loop of another thread than the caller's. The pool counts it until it
/// has arrived, or never will.
class PoolCore::Arrival
{
public:
    explicit Arrival(JobPtr job)
        : m_job(std::move(job))
    {
        const std::lock_guard lock(m_job->core->m_mutex);
        m_job->core->m_arriving.insert(m_job);
    }
    Arrival(const Arrival&) = delete;
    Arrival& operator=(const Arrival&) = delete;
    ~Arrival()
    {
        const std::lock_guard lock(m_job->core->m_mutex);
        m_job->core->m_arriving.erase(m_job);
        m_job->core->wakeIfIdle();
    }

    /// In the task's thread.
    void deliver() const
    {
        try {
            if (m_job->core->enter(m_job)) {
                return;
            }
        } catch (...) { // of moveTaskToThread(): there are but the task's observers to tell
            TaskAccess::core(*m_job->task).fail();
        }
        m_job->core->throwAway(m_job);
    }

private:
    const JobPtr m_job;
};

PoolCore::PoolCore(TaskThreadPool* ofPool, QString name)
    : facade(ofPool)
    , m_name(std::move(name))
{}

PoolCore::~PoolCore() = default;

void PoolCore::open()
{
    m_service = new PoolThread(shared_from_this(), m_name + QLatin1String("-service"));
    m_service->start(QThread::InheritPriority);
}

void PoolCore::close()
{
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_life, Life::Closing) != Life::Open) {
            return;
        }
    }
    cancelAll();
    std::vector<PoolThread*> workers;
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_passing == 0; });
        workers.swap(m_workers);
    }
    for (PoolThread* worker : workers) {
        worker->quit();
    }
    qDeleteAll(workers); // waits for them
    PoolThread* const service = m_service;
    service->quit();
    if (service == QThread::currentThread()) { // deleteLater() on the pool
        atEndOf(*service);
        QObject::connect(service, &QThread::finished,
                         [service] { service->deleteLater(); }); // where it was made
    } else {
        delete service;
    }
    Bin* bin = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        m_life = Life::Stopped;
        ++m_idleCount;
        m_changed.notify_all();
        const auto found = m_bins.find(QThread::currentThread());
        bin = found == m_bins.end() ? nullptr : found->second;
    }
    emptyBin(bin);
}

bool PoolCore::start(Task* task, PoolJob::Terms terms)
{
    requireMovable(task);
    terms.waits = TaskAccess::core(*task).onlyWaits();
    const auto job = std::make_shared<PoolJob>(shared_from_this(), task, std::move(terms));
    give(task, job);
    if (task->thread() != QThread::currentThread()) {
        post(task, [arrival = std::make_shared<Arrival>(job)] { arrival->deliver(); });
        return true;
    }
    try {
        if (enter(job)) {
            return true;
        }
    } catch (...) {
        TaskAccess::core(*task).release();
        throw;
    }
    TaskAccess::core(*task).release();
    return false;
}

/// False when the pool is closed and the task is to stay the caller's.
bool PoolCore::enter(const JobPtr& job)
{
    if (!pass(job)) {
        if (job->terms.keepWhenClosed && !job->state->is(TaskState::Finished)) {
            return false;
        }
        throwAway(job);
        return true;
    }
    // The mutex is not held while the task is moved, since moving runs a virtual function of the task: a
    // worker is reserved before, and a task is queued after it was parked.
    try {
        job->task->moveTaskToThread(job->home);
    } catch (...) {
        undo(job);
        throw;
    }
    admit(job);
    return true;
}

/// The gate.
bool PoolCore::pass(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    if (m_life != Life::Open || job->withdrawn || job->state->is(TaskState::Finished)) {
        return false;
    }
    ++m_passing;
    job->home = m_service;
    if (job->terms.service) {
        beginService(job);
    } else if (!job->terms.waits && !m_paused && !m_idle.empty() && m_queue.acquire(job->terms.resource)) {
        job->home = m_idle.back();
        job->home->job = job;
        m_idle.pop_back();
    } else {
        ++m_entering;
    }
    return true;
}

/// The task could not be moved.
void PoolCore::undo(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    if (job->home != m_service) {
        job->home->job = nullptr;
        m_idle.push_back(job->home);
        m_queue.release(job->terms.resource);
    } else if (m_services.erase(job) > 0) {
        m_waiting -= job->terms.waits ? 1 : 0;
    } else {
        --m_entering;
    }
    job->home = nullptr;
    wakeIfIdle();
    passed();
}

/// The task lives in its new thread.
void PoolCore::admit(const JobPtr& job)
{
    const std::lock_guard lock(m_mutex);
    if (job->terms.service) {
        job->stage = PoolJob::Stage::Running;
        m_service->call([this, job] { serveService(job); });
    } else if (job->home != m_service) {
        job->stage = PoolJob::Stage::Running;
        job->home->call([this, job] { serve(*job->home, job); });
    } else {
        --m_entering;
        job->withdrawn ? setAside(job) : m_queue.add(job);
        static_cast<void>(dispatchOne()); // a worker may have been freed meanwhile
    }
    passed();
}

void PoolCore::passed()
{
    if (--m_passing == 0) {
        m_changed.notify_all();
    }
}

void PoolCore::addThread()
{
    const std::lock_guard lock(m_mutex);
    if (m_life != Life::Open) {
        return;
    }
    auto* worker =
        new PoolThread(shared_from_this(), QStringLiteral("%1-%2").arg(m_name).arg(++m_lastNumber));
    worker->moveToThread(nullptr); // it has no events, and belongs to whoever ends it
    m_workers.push_back(worker);
    m_idle.push_back(worker);
    ++m_threadCount;
    worker->start(QThread::InheritPriority);
    static_cast<void>(dispatchOne());
}

bool PoolCore::removeThread()
{
    const std::lock_guard lock(m_mutex);
    if (m_life != Life::Open || m_idle.empty()) {
        return false;
    }
    m_idle.back()->quit(); // reap() follows
    m_idle.pop_back();
    --m_threadCount;
    wakeIfIdle();
    return true;
}

/// In the service thread: a worker that was removed has ended.
void PoolCore::reap(PoolThread* worker)
{
    {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find(m_workers.begin(), m_workers.end(), worker);
        if (found == m_workers.end()) {
            return; // close() has it
        }
        m_workers.erase(found);
    }
    delete worker; // waits for its last instructions
}

int PoolCore::threadCount() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_threadCount);
}

void PoolCore::setPaused(bool paused)
{
    const std::lock_guard lock(m_mutex);
    m_paused = paused;
    while (dispatchOne() != Turn::None) {
    }
}

bool PoolCore::isPaused() const
{
    const std::lock_guard lock(m_mutex);
    return m_paused;
}

bool PoolCore::isOpen() const
{
    const std::lock_guard lock(m_mutex);
    return m_life == Life::Open;
}

void PoolCore::setLimit(const QString& resource, int limit)
{
    const std::lock_guard lock(m_mutex);
    m_queue.setLimit(resource, limit);
    while (dispatchOne() != Turn::None) {
    }
}

void PoolCore::cancelAll()
{
    std::vector<std::shared_ptr<TaskProgressHandler>> handlers;
    {
        const std::lock_guard lock(m_mutex);
        for (const JobPtr& job : m_queue.takeAll()) {
            job->state->cancelRequested();
            setAside(job);
        }
        m_staged = 0;
        const auto ask = [&handlers](const JobPtr& job) {
            if (job && job->task) {
                handlers.push_back(job->task->progressHandler());
            }
        };
        for (const JobPtr& job : m_arriving) {
            job->withdrawn = true;
            ask(job);
        }
        for (const PoolThread* worker : m_workers) {
            ask(worker->job);
        }
        std::for_each(m_services.begin(), m_services.end(), ask);
    }
    for (const auto& handler : handlers) {
        handler->cancel();
    }
}

bool PoolCore::allDone() const
{
    const std::lock_guard lock(m_mutex);
    return idle();
}

bool PoolCore::idle() const
{
    const auto isNotCounted = [](const JobPtr& job) { return job->terms.service && !job->terms.waits; };
    return m_queue.isEmpty() && m_entering == 0 && m_unsettled == 0 && m_waiting == 0 &&
           m_idle.size() >= m_threadCount && std::all_of(m_arriving.begin(), m_arriving.end(), isNotCounted);
}

void PoolCore::wakeIfIdle()
{
    if (idle()) {
        ++m_idleCount;
        m_changed.notify_all();
    }
}

bool PoolCore::waitForAll(unsigned long ms)
{
    const auto* self = dynamic_cast<const PoolThread*>(QThread::currentThread());
    std::unique_lock lock(m_mutex);
    if (idle() || m_life == Life::Stopped || (self && self->core.get() == this)) {
        return idle() || m_life == Life::Stopped;
    }
    // Counted, so that a wake-up without cause is not taken for an idle pool, and one idle moment is
    // enough even if the pool is busy again by now.
    const auto becameIdle = [this, before = m_idleCount] { return m_idleCount != before; };
    if (ms == ULONG_MAX) {
        m_changed.wait(lock, becameIdle);
        return true;
    }
    constexpr qulonglong longest = std::chrono::milliseconds::max().count();
    return waitAtMost(m_changed, lock, std::chrono::milliseconds(qint64(qMin<qulonglong>(ms, longest))),
                      becameIdle);
}

/// In @p thread, which takes nothing any more: what lives in it and was not handed to another.
void PoolCore::atEndOf(PoolThread& thread)
{
    std::vector<JobPtr> last;
    {
        const std::lock_guard lock(m_mutex);
        thread.ended = true;
        last = lastOf(thread);
    }
    for (const JobPtr& job : last) {
        dispose(job);
    }
    const std::lock_guard lock(m_mutex);
    if (m_life == Life::Open) {
        m_service->call([this, worker = &thread] { reap(worker); });
    }
}

std::vector<JobPtr> PoolCore::lastOf(PoolThread& thread)
{
    std::vector<JobPtr> last = std::exchange(thread.lingering, {});
    if (&thread != m_service) {
        const JobPtr job = std::exchange(thread.job, nullptr);
        if (job && job->stage == PoolJob::Stage::Running) { // else it is still in the service thread
            last.push_back(job);
        }
        return last;
    }
    const auto add = [&last](auto jobs) { last.insert(last.end(), jobs.begin(), jobs.end()); };
    add(m_queue.takeAll());
    add(std::exchange(m_requests, {}));
    add(std::exchange(m_aside, {}));
    add(std::exchange(m_services, {}));
    m_unsettled = 0;
    for (const JobPtr& job : last) {
        job->home = m_service;
    }
    return last;
}

} // namespace veltor::concurrent
