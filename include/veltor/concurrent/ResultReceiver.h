#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/ProgressHandler.h>

#include <QtCore/QObject>

namespace veltor::concurrent {

/// The owner-side companion of a task started elsewhere: learns of its success, and stops it when the
/// owner goes. It is told of its task by the task's handler, before the task is handed over.
///
/// Owner thread only.
class VELTOR_UTILS_EXPORT ResultReceiver : public QObject
{
    Q_OBJECT

public:
    /// Watches nothing.
    explicit ResultReceiver(QObject* parent = nullptr);
    /// Watches the task of @p handler.
    explicit ResultReceiver(ProgressHandlerPtr handler, QObject* parent = nullptr);
    /// stopTask().
    ~ResultReceiver() override;

    /// Watches the task of @p handler from now on, null for none; the task watched before is let go as it
    /// is.
    void setTaskHandler(ProgressHandlerPtr handler);
    /// The handler whose task is watched, null for none.
    [[nodiscard]] ProgressHandlerPtr taskHandler() const;

    /// Cancels the task and waits for its end; returns at once when there is none, or when it has ended.
    /// Waits in an event loop that leaves the user's input alone. A task that waits in a pool's queue leaves
    /// it and ends at once; one that was handed over to nobody is not waited for.
    void stopTask();
    /// The same until @p deadline at most.
    /// @return whether the task, if there is one, has ended
    bool stopTask(QDeadlineTimer deadline);

Q_SIGNALS:
    /// The task ended successfully.
    void resultReady();

private:
    ProgressHandlerPtr m_handler;
};

} // namespace veltor::concurrent
