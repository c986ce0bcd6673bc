// The way of a result from its start to its end, and from one result to the next.

#include <veltor/concurrent/ResultCore.h>

#include "ContextLink.h"
#include "FunctionQueue.h"

#include <veltor/err/Exceptions.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace veltor::concurrent {
namespace {

using State = ResultCore::State;

const logging::LoggerMessager resultLog(logging::LogLevel::Error, "concurrent/ResultCore.cpp", __LINE__,
                                        "veltor::concurrent::ResultCore::~ResultCore()");

/// A node on its way through a thread's events; destroyed undelivered, it cancels the node.
class Delivery
{
public:
    explicit Delivery(ResultCore::Ptr node)
        : m_node(std::move(node))
    {}
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    ~Delivery() { m_node->abandon(); }

    void deliver() { m_node->run(); }

private:
    const ResultCore::Ptr m_node;
};

bool matches(ResultCore::Wants wants, State end)
{
    switch (wants) {
    case ResultCore::Wants::Success:
        return end == State::Succeeded;
    case ResultCore::Wants::Failure:
        return end == State::Failed;
    case ResultCore::Wants::Cancellation:
        return end == State::Canceled;
    case ResultCore::Wants::Any:
        break;
    }
    return true;
}

} // namespace

ResultCore::ResultCore() = default;

ResultCore::~ResultCore()
{
    if (state() == State::Failed && !m_looked.load()) {
        reportUnseen();
    }
}

void ResultCore::reportUnseen() noexcept
{
    try {
        const QString text =
            QCoreApplication::translate("TaskResult", "Ошибка, о которой никто не спросил: %1");
        try {
            std::rethrow_exception(m_error);
        } catch (const std::exception& reason) {
            resultLog.write(text.arg(QString::fromUtf8(reason.what())));
        } catch (...) {
            resultLog.write(text.arg(QLatin1String("?")));
        }
    } catch (...) { // a sink that throws, or no memory: there is nobody left to tell
    }
}

/// A request to cancel keeps it from running. What was made to look at an end looks at it all the same.
bool ResultCore::isWork() const noexcept
{
    return m_source || m_wants == Wants::Success;
}

ResultCore::Ptr ResultCore::former()
{
    const std::lock_guard lock(m_mutex);
    return m_former;
}

void ResultCore::start(TaskThreadPool* pool, TaskThreadPool::Priority priority)
{
    if (!pool) {
        throw err::NullArgument(QStringLiteral("pool"));
    }
    m_queue = FunctionQueue::of(pool);
    m_priority = priority;
    dispatch();
}

void ResultCore::startAfter(Ptr former, Wants wants, QObject* context)
{
    if (!context) {
        throw err::NullArgument(QStringLiteral("context"));
    }
    m_context = ContextLink::make(context);
    startAfter(std::move(former), wants);
}

void ResultCore::startAfter(Ptr former, Wants wants, TaskThreadPool* pool)
{
    m_queue = FunctionQueue::of(pool);
    startAfter(std::move(former), wants);
}

void ResultCore::startAfter(Ptr former, Wants wants)
{
    m_source = false;
    m_wants = wants;
    const Ptr kept = std::move(former); // its end may come at once, and let go of it
    m_former = kept;
    kept->m_looked.store(true);
    kept->whenEnded([self = shared_from_this()] { self->formerEnded(); });
}

void ResultCore::formerEnded()
{
    Ptr before;
    {
        const std::lock_guard lock(m_mutex);
        if (state() != State::Waiting) { // cancelled, or run by a helper, who may follow another by now
            return;
        }
        before = m_former;
    }
    const State end = before->state();
    if (matches(m_wants, end)) {
        dispatch();
        return;
    }
    if (end == State::Succeeded) {
        adopt(before);
    }
    finish(end, before->error());
}

void ResultCore::dispatch()
{
    if (m_queue) {
        m_queue->push(shared_from_this(), m_priority);
        return;
    }
    std::shared_ptr<ContextLink> context;
    {
        const std::lock_guard lock(m_mutex);
        context = m_context;
    }
    if (context) { // else it has ended meanwhile
        context->post([delivery = std::make_shared<Delivery>(shared_from_this())] { delivery->deliver(); });
    }
}

bool ResultCore::claim()
{
    {
        const std::lock_guard lock(m_mutex);
        if (state() != State::Waiting) {
            return false;
        }
        if (!isWork() || !cancelRequested()) {
            m_state.store(State::Running, std::memory_order_release);
            return true;
        }
    }
    abandon();
    return false;
}

void ResultCore::run()
{
    if (!claim()) {
        return;
    }
    tell(State::Running, nullptr);
    State end = State::Failed;
    std::exception_ptr thrown;
    try {
        end = call();
    } catch (const Canceled&) {
        end = State::Canceled;
    } catch (...) {
        thrown = std::current_exception();
        const Ptr before = former();
        if (before && before->error() == thrown) { // looked at
            m_looked.store(true);
        }
    }
    forget(); // what the function holds is gone before anybody hears of the end
    if (end != State::Running) {
        finish(cancelRequested() ? State::Canceled : end, thrown);
    }
}

