// The public face of the pool; its machinery is PoolCore.

#include <veltor/concurrent/TaskThreadPool.h>

#include "PoolCore.h"
#include "TaskCore.h"

#include <veltor/err/Exceptions.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>
#include <QtCore/QVariant>

#include <utility>

namespace veltor::concurrent {
namespace {

const logging::LoggerMessager poolLog(logging::LogLevel::Detail, "concurrent/TaskThreadPool.cpp", __LINE__,
                                      "veltor::concurrent::TaskThreadPool::TaskThreadPool(int, QObject*)");

PoolJob::Terms terms(TaskThreadPool::Priority priority, const QString& resource)
{
    PoolJob::Terms result;
    result.high = priority == TaskThreadPool::High;
    result.resource = resource;
    return result;
}

} // namespace

TaskThreadPool::TaskThreadPool(int threads, const QString& name, QObject* parent)
    : m_core(std::make_shared<PoolCore>(this, name))
{
    m_core->open();
    moveToThread(m_core->serviceThread());
    if (parent) {
        connect(
            parent, &QObject::destroyed, this, [this] { delete this; }, Qt::DirectConnection);
    }
    for (int i = 0; i < threads; ++i) {
        m_core->addThread();
    }
    poolLog.write(QStringLiteral("Initialized ThreadPool with threads: %1").arg(threads));
}

TaskThreadPool::TaskThreadPool(int threads, QObject* parent)
    : TaskThreadPool(threads, QStringLiteral("tasks"), parent)
{}

TaskThreadPool::TaskThreadPool(QObject* parent)
    : TaskThreadPool(QThread::idealThreadCount(), parent)
{}

TaskThreadPool::~TaskThreadPool()
{
    m_core->close();
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
        qAddPostRoutine([] { pool.m_core->close(); });
        return made;
    }();
#else
    static TaskThreadPool pool(QThread::idealThreadCount(), nullptr);
#endif
    return &pool;
}

TaskThreadPool* TaskThreadPool::current()
{
    const auto* thread = dynamic_cast<const PoolThread*>(QThread::currentThread());
    return thread ? thread->core->facade : nullptr;
}

void TaskThreadPool::start(Task* task, Priority priority, const QString& resource)
{
    m_core->start(task, terms(priority, resource));
}

void TaskThreadPool::startService(Task* task)
{
    PoolJob::Terms service;
    service.service = true;
    m_core->start(task, service);
}

void TaskThreadPool::addThread()
{
    m_core->addThread();
}

bool TaskThreadPool::removeThread()
{
    return m_core->removeThread();
}

int TaskThreadPool::threadCount() const
{
    return m_core->threadCount();
}

void TaskThreadPool::pauseStarts()
{
    m_core->setPaused(true);
}

void TaskThreadPool::resumeStarts()
{
    m_core->setPaused(false);
}

bool TaskThreadPool::startsPaused() const
{
    return m_core->isPaused();
}

void TaskThreadPool::setResourceLimit(const QString& resource, int limit)
{
    if (resource.isEmpty()) {
        throw err::UnexpectedValue(QStringLiteral("resource"), resource);
    }
    if (limit < 1) {
        throw err::UnexpectedValue(QStringLiteral("limit"), limit);
    }
    m_core->setLimit(resource, limit);
}

bool TaskThreadPool::cancel(const ProgressHandlerPtr& handler)
{
    const auto ofTask = std::dynamic_pointer_cast<TaskProgressHandler>(handler);
    if (ofTask && ofTask->withdraw()) {
        return true;
    }
    if (handler) {
        handler->cancel();
    }
    return false;
}

void TaskThreadPool::cancelAll()
{
    m_core->cancelAll();
}

bool TaskThreadPool::allTasksDone() const
{
    return m_core->allDone();
}

bool TaskThreadPool::waitForAllTasks(unsigned long ms)
{
    const std::shared_ptr<PoolCore> core = m_core; // the wait may last longer than the pool
    return core->waitForAll(ms);
}

void TaskThreadPool::onWorkerFinished(Task* task)
{
    m_core->finished(task);
}

TaskPoolRef::TaskPoolRef(const TaskThreadPool& pool)
    : m_core(pool.m_core)
{}

bool TaskPoolRef::isOpen() const
{
    return m_core && m_core->isOpen();
}

bool TaskPoolRef::start(Task* task, TaskThreadPool::Priority priority, const QString& resource) const
{
    if (!isOpen()) {
        return false;
    }
    PoolJob::Terms agreed = terms(priority, resource);
    agreed.keepWhenClosed = true;
    return m_core->start(task, std::move(agreed));
}

} // namespace veltor::concurrent
