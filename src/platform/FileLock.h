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

/// Takes the exclusive lock of a file, or of a folder where that can be opened, without waiting. It belongs
/// to this opening and ends with unlockFile(), or with the process. A child of fork() has no part in it:
/// there the descriptor leads to nothing any more. Advisory: it hinders nobody who does not ask.
LockAnswer lockFile(int fd);

/// Gives the lock back; in a child of fork() does nothing. To be called before the descriptor is closed: its
/// number may be another file's afterwards, which a child is to keep.
void unlockFile(int fd) noexcept;

/// Whether another opening of the file has the lock.
LockAnswer askLock(int fd);

} // namespace veltor::platform
