// The state word of a task and its two requests.

#include "TaskStatePrivate.h"

namespace veltor::concurrent {

TaskState::TaskState()
    : m_p(std::make_unique<Private>())
{}

TaskState::~TaskState() = default;

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
    const std::lock_guard lock(m_p->mutex);
    return m_p->word;
}

void TaskState::enterState(States states)
{
    const States success = Finished | Successful;
    const std::lock_guard lock(m_p->mutex);
    m_p->replaceWord((states & success) == success ? success : states);
}

void TaskState::enterSuccessfulState_impl()
{
    const std::lock_guard lock(m_p->mutex);
    m_p->replaceWord(Finished | Successful);
}

void TaskState::cancelRequested()
{
    m_p->cancelRequested.store(true);
    // Passing through the mutex puts the flag before or behind the waiter's test of it, never between
    // that test and its going to sleep.
    const std::lock_guard lock(m_p->mutex);
    m_p->changed.notify_all();
    if (m_p->cancellation) {
        m_p->cancellation->cancel();
    }
}

bool TaskState::isCancelRequested() const noexcept
{
    return m_p->cancelRequested.load();
}

CancellationToken TaskState::cancellationToken() const
{
    const std::lock_guard lock(m_p->mutex);
    if (!m_p->cancellation) {
        m_p->cancellation.emplace();
        if (m_p->cancelRequested.load()) {
            m_p->cancellation->cancel();
        }
    }
    return m_p->cancellation->token();
}

void TaskState::pauseRequested() noexcept
{
    m_p->pauseRequested.store(true);
}

bool TaskState::isPauseRequsted() const noexcept
{
    return m_p->pauseRequested.load();
}

void TaskState::resume()
{
    const std::lock_guard lock(m_p->mutex);
    m_p->replaceWord(Running);
    m_p->pauseRequested.exchange(false);
}

void TaskState::Private::write(States states)
{
    word = states;
    ++writes;
}

/// Whatever the new word is, it ends a pause that somebody may be waiting in.
void TaskState::Private::replaceWord(States states)
{
    write(states);
    ++releases;
    changed.notify_all();
}

bool TaskState::Private::over() const
{
    return endClaimed || word.testFlag(Finished);
}

bool TaskState::Private::begin()
{
    const std::lock_guard lock(mutex);
    if (over() || !word.testFlag(Created)) {
        return false;
    }
    write(Running);
    return true;
}

TaskState::States TaskState::Private::wordAtReturn() const
{
    const std::lock_guard lock(mutex);
    return word.testFlag(Running) && writes == deciding ? States(Waiting) : word;
}

bool TaskState::Private::claimEnd(unsigned write)
{
    const std::lock_guard lock(mutex);
    if (over() || (write != 0 && write != writes)) {
        return false;
    }
    endClaimed = true;
    return true;
}

bool TaskState::Private::enterUnlessOver(State state)
{
    const std::lock_guard lock(mutex);
    if (over()) {
        return false;
    }
    replaceWord(state);
    return true;
}

bool TaskState::Private::enterPausedIfAsked()
{
    const std::lock_guard lock(mutex);
    if (over() || word.testFlag(Paused) || !pauseRequested.load()) {
        return false;
    }
    replaceWord(Paused);
    return true;
}

void TaskState::Private::leaveRunning()
{
    const std::lock_guard lock(mutex);
    if (word.testFlag(Running)) {
        replaceWord(Waiting);
    }
}

TaskState::Private::Pause TaskState::Private::beginPause()
{
    const std::lock_guard lock(mutex);
    if (over() || !pauseRequested.load()) {
        return {};
    }
    const bool entered = !word.testFlag(Paused);
    if (entered) {
        write(Paused);
    }
    ++waiting;
    return {entered, true, releases};
}

void TaskState::Private::waitForRelease(const Pause& pause)
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return releases != pause.releases || over() || cancelRequested.load(); });
    --waiting;
    if (!over() && word.testFlag(Paused)) { // woken by a cancel: the work runs on to its end
        write(Running);
        pauseRequested.exchange(false);
    }
}

TaskState::Private::Resumed TaskState::Private::resumeIfPaused()
{
    const std::lock_guard lock(mutex);
    if (over()) {
        return {};
    }
    pauseRequested.exchange(false);
    if (!word.testFlag(Paused)) {
        return {};
    }
    write(Running);
    deciding = waiting > 0 ? deciding : writes;
    return {true, waiting > 0, writes};
}

void TaskState::Private::release()
{
    const std::lock_guard lock(mutex);
    ++releases;
    changed.notify_all();
}

} // namespace veltor::concurrent
