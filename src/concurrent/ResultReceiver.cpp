// The owner-side companion of a task started elsewhere.

#include <veltor/concurrent/ResultReceiver.h>

#include <utility>

namespace veltor::concurrent {

ResultReceiver::ResultReceiver(QObject* parent)
    : QObject(parent)
{}

ResultReceiver::ResultReceiver(ProgressHandlerPtr handler, QObject* parent)
    : QObject(parent)
{
    setTaskHandler(std::move(handler));
}

ResultReceiver::~ResultReceiver()
{
    stopTask();
}

void ResultReceiver::setTaskHandler(ProgressHandlerPtr handler)
{
    if (m_handler) {
        disconnect(m_handler.get(), nullptr, this, nullptr);
    }
    m_handler = std::move(handler);
    if (m_handler) {
        connect(m_handler.get(), &ProgressHandler::successful, this, &ResultReceiver::resultReady);
    }
}

ProgressHandlerPtr ResultReceiver::taskHandler() const
{
    return m_handler;
}

void ResultReceiver::stopTask()
{
    stopTask(QDeadlineTimer(QDeadlineTimer::Forever));
}

bool ResultReceiver::stopTask(QDeadlineTimer deadline)
{
    const ProgressHandlerPtr handler = m_handler;
    if (!handler || handler->isFinished()) {
        return true;
    }
    handler->sendCancel();
    return handler->withdraw_impl() && handler->waitForFinished(deadline, QEventLoop::ExcludeUserInputEvents);
}

} // namespace veltor::concurrent
