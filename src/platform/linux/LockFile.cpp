// The file of a named lock: how it comes to be, who has it, and what a dead owner leaves in it.

#include "platform/linux/LockFile.h"

#include "platform/NamedLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace veltor::platform {
namespace {

constexpr mode_t Everybody = 0666;

/// Hosts that close all descriptors open files of their own afterwards, under the lowest numbers.
constexpr int FirstDescriptor = 256;

/// The first failure's error stays; a call that a signal has interrupted is made again.
template <typename Call>
int errorOf(Call call) noexcept
{
    while (call() != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int request(int fd, int command, short type) noexcept
{
    struct flock whole = {};
    whole.l_type = type;
    whole.l_whence = SEEK_SET;
    return errorOf([&] { return ::fcntl(fd, command, &whole); });
}

} // namespace

LockFile::LockFile(std::string path)
    : m_path(std::move(path))
    , m_directory(m_path.substr(0, m_path.rfind('/')))
{}

LockFile::~LockFile()
{
    close();
}

int LockFile::open() noexcept
{
    for (;;) {
        int error = openExisting();
        if (error != ENOENT) {
            return error;
        }
        error = create();
        if (error != EEXIST) {
            return error;
        }
    }
}

/// Whoever may have put something at the name: it is not followed, not waited for, and not touched unless
/// anybody may write it, which no file is that deserves protection. Never with O_CREAT, which a common
/// directory's protection forbids for other users' files.
int LockFile::openExisting() noexcept
{
    const int fd = ::open(m_path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    return fd < 0 ? errno : keep(fd);
}

/// The file gets its name with the mode it shall have: nobody finds it closed to him, whenever its maker is
/// killed, and whatever the process's own mask is.
int LockFile::create() noexcept
{
    const int fd = ::open(m_directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, Everybody);
    if (fd < 0) {
        return errno;
    }
    char self[32];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", fd);
    if (::fchmod(fd, Everybody) == 0 &&
        ::linkat(AT_FDCWD, self, AT_FDCWD, m_path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return keep(fd);
    }
    const int error = errno;
    ::close(fd);
    return error;
}

int LockFile::keep(int fd) noexcept
{
    struct stat status = {};
    const int error = errorOf([&] { return ::fstat(fd, &status); });
    if (error != 0 || status.st_mode != (S_IFREG | Everybody)) {
        ::close(fd);
        return error != 0 ? error : LockError::NoLock;
    }
    m_fd = ::fcntl(fd, F_DUPFD_CLOEXEC, FirstDescriptor);
    if (m_fd >= 0) {
        ::close(fd);
    } else {
        m_fd = fd; // the process may have fewer
    }
    m_device = status.st_dev;
    m_inode = status.st_ino;
    return 0;
}

/// A host may have closed the descriptor, and have its number now.
void LockFile::close() noexcept
{
    struct stat status = {};
    if (m_fd >= 0 && ::fstat(m_fd, &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode) {
        ::close(m_fd);
    }
    m_fd = -1;
}

LockFile::Outcome LockFile::tryLock(int& error) noexcept
{
    for (;;) {
        error = m_fd < 0 ? open() : 0;
        if (error != 0) {
            return Outcome::Failed;
        }
        error = request(m_fd, F_OFD_SETLK, F_WRLCK);
        if (error == EAGAIN || error == EACCES) {
            return Outcome::Busy;
        }
        if (error != 0 && error != EBADF) {
            return Outcome::Failed;
        }
        struct stat named = {};
        const bool isNamed = error == 0 && ::lstat(m_path.c_str(), &named) == 0 && named.st_dev == m_device &&
                             named.st_ino == m_inode;
        if (!isNamed) {
            close(); // and unlock
            continue;
        }
        if (named.st_size != 0) {
            return Outcome::Abandoned;
        }
        error = errorOf([this] { return ::ftruncate(m_fd, 1); });
        if (error != 0) {
            abandon();
            return Outcome::Failed;
        }
        return Outcome::Acquired;
    }
}

void LockFile::release() noexcept
{
    errorOf([this] { return ::ftruncate(m_fd, 0); });
    abandon();
}

void LockFile::abandon() noexcept
{
    request(m_fd, F_OFD_SETLK, F_UNLCK);
}

int LockFile::waitFor(int fd) noexcept
{
    return request(fd, F_OFD_SETLKW, F_WRLCK);
}

} // namespace veltor::platform
