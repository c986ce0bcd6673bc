#pragma once

#include "PoolJob.h"

#include <QtCore/QString>

#include <map>
#include <memory>
#include <vector>

namespace veltor::concurrent {

/// The tasks that wait in a pool, in the order of their starts, and the names that limit them. Not
/// thread-safe: under the pool's mutex. A task whose resource is in use to its limit is set aside until that
/// is released, so that a look at the queue costs the same however many such tasks wait.
class PoolQueue
{
public:
    void add(const JobPtr& job);
    /// True when @p job was in the queue.
    bool remove(PoolJob& job);
    /// The first task whose resource is free; it is held until release(). Null when none can start.
    [[nodiscard]] JobPtr take();
    [[nodiscard]] std::vector<JobPtr> takeAll();
    /// The first is between two threads: nothing can be taken for a moment.
    [[nodiscard]] bool isHeldUp() const;
    /// The first tasks in line, up to @p most, that are in @p stage and need no resource: they change to
    /// Staging.
    [[nodiscard]] std::vector<JobPtr> beginStaging(PoolJob::Stage stage, std::size_t most);
    [[nodiscard]] std::size_t inLine() const { return m_ready.size(); }

    /// For a task that never waited: false when its resource is in use to its limit.
    [[nodiscard]] bool acquire(const QString& resource);
    void release(const QString& resource);
    void setLimit(const QString& resource, int limit);

    [[nodiscard]] bool isEmpty() const { return m_count == 0; }

private:
    using Line = std::map<qint64, JobPtr>;
    struct Resource
    {
        int limit = 1;
        int used = 0;
        Line held;
    };

    /// Lets one that was set aside stand in line again, at its own place.
    void readmit(Resource& resource);

    Line m_ready;
    std::map<QString, Resource> m_resources;
    std::size_t m_count = 0;
    qint64 m_first = 0;
    qint64 m_last = 0;
};

} // namespace veltor::concurrent
