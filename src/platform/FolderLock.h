#pragma once

#include "platform/Directory.h"

namespace veltor::platform {

/// A folder that one process has for itself, by a lock that ends with the process, however that ends: who may
/// delete it is seen by trying. On Linux flock() of the folder (which the system's own cleaner of temporary
/// files heeds too), on Windows an open handle that shares no deletion. A child made by fork() has no part in
/// the lock. One thread at a time.
class FolderLock
{
public:
    enum class Outcome
    {
        Taken,
        InUse,   ///< another process has it, or is just making it
        Foreign, ///< another user's, or no folder but a link, say
        Exists,  ///< of make(): the name is taken
        Gone,    ///< there is no such name (any more)
        Failed,  ///< see the error
    };

    FolderLock() noexcept;
    ~FolderLock();
    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&& other) noexcept;

    /// Makes the folder, for the own user alone, and takes its lock.
    Outcome make(const Directory& base, const NativeString& name, std::error_code& error);
    /// Takes the lock of a folder that is there, without waiting.
    Outcome take(const Directory& base, const NativeString& name, std::error_code& error);

    /// Whether this process has the lock; false in a child of fork().
    [[nodiscard]] bool isHeld() const noexcept;
    /// Lets go of the lock; the folder stays.
    void release() noexcept;

    /// Renames the folder within @p base, never over something. On Windows that fails while anybody uses
    /// something in it.
    std::error_code rename(const Directory& base, const NativeString& from, const NativeString& to);

    /// The same to any path of the file system.
    std::error_code moveOut(const Directory& base, const NativeString& from, const NativeString& path);
    /// Removes the folder, which must be empty, and then lets go of the lock.
    std::error_code removeEmpty(Directory& base, const NativeString& name);

    /// Opens the locked folder itself, whatever its name leads to by now.
    std::error_code open(Directory& folder) const;

private:
    struct Holder;
    std::unique_ptr<Holder> m_holder;
};

/// Whether users other than the owner may put names of their choice into @p folder or a folder on its way, in
/// the place of others' names.
bool isOpenToReplacement(const NativeString& folder, std::error_code& error);

/// Renames a file or folder to a name that must not exist: no moment at which another's file of that name
/// is replaced.
std::error_code renameToNew(const NativeString& from, const NativeString& to);

/// Makes a folder that must not exist.
std::error_code makeFolder(const NativeString& path);

[[nodiscard]] bool isTaken(const std::error_code& error) noexcept; ///< the name exists

} // namespace veltor::platform
