#include <veltor/concurrent/TaskState.h>

namespace veltor::concurrent {

bool TaskState::is(State state) const
{
    return has(state);
}

bool TaskState::has(States wanted) const
{
    const States word = states();
    return (word & wanted) == wanted && (wanted != States() || word == States());
}

TaskState::States TaskState::states() const
{
    const std::lock_guard lock(m_mutex);
    return m_state;
}

void TaskState::enterState(States states)
{
    const States success = Finished | Successful;
    const std::lock_guard lock(m_mutex);
    replaceWord((states & success) == success ? success : states);
}

void TaskState::enterSuccessfulState_impl()
{
    const std::lock_guard lock(m_mutex);
    replaceWord(Finished | Successful);
}

void TaskState::cancelRequested()
{
    m_cancelRequested.store(true);
    // Passing through the mutex puts the flag before or behind the waiter's test of it, never between
    // that test and its going to sleep.
    const std::lock_guard lock(m_mutex);
    m_changed.notify_all();
}

bool TaskState::isCancelRequested() const noexcept
{
    return m_cancelRequested.load();
}

void TaskState::pauseRequested() noexcept
{
    m_pauseRequested.store(true);
}

bool TaskState::isPauseRequsted() const noexcept
{
    return m_pauseRequested.load();
}

void TaskState::resume()
{
    const std::lock_guard lock(m_mutex);
    replaceWord(Running);
    m_pauseRequested.exchange(false);
}

/// Whatever the new word is, it ends a pause that somebody may be waiting in.
void TaskState::replaceWord(States states)
{
    m_state = states;
    ++m_releases;
    m_changed.notify_all();
}

bool TaskState::over() const
{
    return m_endClaimed || m_state.testFlag(Finished);
}

bool TaskState::begin()
{
    const std::lock_guard lock(m_mutex);
    if (over() || !m_state.testFlag(Created)) {
        return false;
    }
    m_state = Running;
    return true;
}

bool TaskState::claimEnd()
{
    const std::lock_guard lock(m_mutex);
    if (over()) {
        return false;
    }
    m_endClaimed = true;
    return true;
}

bool TaskState::enterUnlessOver(State state)
{
    const std::lock_guard lock(m_mutex);
    if (over()) {
        return false;
    }
    replaceWord(state);
    return true;
}

TaskState::Pause TaskState::beginPause()
{
    const std::lock_guard lock(m_mutex);
    const bool entered = !over() && !m_state.testFlag(Paused);
    if (entered) {
        m_state = Paused;
    }
    ++m_waiting;
    return {entered, m_releases};
}

void TaskState::waitForRelease(const Pause& pause)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_releases != pause.releases || over() || m_cancelRequested.load(); });
    --m_waiting;
    if (!over() && m_state.testFlag(Paused)) { // woken by a cancel: the work runs on to its end
        m_state = Running;
        m_pauseRequested.exchange(false);
    }
}

TaskState::Resumed TaskState::resumeIfPaused()
{
    const std::lock_guard lock(m_mutex);
    if (over() || !m_state.testFlag(Paused)) {
        return Resumed::No;
    }
    m_state = Running;
    m_pauseRequested.exchange(false);
    return m_waiting > 0 ? Resumed::ForWait : Resumed::Yes;
}

void TaskState::release()
{
    const std::lock_guard lock(m_mutex);
    ++m_releases;
    m_changed.notify_all();
}

} // namespace veltor::concurrent
