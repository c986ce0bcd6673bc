// A task made of tasks, as its users see it.

#include <veltor/concurrent/GroupTask.h>

#include "GroupRun.h"
#include "TaskCore.h"

#include <veltor/err/Exceptions.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <utility>

namespace veltor::concurrent {
namespace {

QString reasonOf(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& reason) {
        return QString::fromUtf8(reason.what());
    } catch (...) {
        return QCoreApplication::translate("GroupTask", "неизвестная ошибка");
    }
}

std::string messageOf(int part, const QString& text, const std::exception_ptr& reason)
{
    const QString name =
        text.isEmpty() ? QCoreApplication::translate("GroupTask", "Часть %1").arg(part + 1) : text;
    return (name + QLatin1String(": ") + reasonOf(reason)).toStdString();
}

[[noreturn]] void refuse(const QString& details)
{
    throw err::UnsupportedOperation(details);
}

} // namespace

PartFailed::PartFailed(int part, const QString& text, std::exception_ptr reason)
    : std::runtime_error(messageOf(part, text, reason))
    , m_part(part)
    , m_reason(std::move(reason))
{}

PartFailed::~PartFailed() = default;

GroupTask::GroupTask(QObject* parent)
    : Task(parent)
    , d(std::make_shared<GroupRun>(this))
{
    d->progress = {new GroupProgressHandler(this), &releaseHandler};
    setProgressHandler(d->progress);
}

GroupTask::~GroupTask()
{
    TaskAccess::core(*this).close(); // no hook of a group that is half destroyed
    d->detach();
}

int GroupTask::add(Task* task, double weight, const QString& text)
{
    if (!task) {
        throw err::NullArgument(QStringLiteral("task"));
    }
    requireNotStarted();
    if (task == this || task->parent() || task->thread() != thread() || task->isRunning() ||
        task->isWaiting() || task->isPaused()) {
        refuse(QCoreApplication::translate(
                   "GroupTask", "Задача '%1' не может быть частью группы: у неё есть владелец, она "
                                "живёт в другом потоке или уже запущена")
                   .arg(text));
    }
    const auto handler = task->progressHandler();
    d->progress->addPart(handler, weight, text);
    return d->add(task, handler, text);
}

void GroupTask::requireNotStarted() const
{
    const std::lock_guard lock(d->mutex);
    if (d->started) {
        refuse(QCoreApplication::translate("GroupTask", "Группа задач уже запущена"));
    }
}

void GroupTask::addDependency(int part, int on)
{
    requireNotStarted();
    for (const int index : {part, on}) {
        if (index < 0 || index >= partCount()) {
            throw err::OutOfRange(index);
        }
    }
    QStringList names;
    {
        const std::lock_guard lock(d->mutex);
        for (const std::size_t index : d->plan.addDependency(std::size_t(part), std::size_t(on))) {
            const QString& text = d->parts[index].text;
            names << (text.isEmpty() ? QString::number(index + 1) : text);
        }
    }
    if (!names.isEmpty()) {
        refuse(QCoreApplication::translate("GroupTask", "Части группы ждут друг друга по кругу: %1")
                   .arg(names.join(QStringLiteral(", "))));
    }
}

int GroupTask::partCount() const
{
    const std::lock_guard lock(d->mutex);
    return int(d->parts.size());
}

void GroupTask::setPool(TaskThreadPool* pool)
{
    requireNotStarted();
    d->pool = pool ? std::optional<TaskPoolRef>(*pool) : std::nullopt;
    TaskAccess::core(*this).setOnlyWaits(pool != nullptr);
}

void GroupTask::setMaxRunning(int limit)
{
    requireNotStarted();
    d->maxRunning = limit;
}

void GroupTask::setPolicy(Policy policy)
{
    requireNotStarted();
    d->policy = policy;
}

bool GroupTask::canCancel() const
{
    return true;
}

bool GroupTask::canPause() const
{
    return true;
}

void GroupTask::moveTaskToThread(QThread* thread)
{
    for (Task* task : d->ownTasks()) {
        task->moveTaskToThread(thread);
    }
    Task::moveTaskToThread(thread); // from here on its events, which may be its end, are delivered there
}

void GroupTask::onStart()
{
    {
        const std::lock_guard lock(d->mutex);
        d->started = true;
    }
    enterWaitingState();
    if (cancelRequested()) {
        d->stop();
    }
    d->wake();
}

void GroupTask::onPauseRequested()
{
    Task::onPauseRequested();
    d->follow();
}

void GroupTask::onContinue()
{
    TaskAccess::core(*this).leaveRunning();
    d->follow();
}

void GroupTask::onCancelRequested()
{
    const std::shared_ptr<GroupRun> run = d; // an observer may destroy the group
    Task::onCancelRequested();
    run->stop();
}

std::shared_ptr<TaskProgressHandler> runGroup(TaskThreadPool& pool, GroupTask* group)
{
    if (!group) {
        throw err::NullArgument(QStringLiteral("group"));
    }
    group->setPool(&pool);
    auto handler = group->progressHandler();
    pool.startService(group);
    return handler;
}

std::shared_ptr<TaskProgressHandler> runGroup(TaskThreadPool& pool, const std::vector<Task*>& parts,
                                              int maxRunning)
{
    auto group = std::make_unique<GroupTask>();
    group->setMaxRunning(maxRunning);
    for (Task* part : parts) {
        group->add(part);
    }
    return runGroup(pool, group.release());
}

} // namespace veltor::concurrent
