// A file's lock by LockFileEx(), on a byte far beyond any end: it hinders no reader of the file.

#include "platform/FileLock.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <io.h>

namespace veltor::platform {
namespace {

HANDLE handleOf(int fd) noexcept
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(fd)); // NOLINT: the C runtime's own convention
}

OVERLAPPED lockedByte() noexcept
{
    OVERLAPPED place = {};
    place.Offset = 0xFFFFFFFE;
    place.OffsetHigh = 0x7FFFFFFF;
    return place;
}

LockAnswer tryLock(int fd, DWORD flags)
{
    OVERLAPPED place = lockedByte();
    if (LockFileEx(handleOf(fd), flags | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place)) {
        return {LockState::Taken};
    }
    const DWORD error = GetLastError();
    const bool busy = error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING;
    return {busy ? LockState::Busy : LockState::Failed};
}

} // namespace

LockAnswer lockFile(int fd)
{
    return tryLock(fd, LOCKFILE_EXCLUSIVE_LOCK);
}

void unlockFile(int fd) noexcept
{
    OVERLAPPED place = lockedByte();
    UnlockFileEx(handleOf(fd), 0, 1, 0, &place);
}

LockAnswer askLock(int fd)
{
    const LockAnswer answer = tryLock(fd, 0);
    if (answer.state == LockState::Taken) {
        unlockFile(fd);
    }
    return answer;
}

} // namespace veltor::platform
