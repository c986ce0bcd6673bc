#pragma once

#include "EventThread.h"
#include "PoolJob.h"
#include "Post.h"

#include <QtCore/QTimer>

#include <memory>
#include <utility>
#include <vector>

namespace veltor::concurrent {

/// A thread of a pool: a worker, or the service thread.
class PoolThread : public EventThread
{
public:
    PoolThread(std::shared_ptr<PoolCore> pool, const QString& name);
    ~PoolThread() override { join(); }

    /// Runs @p function in this thread, with the pool alive.
    template <typename F>
    void call(F function)
    {
        post(&m_agent, [keep = core, f = std::move(function)]() mutable { f(); });
    }

    /// The same in @p ms milliseconds; called in this thread.
    template <typename F>
    void callLater(int ms, F function)
    {
        QTimer::singleShot(ms, Qt::PreciseTimer, &m_agent, [keep = core, f = std::move(function)]() mutable { f(); });
    }

    const std::shared_ptr<PoolCore> core;

    // Under the pool's mutex.
    JobPtr job;                    // of a worker that is not idle
    bool ended = false;            // takes nothing any more
    std::vector<JobPtr> lingering; // ended here, but some call is not done with the task

protected:
    void atEnd() override;

private:
    QObject m_agent;
};

} // namespace veltor::concurrent
