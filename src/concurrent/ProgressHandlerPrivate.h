#pragma once

#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/TaskState.h>

#include <QtCore/QSharedPointer>

#include <atomic>
#include <mutex>
#include <optional>
#include <vector>

namespace veltor::concurrent {

class TaskCore;

struct ProgressHandler::Private
{
    /// Notes the end of the thread to which a task's handler moves. Threads of this room need no note: the tasks in
    /// them, and with these the handlers, leave before.
    void follow(const ProgressHandler& handler, const QThread* thread);

    std::atomic<bool> canceled{false};
    std::atomic<bool> finished{false};
    std::atomic<bool> ignoreFinal{false};
    std::atomic<Qt::ConnectionType> invokeType{Qt::AutoConnection};
    std::atomic<double> progress{0.0};
    std::atomic<int> extraData{DefaultExtraData};
    /// The thread of a task's handler has ended: nothing is delivered there any more.
    std::atomic<bool> homeless{false};

    // Of a task's handler; set before the handler is used by several threads.
    QSharedPointer<TaskState> state;
    std::shared_ptr<TaskCore> task;
    std::vector<std::shared_ptr<ProgressHandler>> followers; // go to another thread with the handler
    QMetaObject::Connection threadStarted;
    QMetaObject::Connection threadFinished;

    mutable std::mutex mutex; // guards what follows
    Range range;
    QUuid id; // made when it is asked for
    std::vector<std::shared_ptr<ProgressHandler>> subHandlers;
    std::optional<CancellationSource> cancellation; // once a token was asked for
    int openParts = 0;                              // decorators that have not forwarded their end
    bool partsEnded = false;                        // finished() of all parts was forwarded
};

} // namespace veltor::concurrent
