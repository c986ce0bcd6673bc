// The lock of a folder is flock() of its own descriptor.
#include "platform/FolderLock.h"

#include "platform/FileLock.h"
#include "platform/linux/DirectoryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace veltor::platform {

struct FolderLock::Holder
{
    explicit Holder(Descriptor folder)
        : fd(std::move(folder))
    {}
    ~Holder() { unlockFile(fd.get()); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    const Descriptor fd; // leads to nothing in a child of fork()
    const pid_t process = ::getpid();
};

namespace {

constexpr unsigned noReplace = 1; // RENAME_NOREPLACE, which <stdio.h> has only with extensions

std::error_code systemError(int code = errno)
{
    return {code, std::system_category()};
}

bool isOwnFolder(int fd)
{
    struct stat status = {};
    return ::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

/// Whether a name leads to an open folder.
bool leadsTo(int base, const char* name, int fd)
{
    FileStatus named;
    FileStatus opened;
    return fileStatus(base, name, AT_SYMLINK_NOFOLLOW, named) == 0 &&
           fileStatus(fd, "", AT_EMPTY_PATH, opened) == 0 && named.isSameFile(opened);
}

int renameNew(int fromBase, const char* from, int toBase, const char* to)
{
    if (::syscall(SYS_renameat2, fromBase, from, toBase, to, noReplace) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // A file system without that: a hard link never replaces; folders have none, and only an empty one could
    // be replaced then.
    if (::linkat(fromBase, from, toBase, to, 0) == 0) {
        return ::unlinkat(fromBase, from, 0) == 0 ? 0 : errno;
    }
    struct stat status = {};
    if (errno == EEXIST || ::fstatat(toBase, to, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    return ::renameat(fromBase, from, toBase, to) == 0 ? 0 : errno;
}

} // namespace

FolderLock::FolderLock() noexcept = default;
FolderLock::~FolderLock() = default;
FolderLock::FolderLock(FolderLock&& other) noexcept = default;
FolderLock& FolderLock::operator=(FolderLock&& other) noexcept = default;

FolderLock::Outcome FolderLock::make(const Directory& base, const NativeString& name, std::error_code& error)
{
    if (::mkdirat(base.m_folder->at(), name.c_str(), 0700) != 0) {
        error = systemError();
        return errno == EEXIST ? Outcome::Exists : Outcome::Failed;
    }
    // Between the two calls a cleaner may have found a folder without a lock: then it is his, or gone.
    const Outcome outcome = take(base, name, error);
    if (outcome == Outcome::Failed) {
        ::unlinkat(base.m_folder->at(), name.c_str(), AT_REMOVEDIR);
    }
    return outcome;
}

FolderLock::Outcome FolderLock::take(const Directory& base, const NativeString& name, std::error_code& error)
{
    const int at = base.m_folder->at();
    Descriptor fd = openFolderAt(at, name.c_str(), Links::Refuse, true);
    if (!fd) {
        error = systemError();
        if (isGone(error)) {
            return Outcome::Gone;
        }
        // Another user's may well be closed to us.
        return isNoFolder(error) || error.value() == EACCES ? Outcome::Foreign : Outcome::Failed;
    }
    if (!isOwnFolder(fd.get())) {
        return Outcome::Foreign;
    }
    const LockAnswer answer = lockFile(fd.get());
    if (answer.state != LockState::Taken) {
        error = systemError();
        return answer.state == LockState::Busy ? Outcome::InUse : Outcome::Failed;
    }
    auto holder = std::make_unique<Holder>(std::move(fd));
    if (!leadsTo(at, name.c_str(), holder->fd.get())) {
        return Outcome::Gone;
    }
    m_holder = std::move(holder);
    return Outcome::Taken;
}

bool FolderLock::isHeld() const noexcept
{
    return m_holder && m_holder->process == ::getpid();
}

void FolderLock::release() noexcept
{
    m_holder.reset();
}

std::error_code FolderLock::rename(const Directory& base, const NativeString& from, const NativeString& to)
{
    const int at = base.m_folder->at();
    if (!isHeld() || !leadsTo(at, from.c_str(), m_holder->fd.get())) {
        return systemError(ENOENT);
    }
    return systemError(renameNew(at, from.c_str(), at, to.c_str()));
}

std::error_code FolderLock::moveOut(const Directory& base, const NativeString& from, const NativeString& path)
{
    const int at = base.m_folder->at();
    if (!isHeld() || !leadsTo(at, from.c_str(), m_holder->fd.get())) {
        return systemError(ENOENT);
    }
    return systemError(renameNew(at, from.c_str(), AT_FDCWD, path.c_str()));
}

std::error_code FolderLock::removeEmpty(Directory& base, const NativeString& name)
{
    // Still locked: who made this name a moment ago, and waits to lock it, must find that it is gone.
    if (!isHeld() || !leadsTo(base.m_folder->at(), name.c_str(), m_holder->fd.get())) {
        return systemError(ENOENT);
    }
    const std::error_code error = base.removeFolder(name);
    if (!error) {
        release();
    }
    return error;
}

std::error_code FolderLock::open(Directory& folder) const
{
    auto opened = std::make_unique<Directory::Folder>();
    opened->fd = openFolderAt(m_holder ? m_holder->fd.get() : -1, ".", Links::Refuse, true);
    if (!opened->fd) {
        return systemError();
    }
    folder.m_folder = std::move(opened);
    return {};
}

bool isOpenToReplacement(const NativeString& folder, std::error_code& error)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(folder.c_str(), nullptr), &std::free);
    if (!real) {
        error = systemError();
        return true;
    }
    std::string path = real.get();
    for (;;) {
        struct stat status = {};
        if (::stat(path.c_str(), &status) != 0) {
            error = systemError();
            return true;
        }
        if ((status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0) {
            return true;
        }
        if (path.size() <= 1) {
            return false;
        }
        path.resize(std::max<std::size_t>(path.rfind('/'), 1));
    }
}

std::error_code renameToNew(const NativeString& from, const NativeString& to)
{
    return systemError(renameNew(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()));
}

std::error_code makeFolder(const NativeString& path)
{
    return ::mkdir(path.c_str(), 0777) == 0 ? std::error_code() : systemError();
}

bool isTaken(const std::error_code& error) noexcept
{
    return error.value() == EEXIST;
}

} // namespace veltor::platform
