#include <veltor/concurrent/TaskThreadPool.h>

#include "EventThread.h"
#include "Post.h"

#include <veltor/concurrent/Task.h>
#include <veltor/err/Exceptions.h>
#include <veltor/logging/Logger.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace veltor::concurrent {
namespace {

const logging::LoggerMessager poolLog(logging::LogLevel::Detail, "concurrent/TaskThreadPool.cpp", __LINE__,
                                      "veltor::concurrent::TaskThreadPool::TaskThreadPool(int, QObject*)");

/// When this many tasks wait, the first are staged for the workers in portions, the next portion when few
/// of the last are left.
constexpr int manyQueued = 256;
constexpr int manyStaged = 128;
constexpr std::size_t fewStaged = 128;

} // namespace

TaskThreadPool::TaskThreadPool(int threads, QObject* parent)
    : m_serviceThread(new EventThread)
    , m_requestedThreads(threads)
{
    moveToThread(m_serviceThread);
    m_serviceThread->start(QThread::InheritPriority);
    if (parent) {
        connect(
            parent, &QObject::destroyed, this, [this] { delete this; }, Qt::DirectConnection);
    }
    for (int i = 0; i < threads; ++i) {
        addThread();
    }
    poolLog.write(QStringLiteral("Initialized ThreadPool with threads: %1").arg(m_requestedThreads));
}

TaskThreadPool::TaskThreadPool(QObject* parent)
    : TaskThreadPool(QThread::idealThreadCount(), parent)
{}

TaskThreadPool::~TaskThreadPool()
{
    cancelAll();
    stopThreads();
    // No thread of the pool runs any more: nobody else touches what is left.
    for (const auto& [task, run] : std::exchange(m_runs, {})) {
        delete task;
    }
    qDeleteAll(std::exchange(m_queue, {}));
    qDeleteAll(std::exchange(m_staged, {}));
    for (const QPointer<Task>& task : m_retired) {
        // One that was dropped may live in a foreign thread, whose event loop deletes it.
        QThread* home = task ? task->thread() : nullptr;
        if (!home || home == QThread::currentThread() || home->isFinished()) {
            delete task;
        }
    }
    qDeleteAll(m_workers);
}

TaskThreadPool* TaskThreadPool::makeInstance(int threads, QObject* parent)
{
    return new TaskThreadPool(threads, parent);
}

TaskThreadPool* TaskThreadPool::makeInstance(QObject* parent)
{
    return new TaskThreadPool(parent);
}

TaskThreadPool* TaskThreadPool::globalInstance()
{
#ifdef Q_OS_WIN
    // Never destroyed: the system ends all other threads, whatever they hold, before a library's statics go.
    // In order, therefore, with the application object.
    static TaskThreadPool& pool = *[] {
        auto* const made = new TaskThreadPool(QThread::idealThreadCount(), nullptr);
        qAddPostRoutine([] {
            pool.cancelAll();
            pool.stopThreads();
        });
        return made;
    }();
#else
    static TaskThreadPool pool(QThread::idealThreadCount(), nullptr);
#endif
    return &pool;
}

void TaskThreadPool::start(Task* task, Priority priority)
{
    if (!handOver(task, &TaskThreadPool::start_internal, priority)) {
        start_internal(task, priority);
    }
}

void TaskThreadPool::startService(Task* task)
{
    if (!handOver(task, &TaskThreadPool::startService_internal, Normal)) {
        startService_internal(task, Normal);
    }
}

/// Only the task's own thread can move it away: when that is another one, lets its event loop call
/// @p startHere and returns true.
bool TaskThreadPool::handOver(Task* task, void (TaskThreadPool::*startHere)(Task*, Priority),
                              Priority priority)
{
    if (!task) {
        throw err::NullArgument(QStringLiteral("task"));
    }
    if (!task->thread() || task->thread() == QThread::currentThread()) {
        return false;
    }
    post(task, [pool = QPointer<TaskThreadPool>(this), task, startHere, priority] {
        if (pool) {
            (pool->*startHere)(task, priority);
        } else {
            delete task;
        }
    });
    return true;
}

/// In the task's thread. The mutex is not held while the task is moved, since moving runs a virtual
/// function of the task; so a worker is reserved before, and a task is queued after it was parked.
void TaskThreadPool::start_internal(Task* task, Priority priority)
{
    if (!task->isFinished()) {
        Launch now;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_closing && !m_idleThreads.isEmpty()) {
                now = reserve(task, m_idleThreads.takeLast());
            }
        }
        if (now.task) {
            launch(now, nullptr);
            return;
        }
        task->moveTaskToThread(m_serviceThread);
        const std::lock_guard lock(m_mutex);
        if (!m_closing) {
            m_queue.insert(priority == High ? 0 : m_queue.size(), task);
            if (priority == High && (m_staging || !m_staged.empty())) {
                ++m_ahead;
            }
            if (!m_idleThreads.isEmpty()) { // a worker was freed meanwhile
                post(this, [this] { dispatchNext(nullptr, nullptr); });
            }
            return;
        }
    }
    drop(task);
}

