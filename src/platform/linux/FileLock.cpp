// A file's lock by flock(): unlike a record lock it belongs to the opening, not to the process, needs no
// permission to write, and the system tells who has it.

#include "platform/FileLock.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

namespace veltor::platform {
namespace {

/// The process that has the exclusive lock of a file by the system's own list; 0 when it names none. Of a
/// process in another container it does not tell.
std::int64_t ownerOf(int fd)
{
    struct stat file;
    if (::fstat(fd, &file) != 0) {
        return 0;
    }
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        long long owner = 0;
        unsigned major = 0;
        unsigned minor = 0;
        unsigned long long number = 0;
        if (std::sscanf(line.c_str(), "%*d: FLOCK %*s WRITE %lld %x:%x:%llu", &owner, &major, &minor,
                        &number) == 4 &&
            number == file.st_ino && gnu_dev_makedev(major, minor) == file.st_dev) {
            return owner;
        }
    }
    return 0;
}

bool tryLock(int fd, int operation)
{
    int result = 0;
    do {
        result = ::flock(fd, operation | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

LockAnswer refusal(int fd)
{
    if (errno != EWOULDBLOCK) {
        return {};
    }
    return {LockState::Busy, ownerOf(fd)};
}

} // namespace

LockAnswer lockFile(int fd)
{
    return tryLock(fd, LOCK_EX) ? LockAnswer{LockState::Taken} : refusal(fd);
}

LockAnswer askLock(int fd)
{
    // The list first: it disturbs nobody.
    if (const std::int64_t owner = ownerOf(fd)) {
        return {LockState::Busy, owner};
    }
    if (!tryLock(fd, LOCK_SH)) {
        return refusal(fd);
    }
    ::flock(fd, LOCK_UN);
    return {LockState::Taken};
}

} // namespace veltor::platform
