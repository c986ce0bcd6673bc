// A task's transitions and its life, as seen by whoever may be in another thread.

#include "TaskCore.h"

#include "TaskStatePrivate.h"

#include <algorithm>

namespace veltor::concurrent {

/// A call that is not done with the task.
class TaskCore::Use
{
public:
    explicit Use(TaskCore& core)
        : m_core(core)
    {
        const std::lock_guard lock(m_core.m_mutex);
        ++m_core.m_uses;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use()
    {
        std::shared_ptr<TaskOwner> owner;
        {
            const std::lock_guard lock(m_core.m_mutex);
            if (--m_core.m_uses == 0 && std::exchange(m_core.m_deleteWanted, false)) {
                owner = m_core.m_owner;
            }
        }
        if (owner) {
            owner->onReleased();
        }
    }

private:
    TaskCore& m_core;
};

TaskCore::TaskCore(Task* task)
    : state(QSharedPointer<TaskState>::create())
    , m_task(task)
{}

std::shared_ptr<TaskProgressHandler> TaskCore::handler() const
{
    const std::lock_guard lock(m_mutex);
    return m_handler;
}

std::shared_ptr<TaskProgressHandler> TaskCore::setHandler(std::shared_ptr<TaskProgressHandler> handler)
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_handler, std::move(handler));
}

bool TaskCore::adopt(std::shared_ptr<TaskOwner> owner)
{
    const std::lock_guard lock(m_mutex);
    if (m_owner) {
        return false;
    }
    m_owner = std::move(owner);
    m_handedOver = true;
    return true;
}

void TaskCore::passTo(std::shared_ptr<TaskOwner> owner)
{
    const std::lock_guard lock(m_mutex);
    m_owner.swap(owner); // the former one goes without the lock
}

void TaskCore::release()
{
    passTo(nullptr);
    const std::lock_guard lock(m_mutex);
    m_handedOver = false;
}

bool TaskCore::isHandedOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_handedOver;
}

void TaskCore::setHandedOver()
{
    const std::lock_guard lock(m_mutex);
    m_handedOver = true;
}

bool TaskCore::withdraw()
{
    std::shared_ptr<TaskOwner> owner;
    {
        const std::lock_guard lock(m_mutex);
        owner = m_owner;
    }
    return owner && owner->withdraw();
}

bool TaskCore::onlyWaits() const
{
    const std::lock_guard lock(m_mutex);
    return m_onlyWaits;
}

void TaskCore::setOnlyWaits(bool waits)
{
    const std::lock_guard lock(m_mutex);
    m_onlyWaits = waits;
}

bool TaskCore::mayDelete()
{
    const std::lock_guard lock(m_mutex);
    if (m_uses > 0) {
        m_deleteWanted = true;
        return false;
    }
    m_task = nullptr; // before a subclass's destructor begins
    return true;
}

void TaskCore::close()
{
    std::unique_lock lock(m_mutex);
    m_task = nullptr;
    m_deleteWanted = false;
    const auto others = [self = std::this_thread::get_id()](std::thread::id id) { return id != self; };
    m_visited.wait(lock, [&] { return std::none_of(m_visitors.begin(), m_visitors.end(), others); });
}

void TaskCore::destroyed()
{
    std::shared_ptr<TaskOwner> owner;
    {
        const std::lock_guard lock(m_mutex);
        owner = std::move(m_owner);
    }
    if (owner) {
        owner->onDestroyed();
    }
}

bool TaskCore::isClosed() const
{
    const std::lock_guard lock(m_mutex);
    return !m_task;
}

void TaskCore::visit(const std::function<void(Task&)>& function)
{
    Task* task = nullptr;
    const Use use(*this);
    {
        const std::lock_guard lock(m_mutex);
        if (!m_task) {
            return;
        }
        task = m_task;
        m_visitors.push_back(std::this_thread::get_id());
    }
    try {
        function(*task);
    } catch (...) {
        fail();
    }
    const std::lock_guard lock(m_mutex);
    m_visitors.erase(std::find(m_visitors.begin(), m_visitors.end(), std::this_thread::get_id()));
    m_visited.notify_all();
}

