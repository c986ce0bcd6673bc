#pragma once

#include "platform/FileIo.h"

#include <filesystem>
#include <vector>

namespace veltor::platform {

/// What stands at a name.
struct NameStatus
{
    enum class Kind
    {
        Missing,
        File,   ///< a regular one
        Folder, ///< on the volume of the folder where the names begin
        Other,  ///< a link, a device, a folder of another volume
        Unknown ///< it cannot be told; see `error`
    };
    Kind kind = Kind::Unknown;
    int error = 0;           ///< the system's number when `kind` is Unknown
    bool foreign = false;    ///< another user's, or a folder that others may change (told on Linux only)
    bool changeable = false; ///< this process may make and remove names beside it
    bool impossible = false; ///< with Unknown: no file can have this name, which is too long
    FileIdentity identity;   ///< of a file or folder, where the system tells
};

/// Makes, moves and removes names of files beneath a folder, and never beyond it: no link is followed on the
/// way, no other volume entered. A name is relative to the folder, its parts are separated by '/'; it has
/// no "." and "..", which is the caller's to see to. Behind an interface so that tests can stop and fail each
/// call. Thread-safe as far as the operating system's calls are.
///
/// Results of type int are 0 or the system's error number.
class NameIo
{
public:
    using Path = std::filesystem::path;

    virtual ~NameIo() = default;

    virtual NameStatus look(const Path& folder, const Path& name);
    /// Makes an empty file, or a folder for this user alone; neither may exist.
    virtual int createFile(const Path& folder, const Path& name);
    virtual int createFolder(const Path& folder, const Path& name);
    /// Moves a file in one step.
    /// @param replace  a file that stands at @p to is replaced, else refused
    /// @param through  the system is asked to write it to the disk at once, where it can be asked (Windows)
    virtual int move(const Path& folder, const Path& from, const Path& to, bool replace, bool through);
    virtual int removeFile(const Path& folder, const Path& name);
    /// The folder must be empty.
    virtual int removeFolder(const Path& folder, const Path& name);
    /// Opens an existing regular file for reading and writing as a C descriptor.
    virtual int open(const Path& folder, const Path& name, int& fd);
    /// Waits until the names in a folder are on the disk; an empty name is that of the folder itself. On Windows
    /// as far as its file system can: one that refuses to is no failure.
    virtual int syncFolder(const Path& folder, const Path& name);
    /// The names in a folder, without their own folders.
    virtual int list(const Path& folder, const Path& name, std::vector<Path>& names);
};

/// The implementation in use.
NameIo& nameIo() noexcept;

/// Puts another implementation in place and returns the former one; null restores the system's own.
/// For tests; not to be called while names are being changed.
NameIo* exchangeNameIo(NameIo* replacement) noexcept;

} // namespace veltor::platform