void TaskThreadPool::startService_internal(Task* task, Priority /*priority*/)
{
    if (!task->isFinished()) {
        Launch now;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_closing) {
                now = reserve(task, nullptr);
            }
        }
        if (now.task) {
            launch(now, nullptr);
            return;
        }
    }
    drop(task);
}

/// Under the mutex.
TaskThreadPool::Launch TaskThreadPool::reserve(Task* task, QThread* worker)
{
    Launch launch{task, Run{++m_lastRun, worker, task->progressHandler()}};
    m_runs[task] = launch.run;
    return launch;
}

/// In the task's thread. The worker deletes the @p former task, if any, on the way: waking it costs more
/// than either.
void TaskThreadPool::launch(const Launch& launch, Task* former)
{
    QThread* worker = launch.run.worker;
    launch.task->moveTaskToThread(worker ? worker : m_serviceThread);
    post(launch.task, [this, launch, former] { run(launch, former); });
}

/// In the thread that runs the task.
void TaskThreadPool::run(const Launch& launch, Task* former)
{
    if (former) {
        former->retire();
    }
    Task* task = launch.task;
    task->start();
    if (task->isFinished() && serveNext(launch)) {
        return;
    }
    const auto takeBack = [this, task, id = launch.run.id] { onFinished(task, id); };
    if (!task->isFinished()) {
        connect(launch.run.handler.get(), &ProgressHandler::finished, this, Handoff(takeBack),
                Qt::QueuedConnection);
    }
    if (task->isFinished()) { // perhaps before the connection
        post(this, takeBack);
    }
}

/// In a worker whose task has ended: goes on with the next staged task, which spares the way through the
/// service thread. False when there is none, or when others are before it.
bool TaskThreadPool::serveNext(const Launch& ended)
{
    Launch next;
    {
        const std::lock_guard lock(m_mutex);
        if (m_closing || !ended.run.worker || m_ahead > 0 || m_staged.empty() ||
            m_staged.front()->isFinished()) {
            return false;
        }
        next = reserve(m_staged.front(), ended.run.worker);
        m_staged.pop_front();
        m_runs.erase(ended.task);
        forgetDeleted();
        m_retired.emplace_back(ended.task);
        if (m_staged.size() == fewStaged) {
            post(this, [this] { stage(); });
        }
    }
    launch(next, ended.task);
    return true;
}

/// In the service thread: while many small tasks wait, lets the first of them belong to no thread, so that
/// whichever worker is free next can move them to itself.
void TaskThreadPool::stage()
{
    std::vector<Task*> tasks;
    {
        const std::lock_guard lock(m_mutex);
        if (m_closing || m_ahead > 0 || m_staging || m_queue.size() < manyQueued ||
            m_staged.size() > fewStaged) {
            return;
        }
        m_staging = true;
        tasks.assign(m_queue.begin(), m_queue.begin() + manyStaged);
        m_queue.erase(m_queue.begin(), m_queue.begin() + manyStaged);
    }
    for (Task* task : tasks) {
        task->moveTaskToThread(nullptr);
    }
    const std::lock_guard lock(m_mutex);
    m_staging = false;
    m_staged.insert(m_staged.end(), tasks.begin(), tasks.end());
}

/// Under the mutex: the task whose turn it is, null when none waits.
Task* TaskThreadPool::takeQueued()
{
    if (m_ahead == 0 && !m_staged.empty()) {
        Task* task = m_staged.front();
        m_staged.pop_front();
        return task;
    }
    m_ahead -= m_ahead > 0 ? 1 : 0;
    return m_queue.isEmpty() ? nullptr : m_queue.takeFirst();
}

/// @p id tells this run from a later one of another task at the same address.
void TaskThreadPool::onFinished(Task* task, quint64 id)
{
    {
        const std::lock_guard lock(m_mutex);
        const auto run = m_runs.find(task);
        if (run == m_runs.end() || run->second.id != id) {
            return;
        }
    }
    onWorkerFinished(task);
}

void TaskThreadPool::onWorkerFinished(Task* task)
{
    Run run{};
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_runs.find(task);
        // The handler may pass on the finished() of a part of its work.
        if (found == m_runs.end() || !task->isFinished()) {
            return;
        }
        run = found->second;
        m_runs.erase(found);
        forgetDeleted();
        m_retired.emplace_back(task);
    }
    disconnect(run.handler.get(), nullptr, this, nullptr);
    if (run.worker) {
        dispatchNext(run.worker, task);
    } else {
        task->retire();
    }
}

