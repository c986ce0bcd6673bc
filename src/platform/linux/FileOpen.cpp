// Opening files that strangers may have named, and asking what they are.

#include "platform/FileOpen.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

namespace veltor::platform {
namespace {

// An open of a pipe waits without O_NONBLOCK; on a regular file it means nothing.
constexpr int Flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

OpenedFile failed(OpenFault fault, int error)
{
    OpenedFile file;
    file.fault = fault;
    file.error = error;
    return file;
}

OpenedFile refused(int fd, OpenFault fault, int error)
{
    ::close(fd);
    return failed(fault, error);
}

/// Whether files of this system are doors into the kernel.
bool isInterface(int fd, const FileStatus& status)
{
    // These have no block device; a file system on one needs no second question.
    if (gnu_dev_major(status.identity.first) != 0) {
        return false;
    }
    constexpr unsigned long long interfaces[] = {
        PROC_SUPER_MAGIC, SYSFS_MAGIC,         DEBUGFS_MAGIC, TRACEFS_MAGIC,  SECURITYFS_MAGIC,
        SELINUX_MAGIC,    CGROUP_SUPER_MAGIC,  BPF_FS_MAGIC,  EFIVARFS_MAGIC, BINFMTFS_MAGIC,
        PSTOREFS_MAGIC,   CGROUP2_SUPER_MAGIC, 0x62656570UL /* configfs */};
    struct statfs system;
    if (::fstatfs(fd, &system) != 0) {
        return true;
    }
    const auto type = static_cast<unsigned long long>(system.f_type) & 0xFFFFFFFF;
    return std::find(std::begin(interfaces), std::end(interfaces), type) != std::end(interfaces);
}

/// Judges what was opened.
OpenedFile judged(int fd)
{
    OpenedFile file;
    file.fd = fd;
    if (!fileIo().status(fd, file.status)) {
        return refused(fd, OpenFault::System, errno);
    }
    if (!file.status.regular) {
        return refused(fd, OpenFault::NotRegular, 0);
    }
    return isInterface(fd, file.status) ? refused(fd, OpenFault::Interface, 0) : file;
}

int openBySystem(int folder, const char* name)
{
    struct open_how how = {};
    how.flags = static_cast<unsigned>(Flags | O_RDWR | O_NOFOLLOW);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS | RESOLVE_NO_XDEV;
    long fd = -1;
    do {
        fd = ::syscall(SYS_openat2, folder, name, &how, sizeof how);
    } while (fd < 0 && (errno == EINTR || errno == EAGAIN)); // EAGAIN: something was renamed on the way
    return static_cast<int>(fd);
}

/// The same name by name: for kernels without the call, and where a filter forbids it.
int openStepByStep(int folder, std::string_view name)
{
    struct stat home;
    if (::fstat(folder, &home) != 0) {
        return -1;
    }
    if (name.empty() || name.front() == '/') {
        errno = EXDEV;
        return -1;
    }
    int at = ::fcntl(folder, F_DUPFD_CLOEXEC, 0);
    while (at >= 0) {
        const std::size_t slash = name.find('/');
        const std::string step(name.substr(0, slash));
        name.remove_prefix(slash == std::string_view::npos ? name.size() : slash + 1);
        const bool last = slash == std::string_view::npos;
        int next = -1;
        if (step == "..") {
            errno = EXDEV;
        } else {
            next =
                ::openat(at, step.empty() ? "." : step.c_str(),
                         last ? Flags | O_RDWR | O_NOFOLLOW : O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }
        struct stat status;
        if (next >= 0 && ::fstat(next, &status) == 0 && status.st_dev != home.st_dev) {
            ::close(next);
            next = -1;
            errno = EXDEV;
        }
        const int error = errno;
        ::close(at);
        errno = error;
        if (last || next < 0) {
            return next;
        }
        at = next;
    }
    return -1;
}

} // namespace

OpenedFile openFile(const NativePath& path, FileOpening opening)
{
    const int flags = Flags | (opening.write ? O_RDWR : O_RDONLY) |
                      (opening.createNew ? O_CREAT | O_EXCL : 0) | (opening.refuseLink ? O_NOFOLLOW : 0);
    int fd = -1;
    do {
        fd = ::open(path.c_str(), flags, 0600);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        const int error = errno;
        const bool link = opening.refuseLink && error == ELOOP;
        const bool other = error == EISDIR || error == ENXIO || error == ENODEV;
        return failed(link                                  ? OpenFault::Link
                      : other                               ? OpenFault::NotRegular
                      : error == ENOENT || error == ENOTDIR ? OpenFault::Absent
                      : error == EEXIST                     ? OpenFault::Exists
                                                            : OpenFault::System,
                      error);
    }
    return judged(fd);
}

NativePath pathOf(int fd)
{
    const std::string self = "/proc/self/fd/" + std::to_string(fd);
    std::string path(4096, '\0');
    const ssize_t length = ::readlink(self.c_str(), path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) == path.size()) {
        return {};
    }
    path.resize(static_cast<std::size_t>(length));
    return path;
}

ConfinedFolder::ConfinedFolder(const NativePath& path)
    : m_handle(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
    , m_error(m_handle < 0 ? errno : 0)
{}

ConfinedFolder::~ConfinedFolder()
{
    if (m_handle >= 0) {
        ::close(static_cast<int>(m_handle));
    }
}

OpenedFile ConfinedFolder::open(const NativePath& name, By by) const
{
    if (m_handle < 0) {
        return failed(OpenFault::System, m_error);
    }
    const int folder = static_cast<int>(m_handle);
    int fd = by == By::System ? openBySystem(folder, name.c_str()) : -1;
    if (by == By::StepByStep || (fd < 0 && (errno == ENOSYS || errno == EPERM || errno == EINVAL))) {
        fd = openStepByStep(folder, name);
    }
    if (fd >= 0) {
        return judged(fd);
    }
    switch (const int error = errno) {
    case EXDEV:
        return failed(OpenFault::Outside, error);
    case ELOOP:
        return failed(OpenFault::Link, error);
    case EISDIR:
    case ENXIO:
    case ENODEV:
        return failed(OpenFault::NotRegular, error);
    default:
        return failed(OpenFault::System, error);
    }
}

bool names(const NativePath& path, const FileIdentity& identity)
{
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && FileIdentity(status.st_dev, status.st_ino) == identity;
}

bool belongsToUser(int fd)
{
    FileStatus status;
    return fileIo().status(fd, status) && status.owner == currentUser() && (status.access & 0022) == 0;
}

bool restrictAccess(int fd, unsigned access)
{
    return ::fchmod(fd, access) == 0;
}

unsigned currentUser() noexcept
{
    return ::geteuid();
}

Presence presenceOf(const NativePath& path)
{
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0) {
        return Presence::Present;
    }
    return errno == ENOENT || errno == ENOTDIR ? Presence::Absent : Presence::Unknown;
}

bool isRegular(const NativePath& path)
{
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace veltor::platform
