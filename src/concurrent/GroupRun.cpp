// A group on its way from the first part to the last.

#include "GroupRun.h"

#include "Post.h"
#include "TaskCore.h"

#include <algorithm>
#include <utility>

namespace veltor::concurrent {
namespace {

/// So many failures are nested in one another; beyond, the first ones have told enough.
constexpr std::size_t mostFailures = 64;

/// A part that the group has: it ends first, since the rest may have to wait for a call of another thread.
void destroy(Task* task)
{
    TaskAccess::share(*task)->end(TaskState::Finished | TaskState::Cancelled);
    discard(task);
}

} // namespace

GroupRun::GroupRun(GroupTask* group)
    : m_core(TaskAccess::share(*group))
    , m_group(group)
{}

int GroupRun::add(Task* task, std::shared_ptr<TaskProgressHandler> handler, const QString& text)
{
    const std::lock_guard lock(mutex);
    parts.push_back({task, std::move(handler), text, nullptr});
    return int(plan.add());
}

std::vector<Task*> GroupRun::ownTasks()
{
    std::vector<Task*> tasks;
    const std::lock_guard lock(mutex);
    for (const Part& part : parts) {
        if (part.task) {
            tasks.push_back(part.task);
        }
    }
    return tasks;
}

void GroupRun::wake()
{
    const std::lock_guard lock(mutex);
    if (m_group && !m_wakeUnderWay) {
        m_wakeUnderWay = true;
        post(m_group, [self = shared_from_this()] { self->advance(); });
    }
}

/// In the group's thread. Foreign code runs within, and may destroy the group.
void GroupRun::advance()
{
    const std::shared_ptr<GroupRun> self = shared_from_this();
    std::vector<Task*> needless;
    {
        const std::lock_guard lock(mutex);
        m_wakeUnderWay = false;
        if (!m_group || m_starting != none) { // within a part's own event loop; its end wakes again
            return;
        }
        needless = takeNeedless();
    }
    for (Task* task : needless) {
        destroy(task);
    }
    begin();
    for (bool more = true; more;) {
        std::size_t next = none;
        Task* task = nullptr;
        {
            const std::lock_guard lock(mutex);
            if (!m_group || !m_needless.empty()) { // observers of the above
                return;
            }
            if (!plan.over()) {
                if (isPaused() || m_stopping || plan.running() >= limit()) {
                    return;
                }
                next = plan.begin();
                if (next == plan.size()) {
                    return;
                }
                task = parts[next].task;
            }
        }
        more = task && launch(next, task);
        if (!task) {
            conclude();
        }
    }
}

/// Once, when Task::start() has returned: there, a paused group that is continued would look like one whose
/// work is done.
void GroupRun::begin()
{
    {
        const std::lock_guard lock(mutex);
        if (!m_group || std::exchange(m_begun, true)) {
            return;
        }
    }
    follow();
}

/// Under the mutex.
std::size_t GroupRun::limit() const
{
    if (!pool) {
        return 1;
    }
    return maxRunning > 0 ? std::size_t(maxRunning) : parts.size();
}

/// Under the mutex.
std::vector<Task*> GroupRun::takeNeedless()
{
    std::vector<Task*> tasks;
    for (const std::size_t index : std::exchange(m_needless, {})) {
        if (Task* task = std::exchange(parts[index].task, nullptr)) {
            tasks.push_back(task);
        }
    }
    return tasks;
}

/// True when further parts may begin at once.
bool GroupRun::launch(std::size_t index, Task* task)
{
    watch(index);
    if (task->isFinished()) { // before its turn
        partEnded(index);
        return true;
    }
    if (pool) {
        handOver(index, task);
        return true;
    }
    {
        const std::lock_guard lock(mutex);
        m_starting = index;
    }
    task->start();
    {
        const std::lock_guard lock(mutex);
        m_starting = none;
    }
    wake();
    return false;
}

/// To the pool. A part that it refuses, or that refuses it, ends as cancelled or with that error.
void GroupRun::handOver(std::size_t index, Task* task)
{
    {
        const std::lock_guard lock(mutex);
        parts[index].task = nullptr;
    }
    std::exception_ptr error;
    try {
        if (pool->start(task)) {
            return;
        }
    } catch (...) {
        error = std::current_exception();
    }
    {
        const std::lock_guard lock(mutex);
        parts[index].error = error;
    }
    destroy(task);
}

void GroupRun::watch(std::size_t index)
{
    TaskProgressHandler* const handler = parts[index].handler.get();
    const auto self = shared_from_this();
    const auto note = [self](auto set) {
        const std::lock_guard lock(self->mutex);
        set();
    };
    using H = ProgressHandler;
    std::vector<QMetaObject::Connection> connections;
    const auto on = [&](auto signal, auto slot) {
        connections.push_back(QObject::connect(handler, signal, std::move(slot)));
    };
    on(&H::started, [self, handler] { self->partStarted(*handler); });
    on(&H::successful, [self, note, index] { note([&] { self->parts[index].successful = true; }); });
    on(&H::canceled, [self, note, index] { note([&] { self->parts[index].canceled = true; }); });
    on(&H::error, [self, note, index](const err::ConcurrentNestedException& error) {
        note([&] { self->parts[index].error = error.nested_ptr(); });
    });
    on(&H::finished, [self, handler, index] {
        if (handler->isFinished()) { // and not only a part of it, whose end it passes on
            self->partEnded(index);
        }
    });
    const std::lock_guard lock(mutex);
    parts[index].connections = std::move(connections);
}

/// In the part's thread, before its work.
void GroupRun::partStarted(TaskProgressHandler& handler) const
{
    while (isPaused()) {
        handler.pause();
        if (isPaused()) {
            return;
        }
        handler.continueWork();
    }
}

/// In any thread.
void GroupRun::partEnded(std::size_t index)
{
    bool stopNow = false;
    std::shared_ptr<TaskProgressHandler> released; // it holds this object by its connections
    {
        const std::lock_guard lock(mutex);
        Part& part = parts[index];
        if (std::exchange(part.heard, true)) {
            return;
        }
        auto how = GroupPlan::State::Done;
        if (part.error) {
            how = GroupPlan::State::Failed;
            m_failures.push_back(index);
        } else if (!part.successful && (part.canceled || part.handler->isCanceled())) {
            how = GroupPlan::State::Canceled;
            m_partCanceled = true;
        }
        for (const std::size_t skipped : plan.end(index, how)) {
            m_needless.push_back(skipped);
        }
        m_needless.push_back(index);
        released.swap(part.handler);
        stopNow = how != GroupPlan::State::Done && policy == GroupTask::Policy::StopAtFirstError;
    }
    if (stopNow) {
        stop();
    }
    wake();
}

void GroupRun::stop()
{
    {
        const std::lock_guard lock(mutex);
        m_stopping = true;
        for (const std::size_t skipped : plan.stop()) {
            m_needless.push_back(skipped);
        }
    }
    cancelRunning();
    wake();
}

std::vector<std::shared_ptr<TaskProgressHandler>> GroupRun::running()
{
    std::vector<std::shared_ptr<TaskProgressHandler>> handlers;
    const std::lock_guard lock(mutex);
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (plan.state(index) == GroupPlan::State::Running) {
            handlers.push_back(parts[index].handler);
        }
    }
    return handlers;
}