/// In the service thread, where queued tasks live. Starts one queued task on an idle worker, @p freed by
/// its @p former task first of all; a dropped task leaves the worker idle.
void TaskThreadPool::dispatchNext(QThread* freed, Task* former)
{
    Launch next;
    Task* dropped = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (freed) {
            m_idleThreads.append(freed);
        }
        Task* first = m_closing || m_idleThreads.isEmpty() ? nullptr : takeQueued();
        if (first) {
            if (first->isFinished()) {
                dropped = first;
            } else {
                next = reserve(first, m_idleThreads.takeLast());
            }
        }
        if (former && !next.task) { // before the worker can be removed, so that it still deletes the task
            post(former, [former] { former->retire(); });
        }
        wakeIfIdle();
    }
    if (dropped) {
        drop(dropped);
    }
    if (next.task) {
        if (!next.task->thread()) { // staged
            next.task->moveTaskToThread(m_serviceThread);
        }
        launch(next, former);
        stage();
    }
}

/// Under the mutex: keeps the list of tasks that their threads are about to delete short.
void TaskThreadPool::forgetDeleted()
{
    constexpr std::size_t manyRetired = 64;
    if (m_retired.size() >= manyRetired) {
        const auto gone = [](const QPointer<Task>& task) { return task.isNull(); };
        m_retired.erase(std::remove_if(m_retired.begin(), m_retired.end(), gone), m_retired.end());
    }
}

/// In the task's thread or, when the pool is closing, after the task was moved to the service thread.
/// The task is deleted by the calling thread's event loop where there is one, so that a caller may still
/// look at it after start(); else by the service thread's; at the latest by the pool's destructor.
void TaskThreadPool::drop(Task* task)
{
    if (!task->thread() ||
        (task->thread() == QThread::currentThread() && !task->thread()->eventDispatcher())) {
        task->moveTaskToThread(m_serviceThread);
    }
    {
        const std::lock_guard lock(m_mutex);
        forgetDeleted();
        m_retired.emplace_back(task);
    }
    if (task->thread() == QThread::currentThread()) {
        task->deleteLater();
    } else {
        post(task, [task] { task->deleteLater(); });
    }
}

void TaskThreadPool::addThread()
{
    auto* worker = new EventThread;
    worker->moveToThread(m_serviceThread); // its events are delivered wherever addThread() was called
    connect(worker, &QThread::finished, this, Handoff([this, worker] { onThreadFinished(worker); }),
            Qt::QueuedConnection);
    worker->start(QThread::InheritPriority);
    const std::lock_guard lock(m_mutex);
    m_workers.append(worker);
    m_idleThreads.append(worker);
    ++m_threadCount;
    if (!m_queue.isEmpty() || !m_staged.empty()) {
        post(this, [this] { dispatchNext(nullptr, nullptr); });
    }
}

bool TaskThreadPool::removeThread()
{
    const std::lock_guard lock(m_mutex);
    if (m_idleThreads.isEmpty()) {
        return false;
    }
    m_idleThreads.takeLast()->quit();
    --m_threadCount;
    return true;
}

void TaskThreadPool::onThreadFinished(QThread* worker)
{
    {
        const std::lock_guard lock(m_mutex);
        m_workers.removeOne(worker);
    }
    delete worker; // waits for its last instructions
}

bool TaskThreadPool::allTasksDone() const
{
    const std::lock_guard lock(m_mutex);
    return idle();
}

/// Under the mutex.
bool TaskThreadPool::idle() const
{
    return m_queue.isEmpty() && m_staged.empty() && m_idleThreads.size() >= m_threadCount;
}

/// Under the mutex.
void TaskThreadPool::wakeIfIdle()
{
    if (idle()) {
        ++m_idleCount;
        m_allDone.notify_all();
    }
}

bool TaskThreadPool::waitForAllTasks(unsigned long ms)
{
    std::unique_lock lock(m_mutex);
    if (idle()) {
        return true;
    }
    // Counted, so that a wake-up without cause is not taken for an idle pool, and one idle moment is
    // enough even if the pool is busy again by now.
    const auto becameIdle = [this, before = m_idleCount] { return m_idleCount != before; };
    if (ms == ULONG_MAX) {
        m_allDone.wait(lock, becameIdle);
        return true;
    }
    return m_allDone.wait_for(lock, std::chrono::milliseconds(ms), becameIdle);
}

void TaskThreadPool::cancelAll()
{
    std::vector<HandlerPtr> handlers;
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
        for (const auto& [task, run] : m_runs) {
            handlers.push_back(run.handler);
        }
    }
    for (const HandlerPtr& handler : handlers) {
        handler->cancel();
    }
}

/// The service thread goes first: until it has ended it takes tasks back and deletes workers, and after
/// that nothing is posted to a thread that has ended.
void TaskThreadPool::stopThreads()
{
    if (m_serviceThread == QThread::currentThread()) { // deleteLater() on the pool
        connect(m_serviceThread, SIGNAL(finished()), m_serviceThread, SLOT(deleteLater()));
        m_serviceThread->quit();
    } else {
        m_serviceThread->quit();
        delete m_serviceThread; // waits for it
    }
    for (QThread* worker : std::as_const(m_workers)) {
        worker->quit();
    }
    for (QThread* worker : std::as_const(m_workers)) {
        static_cast<EventThread*>(worker)->join();
    }
}

} // namespace veltor::concurrent
