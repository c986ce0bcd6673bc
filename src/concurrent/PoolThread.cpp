// A thread of a pool.

#include "PoolThread.h"

#include "PoolCore.h"

namespace veltor::concurrent {

PoolThread::PoolThread(std::shared_ptr<PoolCore> pool, const QString& name)
    : core(std::move(pool))
{
    setObjectName(name); // the system's name too
    m_agent.moveToThread(this);
}

void PoolThread::atEnd()
{
    core->atEndOf(*this);
}

} // namespace veltor::concurrent
