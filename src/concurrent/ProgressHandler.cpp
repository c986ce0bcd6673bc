// The observable face of a running operation.

#include <veltor/concurrent/ProgressHandler.h>

#include "EventThread.h"
#include "Post.h"
#include "ProgressHandlerPrivate.h"

#include <QtCore/QEvent>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace veltor::concurrent {
namespace {

constexpr qint64 longestTimerMs = 1000 * 60 * 60 * 24;

// Every type that signal and slot signatures spell, before main() runs: a queued connection that names an
// unknown type would silently deliver nothing. In this source, so that whoever takes the class from a static
// library gets it too.
void registerMetaTypes()
{
    qRegisterMetaType<Range>("concurrent::Range");
    qRegisterMetaType<Range>("Range");
    qRegisterMetaType<progress::Add>("progress::Add");
    qRegisterMetaType<CancelMethod>("concurrent::CancelMethod");
}

Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

} // namespace

ProgressHandler::ProgressHandler(QObject* parent)
    : QObject(parent)
    , m_p(std::make_unique<Private>())
{}

ProgressHandler::~ProgressHandler()
{
    m_p->follow(*this, nullptr);
}

/// Runs @p effect as the invoke type says. The plain case, a write from the handler's own thread, needs no
/// event; and where no thread delivers events to the handler any more, an event would only be lost. The
/// thread of a task's handler is not looked at for that: it may be deleted any moment.
template <typename F>
void ProgressHandler::write(F effect)
{
    const Qt::ConnectionType type = m_p->invokeType.load();
    const QThread* home = thread();
    const bool own = home == QThread::currentThread();
    const bool waits = type == Qt::BlockingQueuedConnection; // for itself, in its own thread
    if (!home || type == Qt::DirectConnection || (own && (type == Qt::AutoConnection || waits)) ||
        (m_p->task ? m_p->homeless.load() : home->isFinished())) {
        effect();
    } else {
        post(this, std::move(effect), type);
    }
}

void ProgressHandler::emitProgress(double former, double value)
{
    Q_EMIT progressValueChanged(value);
    Q_EMIT progressValueIncreased(progress::Add{std::abs(value - former)});
}

void ProgressHandler::setProgress(double value)
{
    write([this, value] { setProgress_impl(value); });
}

void ProgressHandler::setProgress(progress::Add increment)
{
    write([this, increment] {
        double former = m_p->progress.load();
        while (!m_p->progress.compare_exchange_weak(former, former + increment.value)) {
        }
        emitProgress(former, former + increment.value);
    });
}

void ProgressHandler::setProgressRange(Range range)
{
    write([this, range] {
        setProgressRange_impl(range);
        storeProgress(range.start);
        Q_EMIT progressValueChanged(range.start);
        Q_EMIT progressValueIncreased(progress::Add{0}); // of an infinite start too
    });
}

void ProgressHandler::setFinalProgress()
{
    // The scale is looked up where the value is set: a new one may be on its way there.
    write([this] {
        if (!m_p->ignoreFinal.load()) {
            setProgress_impl(range().end);
        }
    });
}

void ProgressHandler::setProgress_impl(double value)
{
    emitProgress(m_p->progress.exchange(value), value);
}

double ProgressHandler::progress() const noexcept
{
    return m_p->progress.load();
}

Range ProgressHandler::range() const
{
    return range_impl();
}

const QUuid& ProgressHandler::id() const noexcept
{
    const std::lock_guard lock(m_p->mutex);
    if (m_p->id.isNull()) {
        m_p->id = QUuid::createUuid();
    }
    return m_p->id;
}

bool ProgressHandler::isRunning() const
{
    return isRunning_impl();
}

bool ProgressHandler::isFinished() const
{
    return isFinished_impl();
}

bool ProgressHandler::isCanceled() const
{
    return isCanceled_impl();
}

bool ProgressHandler::isDeleted() const noexcept
{
    return d_ptr->wasDeleted || d_ptr->isDeletingChildren;
}

void ProgressHandler::setMessage(const QString& text)
{
    Q_EMIT messageChanged(text);
}

void ProgressHandler::setWindowTitle(const QString& title)
{
    Q_EMIT windowTitleChanged(title);
}

void ProgressHandler::showProgress()
{
    Q_EMIT showProgressByRequest();
}

void ProgressHandler::hide()
{
    Q_EMIT hideProgress(true);
}

void ProgressHandler::show()
{
    Q_EMIT hideProgress(false);
}

void ProgressHandler::enableCancelable()
{
    Q_EMIT cancelableFlagChanged(true);
}

void ProgressHandler::disableCancelable()
{
    Q_EMIT cancelableFlagChanged(false);
}

void ProgressHandler::setCancelMethod(std::function<void()> method)
{
    Q_EMIT cancelMethodChanged(std::move(method));
}

QFlags<ProgressHandler::ExtraData> ProgressHandler::extraData() const noexcept
{
    return ExtraDataFlags(QFlag(m_p->extraData.load()));
}

void ProgressHandler::setExtraData(const QFlags<ExtraData>& flags) noexcept
{
    m_p->extraData.store(static_cast<int>(flags));
}

void ProgressHandler::setIgnoreFinal(bool ignore) noexcept
{
    m_p->ignoreFinal.store(ignore);
}

void ProgressHandler::setInvokeType(Qt::ConnectionType type) noexcept
{
    m_p->invokeType.store(type);
}

void ProgressHandler::finish() noexcept
{
    m_p->finished.store(true);
}

void ProgressHandler::setError(const err::ConcurrentNestedException& error)
{
    setError_impl(error);
}

