// The waiting tasks of a pool, and the limits of resources.

#include "PoolQueue.h"

#include <utility>

namespace veltor::concurrent {

void PoolQueue::add(const JobPtr& job)
{
    const bool first = job->terms.high;
    job->order = first ? --m_first : ++m_last;
    job->stage = PoolJob::Stage::Queued;
    m_ready.emplace_hint(first ? m_ready.begin() : m_ready.end(), job->order, job);
    ++m_count;
}

bool PoolQueue::remove(PoolJob& job)
{
    if (job.stage < PoolJob::Stage::Queued || job.stage > PoolJob::Stage::Staged) {
        return false;
    }
    if (m_ready.erase(job.order) == 0) {
        m_resources[job.terms.resource].held.erase(job.order);
    }
    --m_count;
    return true;
}

JobPtr PoolQueue::take()
{
    while (!m_ready.empty() && !isHeldUp()) {
        const auto first = m_ready.begin();
        JobPtr job = std::move(first->second);
        m_ready.erase(first);
        if (acquire(job->terms.resource)) {
            --m_count;
            return job;
        }
        m_resources[job->terms.resource].held.emplace(job->order, job);
    }
    return nullptr;
}

std::vector<JobPtr> PoolQueue::takeAll()
{
    std::vector<JobPtr> all;
    all.reserve(m_count);
    const auto takeLine = [&all](Line& line) {
        for (auto& [order, job] : std::exchange(line, {})) {
            all.push_back(std::move(job));
        }
    };
    takeLine(m_ready);
    for (auto& [name, resource] : m_resources) {
        takeLine(resource.held);
    }
    m_count = 0;
    return all;
}

bool PoolQueue::isHeldUp() const
{
    return !m_ready.empty() && m_ready.begin()->second->stage == PoolJob::Stage::Staging;
}

std::vector<JobPtr> PoolQueue::beginStaging(PoolJob::Stage stage, std::size_t most)
{
    std::vector<JobPtr> jobs;
    for (auto entry = m_ready.begin(); entry != m_ready.end() && jobs.size() < most; ++entry) {
        const JobPtr& job = entry->second;
        if (job->stage == stage && job->terms.resource.isEmpty() && !job->terms.waits) {
            job->stage = PoolJob::Stage::Staging;
            jobs.push_back(job);
        }
    }
    return jobs;
}

bool PoolQueue::acquire(const QString& resource)
{
    if (resource.isEmpty()) {
        return true;
    }
    Resource& entry = m_resources[resource];
    if (entry.used >= entry.limit) {
        return false;
    }
    ++entry.used;
    return true;
}

void PoolQueue::release(const QString& resource)
{
    const auto found = resource.isEmpty() ? m_resources.end() : m_resources.find(resource);
    if (found == m_resources.end()) {
        return;
    }
    Resource& entry = found->second;
    --entry.used;
    readmit(entry);
    if (entry.used == 0 && entry.held.empty() && entry.limit == 1) { // as a name that nobody used
        m_resources.erase(found);
    }
}

void PoolQueue::setLimit(const QString& resource, int limit)
{
    Resource& entry = m_resources[resource];
    entry.limit = limit;
    for (int free = entry.limit - entry.used; free > 0 && !entry.held.empty(); --free) {
        readmit(entry);
    }
}

void PoolQueue::readmit(Resource& resource)
{
    if (!resource.held.empty()) {
        m_ready.insert(resource.held.extract(resource.held.begin()));
    }
}

} // namespace veltor::concurrent
