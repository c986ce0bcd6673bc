// A file's lock by flock(): unlike a record lock it belongs to the opening, not to the process, needs no
// permission to write, and the system tells who has it.

#include "platform/FileLock.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <set>
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
    const LockAnswer answer = {LockState::Busy, ownerOf(fd)};
    errno = EWOULDBLOCK;
    return answer;
}

/// The descriptors whose files are locked.
struct Locked
{
    std::mutex mutex; // guards all
    std::set<int> all;
};

Locked& locked()
{
    static auto* const made = new Locked; // never destroyed: a fork may come after this source's statics
    return *made;
}

/// A child of fork() shares the openings with its parent, and with them the locks, which would outlive their
/// owner in it: in its place the child gets a file that takes everything and holds nothing.
void leaveToParent() noexcept
{
    for (const int fd : locked().all) {
        const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        ::close(nothing < 0 || ::dup3(nothing, fd, O_CLOEXEC) < 0 ? fd : nothing);
    }
    locked().all.clear();
}

void remember(int fd)
{
    static const int registered =
        ::pthread_atfork([] { locked().mutex.lock(); }, [] { locked().mutex.unlock(); },
                         [] {
                             leaveToParent();
                             locked().mutex.unlock();
                         });
    static_cast<void>(registered); // without memory for it, a child shares the locks
    const std::lock_guard guard(locked().mutex);
    locked().all.insert(fd);
}

} // namespace

LockAnswer lockFile(int fd)
{
    if (!tryLock(fd, LOCK_EX)) {
        return refusal(fd);
    }
    remember(fd);
    return {LockState::Taken};
}

void unlockFile(int fd) noexcept
{
    const std::lock_guard guard(locked().mutex);
    if (locked().all.erase(fd) != 0) {
        ::flock(fd, LOCK_UN);
    }
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
