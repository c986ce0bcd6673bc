// Who uses a file: a walk over /proc, which compares files by device and inode, never by name, so that
// processes of other name spaces are found too.
#include "platform/FileUsers.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/ProcText.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>

namespace veltor::platform {
namespace {

std::error_code systemError(int code = errno)
{
    return {code, std::system_category()};
}

struct Folder
{
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using FolderPtr = std::unique_ptr<DIR, Folder>;

FolderPtr openFolder(int at, const char* name)
{
    Descriptor fd(::openat(at, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FolderPtr folder(fd ? ::fdopendir(fd.get()) : nullptr);
    if (folder) {
        fd.release();
    }
    return folder;
}

/// A file as stat() tells it, and its mount; 0 where the system does not say.
struct FoundFile : KernelFile
{
    std::uint64_t mount = 0;
};

std::optional<FoundFile> identityOf(int at, const char* name, int flags)
{
    struct statx status = {};
    // No request to a server, no mount: /proc leads anywhere.
    if (::statx(at, name, flags | AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, STATX_INO | STATX_MNT_ID, &status) !=
        0) {
        return std::nullopt;
    }
    const bool isMountKnown = (status.stx_mask & STATX_MNT_ID) != 0;
    return FoundFile{{status.stx_dev_major, status.stx_dev_minor, status.stx_ino},
                     isMountKnown ? status.stx_mnt_id : 0};
}

bool sameFile(const KernelFile& a, const KernelFile& b)
{
    return a.inode == b.inode && a.major == b.major && a.minor == b.minor;
}

bool isRefusal(int error)
{
    return error == EACCES || error == EPERM;
}

bool sameLock(const FileLock& a, const FileLock& b)
{
    return a.kind == b.kind && a.exclusive == b.exclusive && a.begin == b.begin && a.last == b.last &&
           a.waiting == b.waiting;
}

void addLock(std::vector<FileLock>& locks, const FileLock& lock)
{
    if (std::none_of(locks.begin(), locks.end(), [&](const FileLock& one) { return sameLock(one, lock); })) {
        locks.push_back(lock);
    }
}

std::string userName(unsigned id)
{
    passwd record = {};
    passwd* found = nullptr;
    std::vector<char> buffer(1024);
    int error = 0;
    while ((error = ::getpwuid_r(id, &record, buffer.data(), buffer.size(), &found)) == ERANGE &&
           buffer.size() < (1u << 20)) {
        buffer.resize(2 * buffer.size());
    }
    return error == 0 && found ? std::string(found->pw_name) : std::to_string(id);
}

std::int64_t milliseconds(clockid_t clock)
{
    timespec now = {};
    ::clock_gettime(clock, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

std::int64_t startTimeMs(std::uint64_t ticks)
{
    static const long perSecond = ::sysconf(_SC_CLK_TCK);
    const auto rate = static_cast<std::uint64_t>(perSecond > 0 ? perSecond : 100);
    const auto sinceBoot = static_cast<std::int64_t>(ticks / rate * 1000 + ticks % rate * 1000 / rate);
    return milliseconds(CLOCK_REALTIME) - milliseconds(CLOCK_BOOTTIME) + sinceBoot;
}

/// Whether the system may hide whole processes from this one.
bool hidesProcesses(int proc)
{
    bool hides = false;
    if (::geteuid() != 0) {
        const std::string mounts = readProcFile(proc, "self/mountinfo");
        forEachLine(mounts, [&hides](std::string_view line) {
            const auto mount = parseMountLine(line);
            if (mount && mount->type == "proc" && mount->place == "/proc") {
                const std::size_t at = mount->options.find("hidepid=");
                hides = at != std::string_view::npos && mount->options.substr(at + 8, 1) != "0" &&
                        mount->options.substr(at + 8, 3) != "off";
            }
        });
    }
    return hides;
}

/// One walk over all processes for one file.
class Scan
{
public:
    explicit Scan(const FoundFile& file)
        : m_file(file)
        , m_devices{{file.major, file.minor}}
    {}

    FileUsers run();

private:
    void lookInto(int process, std::int64_t pid);
    void lookAtDescriptors(int process, FileUser& user);
    void lookAtLocks(int process, const char* descriptor, FileUser& user);
    void lookAtMappings(int process, FileUser& user);
    void lookAtLink(int process, const char* name, FileUse use, FileUser& user);
    void lookAtSystemLocks(int proc);
    void addMountedDevice(int proc);
    FileUser* userOf(int proc, std::int64_t pid);
    void noteRefusal();

    FoundFile m_file;
    // The kernel's lists may name another device than stat() does (file systems with subvolumes).
    std::set<std::pair<unsigned, unsigned>> m_devices;
    FileUsers m_result;
    std::set<std::int64_t> m_closed; // processes that could not be looked into, or only in part
    bool m_refused = false;          // something of the process at hand
};

void Scan::noteRefusal()
{
    m_refused |= isRefusal(errno);
}

void Scan::lookAtLink(int process, const char* name, FileUse use, FileUser& user)
{
    const auto file = identityOf(process, name, 0);
    if (!file) {
        noteRefusal();
    } else if (sameFile(*file, m_file)) {
        user.uses |= use;
    }
}

void Scan::lookAtLocks(int process, const char* descriptor, FileUser& user)
{
    const std::string text = readProcFile(process, (std::string("fdinfo/") + descriptor).c_str());
    forEachLine(text, [&](std::string_view line) {
        constexpr std::string_view mark = "lock:";
        if (line.substr(0, mark.size()) != mark) {
            return;
        }
        if (const auto lock = parseLockLine(line.substr(mark.size()))) {
            addLock(user.locks, lock->lock);
            m_devices.insert({lock->file.major, lock->file.minor});
        }
    });
}

void Scan::lookAtDescriptors(int process, FileUser& user)
{
    const FolderPtr folder = openFolder(process, "fd");
    if (!folder) {
        noteRefusal();
        return;
    }
    const int at = ::dirfd(folder.get());
    while (const dirent* const entry = ::readdir(folder.get())) {
        if (entry->d_name[0] == '.') {
            continue;
        }
        const auto file = identityOf(at, entry->d_name, 0);
        if (!file) {
            noteRefusal();
            continue;
        }
        struct stat link = {};
        if (!sameFile(*file, m_file) || ::fstatat(at, entry->d_name, &link, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        const unsigned read = link.st_mode & S_IRUSR ? UseOpenForReading : 0u;
        const unsigned write = link.st_mode & S_IWUSR ? UseOpenForWriting : 0u;
        user.uses |= read | write ? read | write : unsigned(UseUntold);
        lookAtLocks(process, entry->d_name, user);
    }
}

void Scan::lookAtMappings(int process, FileUser& user)
{
    errno = 0;
    const std::string maps = readProcFile(process, "maps");
    if (maps.empty()) {
        noteRefusal();
        return;
    }
    Descriptor folder;
    forEachLine(maps, [&](std::string_view line) {
        const auto map = parseMapLine(line);
        if (!map || map->file.inode != m_file.inode || (user.uses & UseMapped) != 0) {
            return;
        }
        if (m_devices.count({map->file.major, map->file.minor}) == 0) {
            // Another file of that number, or the same one under the kernel's own device.
            if (!folder) {
                folder.reset(::openat(process, "map_files", O_PATH | O_DIRECTORY | O_CLOEXEC));
            }
            const auto file = identityOf(folder.get(), std::string(map->range).c_str(), 0);
            if (!file || !sameFile(*file, m_file)) {
                m_refused |= !file; // not to be told apart
                return;
            }
        }
        user.uses |= UseMapped;
    });
}

/// Who a process is.
void introduce(int process, const ProcessStat& stat, FileUser& user)
{
    user.name = std::string(stat.name);
    user.startMs = startTimeMs(stat.startTicks);
    if (const auto id = parseProcessUser(readProcFile(process, "status"))) {
        user.user = userName(*id);
    }
}

void Scan::lookInto(int process, std::int64_t pid)
{
    const std::string text = readProcFile(process, "stat");
    const auto stat = parseProcessStat(text);
    if (!stat || !stat->hasFiles) {
        return;
    }
    FileUser user;
    user.pid = pid;
    m_refused = false;
    lookAtDescriptors(process, user);
    lookAtMappings(process, user);
    lookAtLink(process, "exe", UseRunning, user);
    lookAtLink(process, "cwd", UseCurrentFolder, user);
    lookAtLink(process, "root", UseRootFolder, user);
    if (m_refused) {
        m_closed.insert(pid);
    }
    if (user.uses != 0) {
        introduce(process, *stat, user);
        m_result.users.push_back(std::move(user));
    }
}

/// The user of that number, who may be one of whom no more is known than the number and the name; null when
/// the process has no secrets from this one, or is gone.
FileUser* Scan::userOf(int proc, std::int64_t pid)
{
    auto& users = m_result.users;
    const auto found =
        std::find_if(users.begin(), users.end(), [pid](const FileUser& user) { return user.pid == pid; });
    if (found != users.end()) {
        return &*found;
    }
    if (m_closed.count(pid) == 0) {
        return nullptr;
    }
    const Descriptor process(::openat(proc, std::to_string(pid).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string text = process ? readProcFile(process.get(), "stat") : std::string();
    const auto stat = parseProcessStat(text);
    if (!stat) {
        return nullptr;
    }
    FileUser user;
    user.pid = pid;
    introduce(process.get(), *stat, user);
    users.push_back(std::move(user));
    return &users.back();
}

void Scan::lookAtSystemLocks(int proc)
{
    const std::string text = readProcFile(proc, "locks");
    forEachLine(text, [&](std::string_view line) {
        const auto lock = parseLockLine(line);
        if (!lock || lock->file.inode != m_file.inode ||
            m_devices.count({lock->file.major, lock->file.minor}) == 0) {
            return;
        }
        const auto& users = m_result.users;
        const bool known =
            !lock->lock.waiting && std::any_of(users.begin(), users.end(), [&](const FileUser& user) {
                return std::any_of(user.locks.begin(), user.locks.end(),
                                   [&](const FileLock& one) { return sameLock(one, lock->lock); });
            });
        if (!known) {
            FileUser* const user = userOf(proc, lock->lock.pid);
            addLock(user ? user->locks : m_result.foreignLocks, lock->lock);
        }
    });
}

/// Where a part of a file system is mounted, stat() may tell another device than the list of locks.
void Scan::addMountedDevice(int proc)
{
    const std::string mounts = m_file.mount != 0 ? readProcFile(proc, "self/mountinfo") : std::string();
    forEachLine(mounts, [this](std::string_view line) {
        const auto mount = parseMountLine(line);
        if (mount && mount->id == m_file.mount) {
            m_devices.insert({mount->major, mount->minor});
        }
    });
}

FileUsers Scan::run()
{
    const FolderPtr proc = openFolder(AT_FDCWD, "/proc");
    if (!proc) {
        m_result.error = systemError();
        return std::move(m_result);
    }
    const int at = ::dirfd(proc.get());
    addMountedDevice(at);
    bool found = false;
    errno = 0;
    while (const dirent* const entry = ::readdir(proc.get())) {
        const char* const end = entry->d_name + std::strlen(entry->d_name);
        std::int64_t pid = 0;
        if (std::from_chars(entry->d_name, end, pid).ptr != end || pid <= 0) {
            continue;
        }
        found = true;
        // Open, this folder stays that process's, even if its number is given to another.
        const Descriptor process(::openat(at, entry->d_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (process) {
            lookInto(process.get(), pid);
        } else if (errno != ENOENT && errno != ESRCH) {
            m_closed.insert(pid);
        }
    }
    m_result.hidden = static_cast<unsigned>(m_closed.size());
    if (!found) {
        m_result.error = systemError(ENOSYS); // something, but not the processes
    }
    m_result.othersHidden = hidesProcesses(at);
    lookAtSystemLocks(at);
    return std::move(m_result);
}

} // namespace

FileUsers fileUsers(const NativeString& path)
{
    const auto file = identityOf(AT_FDCWD, path.c_str(), 0);
    if (!file) {
        FileUsers nothing;
        nothing.error = systemError();
        return nothing;
    }
    return Scan(*file).run();
}

FileUsers lockHolders(int fd)
{
    const auto file = identityOf(fd, "", AT_EMPTY_PATH);
    if (!file) {
        FileUsers nothing;
        nothing.error = systemError();
        return nothing;
    }
    FileUsers found = Scan(*file).run();
    auto& users = found.users;
    users.erase(
        std::remove_if(users.begin(), users.end(), [](const FileUser& user) { return user.locks.empty(); }),
        users.end());
    return found;
}

} // namespace veltor::platform