void TaskCore::run(Task& task)
{
    if (!state->m_p->begin()) {
        return;
    }
    const Use use(*this);
    Q_EMIT handler()->started();
    if (isClosed()) { // by an observer
        return;
    }
    try {
        task.onStart();
    } catch (const Canceled&) {
        end(TaskState::Finished | TaskState::Cancelled);
    } catch (...) {
        fail();
    }
    const TaskState::States word = state->m_p->wordAtReturn();
    if (word.testFlag(TaskState::Running)) {
        end(TaskState::Finished | TaskState::Successful);
    } else if (!word.testFlag(TaskState::Waiting)) {
        end(TaskState::Finished);
    }
}

void TaskCore::pause()
{
    if (state->is(TaskState::Running) || state->is(TaskState::Waiting)) {
        visit([](Task& task) { task.onPauseRequested(); });
    }
}

void TaskCore::continueWork()
{
    const TaskState::Private::Resumed resumed = state->m_p->resumeIfPaused();
    if (!resumed.was) {
        return;
    }
    visit([](Task& task) { task.onContinue(); });
    if (resumed.forWait) {
        state->m_p->release();
    } else { // still running, by this resumption and no other
        end(TaskState::Finished | TaskState::Successful, nullptr, resumed.write);
    }
}

void TaskCore::askToCancel(Task& task)
{
    try {
        task.onCancelRequested();
    } catch (...) {
        fail();
    }
}

void TaskCore::enterPaused()
{
    const std::shared_ptr<TaskProgressHandler> observed = handler();
    if (state->m_p->enterUnlessOver(TaskState::Paused)) {
        Q_EMIT observed->paused();
    }
}

void TaskCore::enterWaiting()
{
    state->m_p->enterUnlessOver(TaskState::Waiting);
}

void TaskCore::enterPausedIfAsked()
{
    const std::shared_ptr<TaskProgressHandler> observed = handler();
    if (state->m_p->enterPausedIfAsked()) {
        Q_EMIT observed->paused();
    }
}

void TaskCore::leaveRunning()
{
    state->m_p->leaveRunning();
}

void TaskCore::end(TaskState::States word, const err::ConcurrentNestedException* error, unsigned write)
{
    const std::shared_ptr<TaskCore> self = shared_from_this();
    const std::shared_ptr<TaskProgressHandler> observed = handler();
    const std::shared_ptr<TaskOwner> owner = [this] {
        const std::lock_guard lock(m_mutex);
        return m_owner;
    }();
    const Use use(*this);
    if (!state->m_p->claimEnd(write)) {
        return;
    }
    const auto enter = [&] {
        if (error) {
            state->cancelRequested();
        }
        state->enterState(word);
        if (owner) {
            owner->onEnd();
        }
    };
    try {
        observed->setFinalProgress();
    } catch (...) { // an observer's: whoever waits for the end must see it
        enter();
        throw;
    }
    enter();
    if (error) {
        Q_EMIT observed->error(*error);
    }
    if (word.testFlag(TaskState::Successful)) {
        Q_EMIT observed->successful();
    } else if (word.testFlag(TaskState::Cancelled)) {
        Q_EMIT observed->canceled();
    }
    Q_EMIT observed->finished(); // NOLINT(readability-misleading-indentation): Q_EMIT is empty
}

void TaskCore::fail()
{
    const err::ConcurrentNestedException error;
    end(TaskState::Finished | TaskState::Cancelled | TaskState::Error, &error);
}

bool TaskCore::waitWhilePaused()
{
    if (state->isPauseRequsted() && !state->isCancelRequested()) {
        const std::shared_ptr<TaskProgressHandler> observed = handler();
        const TaskState::Private::Pause pause = state->m_p->beginPause();
        if (pause.entered) {
            Q_EMIT observed->paused();
        }
        if (pause.waits) {
            state->m_p->waitForRelease(pause);
        }
    }
    return !state->isCancelRequested();
}

} // namespace veltor::concurrent
