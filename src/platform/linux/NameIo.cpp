// Names beneath a folder, reached from descriptor to descriptor, one part after the other, without following
// a link: what others do to the names meanwhile cannot lead outside.

#include "platform/NameIo.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

namespace veltor::platform {
namespace {

class Descriptor
{
public:
    explicit Descriptor(int fd) noexcept
        : m_fd(fd)
    {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void reset(int fd) noexcept
    {
        close();
        m_fd = fd;
    }
    [[nodiscard]] int get() const noexcept { return m_fd; }
    int release() noexcept { return std::exchange(m_fd, -1); }

private:
    void close() noexcept
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }

    int m_fd;
};

/// The folder in which a name stands, and the name's last part.
class Parent
{
public:
    Parent(const NameIo::Path& folder, const NameIo::Path& name)
        : m_folder(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
        , m_leaf(name.filename().string())
    {
        struct stat top;
        if (!note(m_folder.get() >= 0 && ::fstat(m_folder.get(), &top) == 0)) {
            return;
        }
        for (const NameIo::Path& part : name.parent_path()) {
            m_folder.reset(
                ::openat(m_folder.get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (!note(m_folder.get() >= 0)) {
                return;
            }
        }
        struct stat own;
        if (note(::fstat(m_folder.get(), &own) == 0) && own.st_dev != top.st_dev) {
            m_error = EXDEV;
        }
        m_device = top.st_dev;
    }

    [[nodiscard]] int error() const noexcept { return m_error; }
    [[nodiscard]] int fd() const noexcept { return m_folder.get(); }
    [[nodiscard]] const char* leaf() const noexcept { return m_leaf.c_str(); }
    [[nodiscard]] dev_t device() const noexcept { return m_device; }

private:
    bool note(bool done) noexcept
    {
        m_error = done ? 0 : errno;
        return done;
    }

    Descriptor m_folder;
    std::string m_leaf;
    dev_t m_device = 0;
    int m_error = 0;
};

int errorUnless(bool done) noexcept
{
    return done ? 0 : errno;
}

NameStatus::Kind kindOf(const struct stat& status, dev_t device) noexcept
{
    if (S_ISREG(status.st_mode)) {
        return NameStatus::Kind::File;
    }
    return S_ISDIR(status.st_mode) && status.st_dev == device ? NameStatus::Kind::Folder
                                                              : NameStatus::Kind::Other;
}

/// For file systems that cannot refuse to replace in the same step.
int moveUnlessThere(const Parent& from, const Parent& to)
{
    struct stat status;
    if (::fstatat(to.fd(), to.leaf(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    return errno == ENOENT ? errorUnless(::renameat(from.fd(), from.leaf(), to.fd(), to.leaf()) == 0) : errno;
}

} // namespace

NameStatus NameIo::look(const Path& folder, const Path& name)
{
    NameStatus found;
    const Parent parent(folder, name);
    found.error = parent.error();
    if (found.error != 0) {
        return found;
    }
    found.changeable = ::faccessat(parent.fd(), ".", W_OK | X_OK, AT_EACCESS) == 0;
    struct stat status;
    if (::fstatat(parent.fd(), parent.leaf(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        found.error = errno;
        found.kind = errno == ENOENT ? NameStatus::Kind::Missing : NameStatus::Kind::Unknown;
        found.impossible = errno == ENAMETOOLONG;
        return found;
    }
    found.kind = kindOf(status, parent.device());
    found.foreign = status.st_uid != ::geteuid() ||
                    (S_ISDIR(status.st_mode) && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0);
    found.identity = {status.st_dev, status.st_ino};
    return found;
}

int NameIo::createFile(const Path& folder, const Path& name)
{
    const Parent parent(folder, name);
    if (parent.error() != 0) {
        return parent.error();
    }
    const Descriptor file(
        ::openat(parent.fd(), parent.leaf(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666));
    return errorUnless(file.get() >= 0);
}

int NameIo::createFolder(const Path& folder, const Path& name)
{
    const Parent parent(folder, name);
    return parent.error() != 0 ? parent.error()
                               : errorUnless(::mkdirat(parent.fd(), parent.leaf(), 0700) == 0);
}

int NameIo::move(const Path& folder, const Path& from, const Path& to, bool replace, bool)
{
    const Parent source(folder, from);
    const Parent target(folder, to);
    if (source.error() != 0 || target.error() != 0) {
        return source.error() != 0 ? source.error() : target.error();
    }
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    if (::renameat2(source.fd(), source.leaf(), target.fd(), target.leaf(), flags) == 0) {
        return 0;
    }
    const bool unknown = errno == EINVAL || errno == ENOSYS;
    return unknown && !replace ? moveUnlessThere(source, target) : errno;
}

int NameIo::removeFile(const Path& folder, const Path& name)
{
    const Parent parent(folder, name);
    return parent.error() != 0 ? parent.error() : errorUnless(::unlinkat(parent.fd(), parent.leaf(), 0) == 0);
}

int NameIo::removeFolder(const Path& folder, const Path& name)
{
    const Parent parent(folder, name);
    return parent.error() != 0 ? parent.error()
                               : errorUnless(::unlinkat(parent.fd(), parent.leaf(), AT_REMOVEDIR) == 0);
}

int NameIo::open(const Path& folder, const Path& name, int& fd)
{
    const Parent parent(folder, name);
    if (parent.error() != 0) {
        return parent.error();
    }
    Descriptor file(
        ::openat(parent.fd(), parent.leaf(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return EINVAL;
    }
    fd = file.release();
    return 0;
}

int NameIo::syncFolder(const Path& folder, const Path& name)
{
    // A descriptor of O_PATH cannot be synced.
    const Parent parent(folder, name.empty() ? Path(".") : name);
    if (parent.error() != 0) {
        return parent.error();
    }
    const Descriptor opened(
        ::openat(parent.fd(), parent.leaf(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    int result = 0;
    do {
        result = opened.get() >= 0 ? ::fsync(opened.get()) : -1;
    } while (result != 0 && errno == EINTR);
    return errorUnless(result == 0);
}

int NameIo::list(const Path& folder, const Path& name, std::vector<Path>& names)
{
    const Parent parent(folder, name);
    if (parent.error() != 0) {
        return parent.error();
    }
    Descriptor opened(::openat(parent.fd(), parent.leaf(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    DIR* const entries = opened.get() >= 0 ? ::fdopendir(opened.get()) : nullptr;
    if (!entries) {
        return errno;
    }
    opened.release();
    errno = 0;
    while (const dirent* const entry = ::readdir(entries)) {
        if (entry->d_type != DT_DIR) {
            names.emplace_back(entry->d_name);
        }
    }
    const int error = errno;
    ::closedir(entries);
    return error;
}

} // namespace veltor::platform
