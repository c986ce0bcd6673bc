// A QFutureWatcher as a progress handler.

#include <veltor/concurrent/FutureWatcherProgressHandler.h>

#include <veltor/err/Exceptions.h>

#include <QtCore/QFutureWatcher>

namespace veltor::concurrent {

FutureWatcherProgressHandler::FutureWatcherProgressHandler(QFutureWatcherBase* watcher)
    : m_watcher(watcher)
{
    if (!watcher) {
        throw err::NullArgument(QStringLiteral("watcher"));
    }
    using Watcher = QFutureWatcherBase;
    connect(watcher, &Watcher::progressValueChanged, this, [this](int value) {
        storeProgress(value);
        Q_EMIT progressValueChanged(value);
    });
    connect(watcher, &Watcher::progressRangeChanged, this, [this](int from, int to) {
        setProgressRange({double(from), double(to)});
    });
    connect(watcher, &Watcher::canceled, this, [this] {
        storeCanceled();
        Q_EMIT cancelRequest();
    });
    connect(watcher, &Watcher::finished, this, &ProgressHandler::finished);
    connect(watcher, &Watcher::progressTextChanged, this, &ProgressHandler::messageChanged);
}

FutureWatcherProgressHandler::~FutureWatcherProgressHandler() = default;

void FutureWatcherProgressHandler::cancel()
{
    ProgressHandler::cancel(); // the sub-handlers
    if (m_watcher) {
        m_watcher->cancel();
    }
}

bool FutureWatcherProgressHandler::isRunning_impl() const
{
    return m_watcher && m_watcher->isRunning();
}

bool FutureWatcherProgressHandler::isFinished_impl() const
{
    return !m_watcher || m_watcher->isFinished();
}

bool FutureWatcherProgressHandler::isCanceled_impl() const
{
    return m_watcher && m_watcher->isCanceled();
}

} // namespace veltor::concurrent
