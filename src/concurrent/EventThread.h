#pragma once

#include "ThreadSanitizer.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QThread>

namespace veltor::concurrent {

/// A thread that, before it ends, delivers what was posted to it before quit(), such as a task's cancel(),
/// and deletes what was to be deleted. The destructor of a subclass begins with join().
class EventThread : public QThread
{
public:
    EventThread() = default;
    ~EventThread() override { join(); }

    /// Returns when the thread has ended, with all that it did in sight.
    void join()
    {
        wait();
        seen(this);
    }

protected:
    void run() override
    {
        exec();
        QCoreApplication::sendPostedEvents();
        atEnd();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        handOver(this);
    }

    /// The thread's last work, when it takes no more.
    virtual void atEnd() {}
};

} // namespace veltor::concurrent