void GroupRun::cancelRunning()
{
    for (const auto& handler : running()) {
        if (!handler->isCanceled()) {
            handler->cancel();
        }
        handler->withdraw(); // it need not wait for its turn
    }
}

bool GroupRun::isPaused() const
{
    return m_core->state->isPauseRequsted();
}

/// In any thread, and in several at once. The request alone says what is wanted: whoever has acted on an
/// older one looks again. It is withdrawn without a call of this only while the group is not in its paused
/// state; then whoever made it is still here, since that state is entered before any part is asked to pause.
void GroupRun::follow()
{
    {
        const std::lock_guard lock(mutex);
        if (!m_begun) { // begin() follows
            return;
        }
    }
    bool paused = false;
    do {
        paused = isPaused();
        if (paused) {
            m_core->enterPausedIfAsked();
        }
        for (const auto& handler : running()) {
            paused ? handler->pause() : handler->continueWork();
        }
    } while (paused != isPaused());
    if (!paused) {
        wake();
    }
}

void GroupRun::conclude()
{
    GroupTask* const group = m_group; // this is its thread
    const bool asked = group->cancelRequested();
    if (!asked && !m_failures.empty()) {
        try {
            throwFailures(0);
        } catch (...) {
            group->enterErrorState(err::ConcurrentNestedException());
        }
    } else if (asked || m_partCanceled) {
        group->enterCancelledState();
    } else {
        group->enterSuccessfulState();
    }
}

/// The first failure outermost, each with the next one nested in it, the last with its own exception.
void GroupRun::throwFailures(std::size_t from)
{
    const Part& part = parts[m_failures[from]];
    try {
        if (from + 1 < std::min(m_failures.size(), mostFailures)) {
            throwFailures(from + 1);
        }
        std::rethrow_exception(part.error);
    } catch (...) {
        std::throw_with_nested(PartFailed(int(m_failures[from]), part.text, part.error));
    }
}

void GroupRun::detach()
{
    const std::shared_ptr<GroupRun> self = shared_from_this();
    std::vector<Task*> own;
    std::vector<QMetaObject::Connection> connections;
    Task* onStack = nullptr;
    {
        const std::lock_guard lock(mutex);
        m_group = nullptr;
        for (std::size_t index = 0; index < parts.size(); ++index) {
            auto& ofPart = parts[index].connections;
            connections.insert(connections.end(), ofPart.begin(), ofPart.end());
            if (Task* task = std::exchange(parts[index].task, nullptr)) {
                if (index == m_starting) {
                    onStack = task;
                } else {
                    own.push_back(task);
                }
            }
        }
    }
    stop();
    for (const QMetaObject::Connection& connection : connections) {
        QObject::disconnect(connection);
    }
    for (Task* task : own) {
        destroy(task);
    }
    if (onStack) {
        onStack->deleteLater();
    }
}

} // namespace veltor::concurrent
