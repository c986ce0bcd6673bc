#include <veltor/concurrent/ProgressHandler.h>

#include "Post.h"

#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace veltor::concurrent {

ProgressHandler::ProgressHandler(QObject* parent)
    : QObject(parent)
    , m_id(QUuid::createUuid())
{}

ProgressHandler::~ProgressHandler() = default;

/// Runs @p effect as the invoke type says. The plain case, a write from the handler's own thread, needs no
/// event; and where no thread delivers events to the handler any more, an event would only be lost.
template <typename F>
void ProgressHandler::write(F effect)
{
    const Qt::ConnectionType type = m_invokeType.load();
    const QThread* home = thread();
    const bool own = home == QThread::currentThread();
    if (!home || type == Qt::DirectConnection || (own && type == Qt::AutoConnection) || home->isFinished()) {
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
        double former = m_progress.load();
        while (!m_progress.compare_exchange_weak(former, former + increment.value)) {
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
        if (!m_ignoreFinal.load()) {
            setProgress_impl(range().end);
        }
    });
}

void ProgressHandler::setProgress_impl(double value)
{
    emitProgress(m_progress.exchange(value), value);
}

double ProgressHandler::progress() const noexcept
{
    return m_progress.load();
}

Range ProgressHandler::range() const
{
    return range_impl();
}

const QUuid& ProgressHandler::id() const noexcept
{
    return m_id;
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
    return ExtraDataFlags(QFlag(m_extraData.load()));
}

void ProgressHandler::setExtraData(const QFlags<ExtraData>& flags) noexcept
{
    m_extraData.store(static_cast<int>(flags));
}

void ProgressHandler::setIgnoreFinal(bool ignore) noexcept
{
    m_ignoreFinal.store(ignore);
}

void ProgressHandler::setInvokeType(Qt::ConnectionType type) noexcept
{
    m_invokeType.store(type);
}

void ProgressHandler::finish() noexcept
{
    m_finished.store(true);
}

void ProgressHandler::setError(const err::ConcurrentNestedException& error)
{
    setError_impl(error);
}

void ProgressHandler::registerSubHandler(std::shared_ptr<ProgressHandler> handler)
{
    if (handler) {
        const std::lock_guard lock(m_mutex);
        m_subHandlers.push_back(std::move(handler));
    }
}

void ProgressHandler::waitForFinished(QFlags<QEventLoop::ProcessEventsFlag> flags)
{
    if (isFinished_impl()) {
        return;
    }
    QEventLoop loop;
    connect(this, &ProgressHandler::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    if (!isFinished_impl()) { // the end may have come before the connection
        loop.exec(flags);
    }
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
        // See all that the thread that released the handler did, as in Handoff.
        static_cast<void>(m_released.load(std::memory_order_acquire));
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
    waitForFinished(QEventLoop::ExcludeUserInputEvents);
}

void ProgressHandler::stopTaskWithoutEvents()
{
    sendCancel();
    while (!isFinished_impl()) {
        QThread::yieldCurrentThread();
    }
}

void ProgressHandler::cancel()
{
    m_canceled.store(true);
    // A sub-handler's cancel() may run foreign code, which may come back here: it gets a copy of the list,
    // and no lock. The copy also keeps the handlers alive meanwhile.
    std::vector<std::shared_ptr<ProgressHandler>> subHandlers;
    {
        const std::lock_guard lock(m_mutex);
        subHandlers = m_subHandlers;
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
    return m_finished.load();
}

bool ProgressHandler::isCanceled_impl() const
{
    return m_canceled.load();
}

Range ProgressHandler::range_impl() const
{
    const std::lock_guard lock(m_mutex);
    return m_range;
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

void ProgressHandler::storeRange(Range range)
{
    const std::lock_guard lock(m_mutex);
    m_range = range;
}

void ProgressHandler::storeProgress(double value) noexcept
{
    m_progress.store(value);
}

struct ReleasedMark
{
    static void set(ProgressHandler& handler) noexcept
    {
        handler.m_released.store(true, std::memory_order_release);
    }
};

void releaseHandler(ProgressHandler* handler)
{
    QThread* home = handler->thread();
    if (home && home != QThread::currentThread() && home->isRunning()) {
        ReleasedMark::set(*handler);
        handler->deleteLater();
    } else {
        delete handler;
    }
}

} // namespace veltor::concurrent
