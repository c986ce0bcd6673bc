#pragma once

#include <cstdint>

namespace veltor::platform {

enum class LockState
{
    Taken,  ///< it is ours now; of askLock(): it is free
    Busy,   ///< another opening of the file has it, in this process or in another
    Failed, ///< the system has no answer; its error tells why
};

struct LockAnswer
{
    LockState state = LockState::Failed;
    std::int64_t owner = 0; ///< the process that has it when busy; 0 when the system does not tell
};

/// Takes a file's exclusive lock without waiting. It belongs to this opening of the file and ends when its
/// last descriptor is closed: with the process at the latest. A child of fork() has no part in it: there the
/// descriptor leads to nothing any more. Advisory: it hinders nobody who does not ask.
LockAnswer lockFile(int fd);

/// Whether another opening of the file has the lock.
LockAnswer askLock(int fd);

} // namespace veltor::platform
