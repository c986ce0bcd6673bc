// A pool's record of one task.

#include "PoolJob.h"

#include "PoolCore.h"
#include "TaskCore.h"

#include <utility>

namespace veltor::concurrent {

PoolJob::PoolJob(std::shared_ptr<PoolCore> pool, Task* owned, Terms agreed)
    : core(std::move(pool))
    , state(TaskAccess::core(*owned).state)
    , terms(std::move(agreed))
    , task(owned)
{}

PoolJob::~PoolJob() = default;

void PoolJob::onEnd()
{
    core->onEnd(shared_from_this());
}

void PoolJob::onReleased()
{
    core->onReleased(shared_from_this());
}

void PoolJob::onDestroyed()
{
    core->onDestroyed(*this);
}

void PoolJob::onPosted()
{
    core->onPosted(*this);
}

bool PoolJob::withdraw()
{
    return core->withdraw(shared_from_this());
}

} // namespace veltor::concurrent
