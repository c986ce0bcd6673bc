#pragma once

#include <veltor/concurrent/ProgressHandler.h>

#include <QtCore/QPointer>

class QFutureWatcherBase;

namespace veltor::concurrent {

/// Shows a QFutureWatcher as a progress handler: its progress, texts, cancellation and end.
///
/// The watcher's value becomes the handler's, with progressValueChanged() and no increment. A watcher that
/// was destroyed counts as finished. Lives in the watcher's thread, and is asked and cancelled there.
class VELTOR_UTILS_EXPORT FutureWatcherProgressHandler : public ProgressHandler
{
    Q_OBJECT

public:
    /// @throws err::NullArgument when @p watcher is null
    explicit FutureWatcherProgressHandler(QFutureWatcherBase* watcher);
    ~FutureWatcherProgressHandler() override;

    /// Cancels the watched future and the sub-handlers.
    void cancel() override;

protected:
    /// The watcher's answer.
    /// @{
    bool isRunning_impl() const override;
    bool isFinished_impl() const override;
    bool isCanceled_impl() const override;
    /// @}

private:
    const QPointer<QFutureWatcherBase> m_watcher;
};

} // namespace veltor::concurrent
