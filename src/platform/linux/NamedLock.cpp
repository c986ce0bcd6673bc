#include "platform/NamedLock.h"

#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>

// A named lock is a robust, recursive mutex in a file of the shared memory's file system.
//
//  1. A file gets its name only after the mutex in it works: it is made without one and then linked.
//     So there is no half-made lock to find, whenever its creator is killed.
//  2. The file stays until the system restarts. Removing it would be a race against those who are just
//     opening it, and two files of one name would be two locks.
//  3. One process maps a file once, however many handles there are: a thread's list of the robust
//     mutexes that it holds must not contain one mutex at two addresses.
//  4. A mapping in which a lock is held is not unmapped: that list points into it.

namespace veltor::platform {
namespace {

constexpr std::uint64_t Magic = 0x1C0DEA114C0C0001;
constexpr const char* Directory = "/dev/shm";

/// What the file holds.
struct SharedLock
{
    std::uint64_t magic;
    pthread_mutex_t mutex;
};

/// A lock as this process sees it.
struct Mapping
{
    SharedLock* shared = nullptr;
    int handles = 0;
    long levels = 0; // of ownership, taken and not released through the handles that are closed
};

struct Table
{
    std::mutex mutex;                        // guards the map and what it holds
    std::map<std::string, Mapping> mappings; // by path
};

/// What NamedLock's handle points to.
struct Handle
{
    pthread_mutex_t* mutex;
    // Levels taken and not released through this handle. The sum over all handles is never less than the
    // levels that threads of this process hold; it is more after one of them ended as owner.
    long levels;
    std::map<std::string, Mapping>::iterator entry;
};

/// Never destroyed: handles may be closed after this source's statics are.
Table& table()
{
    static auto* const table = new Table;
    return *table;
}

/// Any bytes of any length become a file name. Programs whose mutexes differ in layout, of another
/// version or another word size, use other files: they cannot share a lock.
std::string pathOf(const std::string& name)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (std::size_t at = 0; at < name.size(); at += 1u << 30) {
        const std::string piece = name.substr(at, 1u << 30);
        hash.addData(QByteArray::fromRawData(piece.data(), static_cast<int>(piece.size())));
    }
    return std::string(Directory) + "/veltor-mutex-1-" + std::to_string(sizeof(SharedLock)) + "-" +
           hash.result().toHex().toStdString();
}

class Descriptor
{
public:
    explicit Descriptor(int fd) noexcept
        : m_fd(fd)
    {}
    ~Descriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const noexcept { return m_fd; }

private:
    int m_fd;
};

SharedLock* mapShared(int fd) noexcept
{
    void* const memory = ::mmap(nullptr, sizeof(SharedLock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<SharedLock*>(memory);
}

bool initialise(pthread_mutex_t& mutex) noexcept
{
    pthread_mutexattr_t attributes;
    if (::pthread_mutexattr_init(&attributes) != 0) {
        return false;
    }
    const bool done = ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                      ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                      ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                      ::pthread_mutex_init(&mutex, &attributes) == 0;
    ::pthread_mutexattr_destroy(&attributes);
    return done;
}

/// Maps the lock of an existing file. Not created here: a common directory's protection may forbid an
/// open that could create to everybody but the file's owner.
SharedLock* openShared(const std::string& path) noexcept
{
    const Descriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    struct stat status;
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return nullptr;
    }
    errno = EINVAL; // unless it is one of ours
    if (!S_ISREG(status.st_mode) || status.st_size != sizeof(SharedLock)) {
        return nullptr;
    }
    SharedLock* const shared = mapShared(file.get());
    if (shared && shared->magic != Magic) {
        ::munmap(shared, sizeof(SharedLock));
        errno = EINVAL;
        return nullptr;
    }
    return shared;
}

/// Makes the lock and gives it its name; null, with EEXIST, when somebody else was first.
SharedLock* createShared(const std::string& path) noexcept
{
    const Descriptor file(::open(Directory, O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
    // The process's own mask must not keep other users out.
    if (file.get() < 0 || ::fchmod(file.get(), 0666) != 0 ||
        ::ftruncate(file.get(), sizeof(SharedLock)) != 0) {
        return nullptr;
    }
    SharedLock* const shared = mapShared(file.get());
    if (!shared) {
        return nullptr;
    }
    shared->magic = Magic;
    char self[32];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", file.get());
    if (initialise(shared->mutex) &&
        ::linkat(AT_FDCWD, self, AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return shared;
    }
    const int error = errno;
    ::munmap(shared, sizeof(SharedLock));
    errno = error;
    return nullptr;
}

SharedLock* openOrCreate(const std::string& path) noexcept
{
    for (;;) {
        SharedLock* shared = openShared(path);
        if (shared || errno != ENOENT) {
            return shared;
        }
        shared = createShared(path);
        if (shared || errno != EEXIST) {
            return shared;
        }
    }
}

WaitResult acquired(Handle& handle, int error) noexcept
{
    if (error != 0 && error != EOWNERDEAD) {
        return WaitResult::Refused;
    }
    ++handle.levels;
    if (error == 0) {
        return WaitResult::Acquired;
    }
    ::pthread_mutex_consistent(handle.mutex);
    return WaitResult::Abandoned;
}

} // namespace

bool NamedLock::open(const std::string& name) noexcept
try {
    close();
    auto handle = std::make_unique<Handle>();
    const std::lock_guard lock(table().mutex);
    auto& mappings = table().mappings;
    handle->entry = mappings.try_emplace(pathOf(name)).first;
    auto& [path, mapping] = *handle->entry;
    if (!mapping.shared) {
        mapping.shared = openOrCreate(path);
    }
    if (!mapping.shared) {
        mappings.erase(handle->entry);
        return false;
    }
    ++mapping.handles;
    handle->mutex = &mapping.shared->mutex;
    m_handle = handle.release();
    return true;
} catch (const std::exception&) {
    return false;
}

void NamedLock::close() noexcept
{
    if (!m_handle) {
        return;
    }
    const std::unique_ptr<Handle> handle(static_cast<Handle*>(m_handle));
    m_handle = nullptr;
    const std::lock_guard lock(table().mutex);
    Mapping& mapping = handle->entry->second;
    mapping.levels += handle->levels;
    if (--mapping.handles == 0 && mapping.levels == 0) {
        ::munmap(mapping.shared, sizeof(SharedLock));
        table().mappings.erase(handle->entry);
    }
}

WaitResult NamedLock::lock() noexcept
{
    auto* const handle = static_cast<Handle*>(m_handle);
    return handle ? acquired(*handle, ::pthread_mutex_lock(handle->mutex)) : WaitResult::Refused;
}

WaitResult NamedLock::tryLock() noexcept
{
    auto* const handle = static_cast<Handle*>(m_handle);
    return handle ? acquired(*handle, ::pthread_mutex_trylock(handle->mutex)) : WaitResult::Refused;
}

bool NamedLock::unlock() noexcept
{
    auto* const handle = static_cast<Handle*>(m_handle);
    if (!handle || ::pthread_mutex_unlock(handle->mutex) != 0) {
        return false;
    }
    --handle->levels;
    return true;
}

} // namespace veltor::platform
