#pragma once

#include "platform/FileUsers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The texts below /proc that tell of files and their users. None is trusted: a line that does not fit gives
/// nothing.
namespace veltor::platform {

/// A file as the kernel names it there: device number and inode.
struct KernelFile
{
    unsigned major = 0;
    unsigned minor = 0;
    std::uint64_t inode = 0;
};

struct LockLine
{
    FileLock lock;
    KernelFile file;
};

/// A line of /proc/locks, or what stands behind "lock:" in /proc/PID/fdinfo/FD.
std::optional<LockLine> parseLockLine(std::string_view line);

struct MapLine
{
    KernelFile file;
    std::string_view range; ///< its name in /proc/PID/map_files
};

/// A line of /proc/PID/maps; nothing for memory without a file.
std::optional<MapLine> parseMapLine(std::string_view line);

struct ProcessStat
{
    std::string_view name;
    std::uint64_t startTicks = 0; ///< since the system's start
    bool hasFiles = true;         ///< neither a thread of the kernel nor a process that has ended
};

/// /proc/PID/stat; the name may hold anything, brackets and line breaks too.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// The effective user, of /proc/PID/status.
std::optional<unsigned> parseProcessUser(std::string_view text);

/// One mount, of /proc/self/mountinfo.
struct MountLine
{
    unsigned long long id = 0;
    unsigned major = 0;
    unsigned minor = 0;
    bool readOnly = false;    ///< this mount, or the whole file system
    std::string place;        ///< where it is mounted, escapes resolved
    std::string_view type;    ///< of the file system
    std::string source;       ///< the device, escapes resolved
    std::string_view options; ///< of the file system
};

std::optional<MountLine> parseMountLine(std::string_view line);

/// Calls @p action with each line of a text.
template <typename Action>
void forEachLine(std::string_view text, Action&& action)
{
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        action(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// The whole text of a file below /proc, relative to an open folder; empty with errno set on failure.
std::string readProcFile(int folder, const char* name);

} // namespace veltor::platform
