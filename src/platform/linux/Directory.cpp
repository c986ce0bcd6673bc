// Folders by their descriptors: openat(), unlinkat() and statx() with single names.
#include "platform/linux/DirectoryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace veltor::platform {
namespace {

std::error_code systemError(int code = errno)
{
    return {code, std::system_category()};
}

std::error_code resultOf(int result)
{
    return result == 0 ? std::error_code() : systemError();
}

int openFlags(Links links)
{
    return O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | (links == Links::Refuse ? O_NOFOLLOW : 0);
}

int openRetrying(int at, const char* name, int flags) noexcept
{
    int fd = -1;
    do {
        fd = ::openat(at, name, flags);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

/// Gives the owner all rights to an open folder. A descriptor that cannot be read from has no fchmod().
bool grantRights(int fd) noexcept
{
    struct stat status = {};
    char self[32];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", fd);
    return ::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           ((status.st_mode & S_IRWXU) == S_IRWXU || ::chmod(self, (status.st_mode & 07777) | S_IRWXU) == 0);
}

FileKind kindOf(unsigned mode)
{
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileKind::File;
    case S_IFDIR:
        return FileKind::Folder;
    case S_IFLNK:
        return FileKind::Link;
    default:
        return FileKind::Other;
    }
}

FileKind kindOfEntry(unsigned char type)
{
    return type == DT_UNKNOWN ? FileKind::Unknown : kindOf(static_cast<mode_t>(DTTOIF(type)));
}

} // namespace

Descriptor openFolderAt(int at, const char* name, Links links, bool grant) noexcept
{
    Descriptor fd(openRetrying(at, name, openFlags(links)));
    if (grant && fd) {
        grantRights(fd.get()); // names in it could not be removed otherwise; who cannot learns that then
    } else if (grant && errno == EACCES) {
        const Descriptor closed(openRetrying(at, name, O_PATH | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
        if (closed && grantRights(closed.get())) {
            fd.reset(openRetrying(closed.get(), ".", openFlags(links)));
        } else {
            errno = EACCES;
        }
    }
    return fd;
}

int fileStatus(int at, const char* name, int flags, FileStatus& status) noexcept
{
    struct statx found = {};
    constexpr unsigned wanted = STATX_TYPE | STATX_MODE | STATX_INO | STATX_SIZE | STATX_MTIME | STATX_MNT_ID;
    if (::statx(at, name, flags | AT_NO_AUTOMOUNT, wanted, &found) != 0) {
        return errno;
    }
    status.kind = kindOf(found.stx_mode);
    status.volume = (std::uint64_t{found.stx_dev_major} << 32) | found.stx_dev_minor;
    status.number = found.stx_ino;
    status.mount = (found.stx_mask & STATX_MNT_ID) != 0 ? found.stx_mnt_id : 0;
    status.sizeBytes = found.stx_size;
    status.modifiedMs = found.stx_mtime.tv_sec * 1000 + found.stx_mtime.tv_nsec / 1000000;
    return 0;
}

Directory::Directory() noexcept = default;
Directory::~Directory() = default;
Directory::Directory(Directory&& other) noexcept = default;
Directory& Directory::operator=(Directory&& other) noexcept = default;

void Directory::close() noexcept
{
    m_folder.reset();
}

std::error_code Directory::open(const NativeString& path, Links links)
{
    auto folder = std::make_unique<Folder>();
    folder->fd = openFolderAt(AT_FDCWD, path.c_str(), links, false);
    if (!folder->fd) {
        return systemError();
    }
    m_folder = std::move(folder);
    return {};
}

std::error_code Directory::openIn(const Directory& parent, const NativeString& name, Links links, bool grant)
{
    auto folder = std::make_unique<Folder>();
    folder->fd = openFolderAt(parent.m_folder->at(), name.c_str(), links, grant);
    if (!folder->fd) {
        return systemError();
    }
    m_folder = std::move(folder);
    return {};
}

std::error_code Directory::openAbove(const Directory& child)
{
    return openIn(child, "..", Links::Refuse);
}

bool Directory::next(Name& name, std::error_code& error)
{
    if (!m_folder->stream) {
        m_folder->stream = ::fdopendir(m_folder->fd.get());
        if (!m_folder->stream) {
            error = systemError();
            return false;
        }
        m_folder->fd.release();
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(m_folder->stream);
        if (!entry) {
            error = systemError();
            return false;
        }
        const char* const text = entry->d_name;
        if (text[0] != '.' || (text[1] != '\0' && (text[1] != '.' || text[2] != '\0'))) {
            name.text = text;
            name.kind = kindOfEntry(entry->d_type);
            return true;
        }
    }
}

void Directory::rewind()
{
    if (m_folder->stream) {
        ::rewinddir(m_folder->stream);
    }
}

std::error_code Directory::status(FileStatus& status) const
{
    return systemError(fileStatus(m_folder->at(), "", AT_EMPTY_PATH, status));
}

std::error_code Directory::statusOf(const NativeString& name, Links links, FileStatus& status) const
{
    const int flags = links == Links::Refuse ? AT_SYMLINK_NOFOLLOW : 0;
    return systemError(fileStatus(m_folder->at(), name.c_str(), flags, status));
}

std::error_code Directory::removeFile(const NativeString& name)
{
    return resultOf(::unlinkat(m_folder->at(), name.c_str(), 0));
}

std::error_code Directory::removeFolder(const NativeString& name)
{
    return resultOf(::unlinkat(m_folder->at(), name.c_str(), AT_REMOVEDIR));
}

std::error_code Directory::makeMark(const NativeString& name, const char* text) const
{
    const Descriptor file(
        ::openat(m_folder->at(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    const std::size_t size = std::strlen(text);
    if (!file) {
        return systemError();
    }
    const ssize_t written = ::write(file.get(), text, size);
    return written == static_cast<ssize_t>(size) ? std::error_code()
                                                 : systemError(written < 0 ? errno : ENOSPC);
}

bool Directory::hasMark(const NativeString& name) const
{
    struct stat status = {};
    return ::fstatat(m_folder->at(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

bool isGone(const std::error_code& error) noexcept
{
    return error.value() == ENOENT;
}

bool isNotEmpty(const std::error_code& error) noexcept
{
    return error.value() == ENOTEMPTY || error.value() == EEXIST;
}

bool isNoFolder(const std::error_code& error) noexcept
{
    return error.value() == ENOTDIR || error.value() == ELOOP;
}

bool isFolder(const std::error_code& error) noexcept
{
    return error.value() == EISDIR || error.value() == EPERM;
}

} // namespace veltor::platform
