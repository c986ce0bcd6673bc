// The crash file: opened without a name beforehand, linked into its directory when it is complete.

#include "platform/CrashFile.h"

#include "platform/CrashFileName.h"
#include "platform/CrashText.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <memory>
#include <mutex>

namespace veltor::platform {
namespace {

constexpr int maxNames = 100;
constexpr rlim_t reservedBytes = 64 * 1024;

std::error_code lastError() noexcept
{
    return {errno, std::generic_category()};
}

/// A plan and the file that waits for its crash.
struct Prepared
{
    CrashFilePlan plan;
    int file = -1;
    dev_t device = 0;
    ino_t number = 0;
    pid_t process = 0;
    std::unique_ptr<const Prepared> former; // never freed: a crash may be at work with it
};

std::mutex prepareLock; // guards newest
std::unique_ptr<const Prepared> newest;
std::atomic<const Prepared*> current{nullptr};

FixedText<char, PATH_MAX> path;

/// Of no name; -1 where the file system has no such files.
int openNameless(const std::string& directory) noexcept
{
    const int file = open(directory.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        return -1;
    }
    rlimit sizes = {};
    if (getrlimit(RLIMIT_FSIZE, &sizes) == 0 && sizes.rlim_cur >= reservedBytes) { // above it a signal kills
        fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(reservedBytes));
    }
    // Not in the place of a closed standard stream.
    const int high = fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(file);
    return high;
}

int openNew(const char* name) noexcept
{
    return open(name, O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

/// Where no nameless file can be had: whether an ordinary one could.
bool canCreate(const std::string& directory) noexcept
{
    const std::string probe = directory + "/.crash-" + std::to_string(getpid()) + ".probe";
    const int file = openNew(probe.c_str());
    if (file < 0) {
        return false;
    }
    close(file);
    return unlink(probe.c_str()) == 0;
}

/// Still the file that was opened, unnamed, and not what a host that closed all descriptors has put there,
/// nor shared with the process that was forked off.
bool isUsable(const Prepared& prepared) noexcept
{
    struct stat status = {};
    return prepared.file >= 0 && prepared.process == getpid() && fstat(prepared.file, &status) == 0 &&
           status.st_dev == prepared.device && status.st_ino == prepared.number && status.st_nlink == 0;
}

bool write(int file, const CrashState& crash, const CrashFilePlan& plan) noexcept
{
    RawText out(file);
    writeJson(out, crash,
              {plan.application.c_str(), plan.applicationVersion.c_str(), plan.libraryVersion.c_str()});
    return out.flush() && ftruncate(file, static_cast<off_t>(out.written())) == 0;
}

/// Calls @p make with one name after another until it does not find a file there.
template <typename Make>
bool underNewName(const Prepared& prepared, const CrashState& crash, const Make& make) noexcept
{
    path.cut(0);
    path.add(prepared.plan.directory.c_str());
    path.add('/');
    addCrashFileName(path, prepared.plan.nameTemplate.c_str(), crash);
    const std::size_t size = path.size();
    for (int attempt = 0; attempt < maxNames; ++attempt) {
        path.cut(size);
        if (attempt > 0) {
            path.add('.');
            path.addDecimal(attempt, 1);
        }
        if (!path.isWhole()) {
            errno = ENAMETOOLONG;
            return false;
        }
        if (make(path.data())) {
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

bool writeNameless(const Prepared& prepared, const CrashState& crash) noexcept
{
    if (!isUsable(prepared) || !write(prepared.file, crash, prepared.plan)) {
        return false;
    }
    FixedText<char, 64> own;
    own.add("/proc/self/fd/");
    own.addDecimal(prepared.file, 1);
    return underNewName(prepared, crash, [&](const char* name) {
        return linkat(AT_FDCWD, own.data(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
    });
}

bool writeNamed(const Prepared& prepared, const CrashState& crash) noexcept
{
    int file = -1;
    if (!underNewName(prepared, crash, [&](const char* name) { return (file = openNew(name)) >= 0; })) {
        return false;
    }
    const bool written = write(file, crash, prepared.plan);
    const int reason = errno;
    close(file);
    if (!written) {
        unlink(path.data());
        errno = reason;
    }
    return written;
}

} // namespace

std::error_code setCrashFile(CrashFilePlan plan)
{
    auto next = std::make_unique<Prepared>();
    next->plan = std::move(plan);
    if (!next->plan.nameTemplate.empty()) {
        next->file = openNameless(next->plan.directory.native());
        if (next->file < 0 && !canCreate(next->plan.directory.native())) {
            return lastError();
        }
        struct stat status = {};
        if (next->file >= 0 && fstat(next->file, &status) == 0) {
            next->device = status.st_dev;
            next->number = status.st_ino;
        }
        next->process = getpid();
    }
    const std::lock_guard lock(prepareLock);
    const Prepared* const former = current.exchange(next->plan.nameTemplate.empty() ? nullptr : next.get());
    if (former && isUsable(*former)) {
        close(former->file);
    }
    next->former = std::move(newest);
    newest = std::move(next);
    return {};
}

void writeCrashFile(const CrashState& crash, RawText& words) noexcept
{
    const Prepared* const prepared = current;
    if (!prepared) {
        return;
    }
    if (writeNameless(*prepared, crash) || writeNamed(*prepared, crash)) {
        words.text("crash file: ").text(path.data()).text("\n");
    } else {
        const int reason = errno;
        words.text("no crash file ").text(path.data()).text(": error ").decimal(reason).text("\n");
    }
}

bool isOwnFile(const std::filesystem::path& file) noexcept
{
    struct stat status = {};
    return lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

} // namespace veltor::platform