void ProgressHandler::registerSubHandler(std::shared_ptr<ProgressHandler> handler)
{
    if (handler) {
        const std::lock_guard lock(m_p->mutex);
        m_p->subHandlers.push_back(std::move(handler));
    }
}

CancellationToken ProgressHandler::cancellationToken() const
{
    return cancellationToken_impl();
}

void ProgressHandler::waitForFinished(QFlags<QEventLoop::ProcessEventsFlag> flags)
{
    waitForFinished(QDeadlineTimer(QDeadlineTimer::Forever), flags);
}

bool ProgressHandler::waitForFinished(QDeadlineTimer deadline, QFlags<QEventLoop::ProcessEventsFlag> flags)
{
    const bool ofTask = m_p->task != nullptr; // finished() may be that of a part, passed on
    bool ended = isFinished_impl();
    if (ended) {
        return true;
    }
    QEventLoop loop;
    QTimer limit;
    connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(
        this, &ProgressHandler::finished, &loop,
        [&] {
            ended = true;
            loop.quit();
        },
        Qt::QueuedConnection);
    while (!isFinished_impl() && !deadline.hasExpired()) { // the end may have come before the connection
        if (!deadline.isForever()) {
            limit.start(int(std::min<qint64>(deadline.remainingTime(), longestTimerMs)));
        }
        loop.exec(flags);
        if (ended && !ofTask) {
            return true;
        }
        ended = false;
    }
    return isFinished_impl();
}

void ProgressHandler::throwIfCanceled() const
{
    if (isCanceled_impl()) {
        throw std::runtime_error(tr("Операция была прервана").toStdString());
    }
}

bool ProgressHandler::event(QEvent* event)
{
    if (event->type() == QEvent::DeferredDelete) {
        seen(this);
    }
    return QObject::event(event);
}

void ProgressHandler::sendCancel()
{
    cancel();
    Q_EMIT canceled();
    Q_EMIT cancelRequest();
}

void ProgressHandler::stopTaskWithEvents()
{
    sendCancel();
    if (withdraw_impl()) {
        waitForFinished(QEventLoop::ExcludeUserInputEvents);
    }
}

void ProgressHandler::stopTaskWithoutEvents()
{
    sendCancel();
    while (withdraw_impl() && !isFinished_impl()) {
        QThread::yieldCurrentThread();
    }
}

void ProgressHandler::cancel()
{
    storeCanceled();
    // A sub-handler's cancel() may run foreign code, which may come back here: it gets a copy of the list,
    // and no lock. The copy also keeps the handlers alive meanwhile.
    std::vector<std::shared_ptr<ProgressHandler>> subHandlers;
    {
        const std::lock_guard lock(m_p->mutex);
        subHandlers = m_p->subHandlers;
    }
    for (const std::shared_ptr<ProgressHandler>& handler : subHandlers) {
        handler->cancel();
    }
}

bool ProgressHandler::isRunning_impl() const
{
    return !isFinished_impl();
}

bool ProgressHandler::isFinished_impl() const
{
    return m_p->finished.load();
}

bool ProgressHandler::isCanceled_impl() const
{
    return m_p->canceled.load();
}

Range ProgressHandler::range_impl() const
{
    const std::lock_guard lock(m_p->mutex);
    return m_p->range;
}

void ProgressHandler::setProgressRange_impl(Range range)
{
    storeRange(range);
    Q_EMIT progressRangeChanged(range);
}

void ProgressHandler::setError_impl(const err::ConcurrentNestedException& exception)
{
    Q_EMIT error(exception);
}

CancellationToken ProgressHandler::cancellationToken_impl() const
{
    const std::lock_guard lock(m_p->mutex);
    if (!m_p->cancellation) {
        m_p->cancellation.emplace();
        if (m_p->canceled.load()) {
            m_p->cancellation->cancel();
        }
    }
    return m_p->cancellation->token();
}

bool ProgressHandler::withdraw_impl()
{
    return true;
}

void ProgressHandler::storeCanceled()
{
    m_p->canceled.store(true);
    const std::lock_guard lock(m_p->mutex);
    if (m_p->cancellation) {
        m_p->cancellation->cancel();
    }
}

void ProgressHandler::storeRange(Range range)
{
    const std::lock_guard lock(m_p->mutex);
    m_p->range = range;
}

void ProgressHandler::storeProgress(double value) noexcept
{
    m_p->progress.store(value);
}

void ProgressHandler::Private::follow(const ProgressHandler& handler, const QThread* thread)
{
    if (threadFinished) {
        disconnect(threadStarted);
        disconnect(threadFinished);
    }
    homeless.store(false);
    if (thread && !dynamic_cast<const EventThread*>(thread)) {
        threadStarted = connect(thread, &QThread::started, &handler,
                                posted([this] { homeless.store(false); }), Qt::DirectConnection);
        threadFinished = connect(thread, &QThread::finished, &handler,
                                 posted([this] { homeless.store(true); }), Qt::DirectConnection);
    }
}

struct HandlerAccess
{
    /// Whether the handler's own thread must destroy it, and will.
    static bool hasOtherHome(const ProgressHandler& handler)
    {
        QThread* home = handler.thread();
        if (!home || home == QThread::currentThread()) {
            return false;
        }
        return handler.m_p->task ? !handler.m_p->homeless.load() : home->isRunning();
    }
};

void releaseHandler(ProgressHandler* handler)
{
    if (HandlerAccess::hasOtherHome(*handler)) {
        handOver(handler);
        handler->deleteLater();
    } else {
        delete handler;
    }
}

} // namespace veltor::concurrent
