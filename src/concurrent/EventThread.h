#pragma once

#include "platform/HandlerStack.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <atomic>

namespace veltor::concurrent {

/// A thread that, before it ends, delivers what was posted to it before quit(), such as a task's cancel(),
/// and deletes what was to be deleted.
class EventThread : public QThread
{
public:
    EventThread() = default;
    ~EventThread() override { join(); }

    /// Returns when the thread has ended, with all that it did in sight.
    void join()
    {
        wait();
        static_cast<void>(m_ended.load(std::memory_order_acquire));
    }

protected:
    void run() override
    {
        const platform::HandlerStack handlerStack;
        exec();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_ended.store(true, std::memory_order_release); // wait() does it too, unseen by ThreadSanitizer
    }

private:
    std::atomic<bool> m_ended{false};
};

} // namespace veltor::concurrent