void ResultCore::abandon()
{
    {
        const std::lock_guard lock(m_mutex);
        if (state() != State::Waiting) {
            return;
        }
        m_state.store(State::Running, std::memory_order_release); // claimed for this end
    }
    forget();
    finish(State::Canceled, nullptr);
}

void ResultCore::finish(State end, const std::exception_ptr& thrown)
{
    std::vector<std::function<void()>> observers;
    std::shared_ptr<ContextLink> context;
    Ptr former;
    bool waited = false;
    {
        const std::lock_guard lock(m_mutex);
        if (ended()) {
            return;
        }
        waited = state() == State::Waiting;
        m_error = end == State::Failed ? thrown : nullptr;
        m_state.store(end, std::memory_order_release);
        observers.swap(m_observers);
        former.swap(m_former);
        context.swap(m_context);
        m_changed.notify_all();
    }
    if (waited) {
        forget();
    }
    if (context) {
        context->release();
    }
    tell(end, thrown);
    for (const std::function<void()>& observer : observers) {
        observer();
    }
}

void ResultCore::follow(const Ptr& inner)
{
    inner->m_looked.store(true);
    {
        const std::lock_guard lock(m_mutex);
        m_former = inner;
        m_changed.notify_all(); // whoever waits may help the other one
    }
    inner->whenEnded([self = shared_from_this()] { self->followedEnded(); });
    if (cancelRequested()) {
        inner->cancel();
    }
}

void ResultCore::followedEnded()
{
    const Ptr inner = former();
    if (inner->state() == State::Succeeded) {
        adopt(inner);
    }
    finish(cancelRequested() ? State::Canceled : inner->state(), inner->error());
}

void ResultCore::whenEnded(std::function<void()> observer)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!ended()) {
            m_observers.push_back(std::move(observer));
            return;
        }
    }
    observer();
}

void ResultCore::cancel()
{
    // From the first result of the chain on: a later one ends when that does.
    Ptr first = shared_from_this();
    for (Ptr node = first; node && !node->ended(); node = node->former()) {
        if (node->isWork()) {
            node->requestCancel();
        }
        first = node;
    }
    if (first->isWork()) {
        first->abandon();
    }
}

void ResultCore::requestCancel()
{
    m_cancelRequested.store(true);
    std::optional<CancellationSource> cancellation;
    {
        const std::lock_guard lock(m_mutex);
        cancellation = m_cancellation;
    }
    if (cancellation) {
        cancellation->cancel();
    }
}

CancellationToken ResultCore::token()
{
    const std::lock_guard lock(m_mutex);
    if (!m_cancellation) {
        m_cancellation.emplace();
    }
    if (cancelRequested()) {
        m_cancellation->cancel();
    }
    return m_cancellation->token();
}

std::exception_ptr ResultCore::error()
{
    const std::lock_guard lock(m_mutex);
    if (m_error) {
        m_looked.store(true);
    }
    return m_error;
}

void ResultCore::rethrow()
{
    wait(ULONG_MAX);
    if (const std::exception_ptr thrown = error()) {
        std::rethrow_exception(thrown);
    }
    if (state() == State::Canceled) {
        throw Canceled();
    }
}

bool ResultCore::wait(unsigned long ms)
{
    if (ms == ULONG_MAX) {
        waitHelping();
        return true;
    }
    constexpr unsigned long longestMs = 1'000'000'000; // a clock's sums do not overflow
    const auto limit = std::chrono::milliseconds(std::min(ms, longestMs));
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this] { return ended(); });
}

void ResultCore::waitHelping()
{
    while (!ended()) {
        const Ptr before = former();
        if (before && !before->ended()) {
            before->waitHelping();
        } else if (!help(before)) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return ended() || m_former != before; });
        }
    }
}

/// Runs the function here when only the calling thread, or it as well, could do so; true when it did.
bool ResultCore::help(const Ptr& former)
{
    if (state() != State::Waiting || (former && !matches(m_wants, former->state()))) {
        return false;
    }
    std::shared_ptr<ContextLink> context;
    {
        const std::lock_guard lock(m_mutex);
        context = m_context;
    }
    if (m_queue) {
        return m_queue->runHere(shared_from_this());
    }
    if (context && context->isHere()) {
        run();
        return true;
    }
    return false;
}

void ResultCore::throwTaken()
{
    throw err::UnsupportedOperation(
        QCoreApplication::translate("TaskResult", "Значение результата уже взято"));
}

void ResultCore::throwInvalid()
{
    throw err::NullArgument(QStringLiteral("result"));
}

} // namespace veltor::concurrent
