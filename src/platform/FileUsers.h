#pragma once

#include "platform/NativeString.h"

#include <cstdint>
#include <system_error>
#include <vector>

namespace veltor::platform {

/// How a process uses a file; a set of bits.
enum FileUse : unsigned
{
    UseOpenForReading = 1u,
    UseOpenForWriting = 2u,
    UseMapped = 4u,
    UseRunning = 8u, ///< it is the process's program
    UseCurrentFolder = 16u,
    UseRootFolder = 32u,
    UseUntold = 64u, ///< in use; the system does not say how
};

enum class FileLockKind
{
    Flock,    ///< of an open file, by flock()
    Posix,    ///< of a process, by fcntl()
    OpenFile, ///< of an open file, by fcntl()
    Lease,    ///< to be asked before another opens the file
    Other,
};

/// One lock on a file, or the wait for one.
struct FileLock
{
    FileLockKind kind = FileLockKind::Other;
    bool exclusive = false; ///< for writing
    bool mandatory = false;
    bool waiting = false;            ///< not held yet
    std::int64_t pid = 0;            ///< who took it, as the system noted it; 0 or less when it did not
    std::uint64_t begin = 0;         ///< first byte
    std::uint64_t last = UINT64_MAX; ///< last byte; UINT64_MAX for all there ever will be
};

/// One process that uses a file.
struct FileUser
{
    std::int64_t pid = 0;
    NativeString name;        ///< of its program, shortened by the system
    NativeString user;        ///< whose process it is; a number where the account has no name
    std::int64_t startMs = 0; ///< since 1970, UTC; 0 when unknown
    unsigned uses = 0;        ///< of FileUse; none of one who has a lock and cannot be looked into
    std::vector<FileLock> locks;
};

struct FileUsers
{
    std::vector<FileUser> users;
    std::vector<FileLock> foreignLocks; ///< of none of these: of processes that are not seen at all
    unsigned hidden = 0;                ///< processes that could not be looked into, or only in part
    bool othersHidden = false;          ///< the system shows only processes of the own user at all
    std::error_code error;              ///< why nothing could be found out
};

/// Whether a process that has a file open may forbid others to write it.
#ifdef _WIN32
constexpr bool UsersMayForbidWriting = true;
#else
constexpr bool UsersMayForbidWriting = false;
#endif

/// Which processes use the file or folder @p path; a link is followed. Nothing is opened for it, and nothing
/// of it changes. Processes come and go meanwhile: one that appears during the call may be missed.
/// Thread-safe.
FileUsers fileUsers(const NativeString& path);

/// Which processes hold, or wait for, a lock on the open file @p fd (a C descriptor): of the users, only
/// those with locks; on Windows, where locks are not told, all users. The calling process is told of like any
/// other. A walk over all processes: for the message after a lock was refused, not for trying.
FileUsers lockHolders(int fd);

} // namespace veltor::platform
