#pragma once

#include "platform/FileIo.h"

#include <cstdint>

namespace veltor::platform {

struct FileOpening
{
    bool write = false;      ///< for reading and writing, not for reading alone
    bool createNew = false;  ///< the file must not exist yet; otherwise it must. Its user's alone
    bool refuseLink = false; ///< the last name of the path must not be a symbolic link
};

/// Why a file was not opened.
enum class OpenFault
{
    None,
    System,     ///< the system refused; see OpenedFile::error
    Absent,     ///< the same, because there is none
    Exists,     ///< the same, because there is one where there must be none
    NotRegular, ///< a folder, a pipe, a device
    Link,       ///< a symbolic link where none is allowed
    Outside,    ///< the name leads out of the folder, or to another file system
    Interface,  ///< a file by which the system itself is reached: of /proc, /sys and their like
};

/// A descriptor of the C library, to be closed by it, and what file it is.
struct OpenedFile
{
    int fd = -1;
    FileStatus status;
    OpenFault fault = OpenFault::None;
    int error = 0; ///< the system's own number
};

/// Opens a regular file, in binary mode, without waiting for whatever else the path may lead to. Not handed
/// on to programs that this process starts. On Windows others may read and write it meanwhile, not delete it.
/// Thread-safe.
OpenedFile openFile(const NativePath& path, FileOpening opening);

/// The path under which an open file is found, links resolved; empty when the system does not tell.
NativePath pathOf(int fd);

/// A folder that files are opened beneath: neither "..", nor an absolute name, nor a link, nor another file
/// system on the way leads out of it, whatever is renamed meanwhile.
class ConfinedFolder
{
public:
    /// How the way is kept.
    enum class By
    {
        System,     ///< by the system's own call where it has one, else step by step
        StepByStep, ///< name by name
    };

    explicit ConfinedFolder(const NativePath& path);
    ~ConfinedFolder();
    ConfinedFolder(const ConfinedFolder&) = delete;
    ConfinedFolder& operator=(const ConfinedFolder&) = delete;

    /// Opens the regular file @p name, a path relative to the folder, for reading and writing.
    [[nodiscard]] OpenedFile open(const NativePath& name, By by = By::System) const;

private:
    std::intptr_t m_handle = -1;
    int m_error = 0; // why there is no handle
};

/// Whether the path still names the file with this identity; also true where an open file keeps its name.
bool names(const NativePath& path, const FileIdentity& identity);

/// Whether the file is the user's who runs, and no other may write it.
bool belongsToUser(int fd);

/// Takes away from a file what others than @p access may do with it; false when that is not allowed.
bool restrictAccess(int fd, unsigned access);

/// The user who runs, as FileStatus::owner.
unsigned currentUser() noexcept;

/// What is at a path, links not followed.
enum class Presence
{
    Absent,
    Present,
    Unknown, ///< the system refuses to say; its error tells why
};
Presence presenceOf(const NativePath& path);

/// Whether a regular file is at a path, links not followed.
bool isRegular(const NativePath& path);

/// True where the name of a file can be removed while the file is open.
constexpr bool RemovesOpenFiles =
#ifdef _WIN32
    false;
#else
    true;
#endif

} // namespace veltor::platform
