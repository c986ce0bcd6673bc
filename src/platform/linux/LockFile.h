#pragma once

#include <string>

#include <sys/types.h>

namespace veltor::platform {

/// A file that processes lock, and which tells whether its last owner released it.
///
/// The lock belongs to the open file description (F_OFD_SETLK): the kernel holds it, and lets it go when
/// the last descriptor is closed, whoever dies how. All state besides is the file's size: 0 after a
/// release, 1 under an owner, so that a dead owner leaves 1 behind. Whatever other programs write into the
/// file, or cut off, can therefore be mistaken for a dead owner, or hide one, but nothing worse.
///
/// One thread at a time, but for waitFor().
class LockFile
{
public:
    enum class Outcome
    {
        Acquired,
        Abandoned, ///< acquired as well, after an owner that released nothing
        Busy,
        Failed, ///< see errno
    };

    explicit LockFile(std::string path);
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Opens the file, or makes it. @return 0, an error of the system, or LockError::NoLock
    int open() noexcept;

    /// Locks without waiting. A file that was removed or replaced is left for the one that has the name now.
    /// @param error  what open() gives, when it failed
    Outcome tryLock(int& error) noexcept;
    /// Gives the lock back, released or abandoned.
    /// @{
    void release() noexcept;
    void abandon() noexcept;
    /// @}

    [[nodiscard]] int descriptor() const noexcept { return m_fd; }
    /// Waits until the file of that descriptor is locked; tryLock() has to confirm it. @return 0 or an error
    static int waitFor(int fd) noexcept;

    /// Unlocks by closing; in a forked child the lock stays with the parent.
    void close() noexcept;

private:
    int openExisting() noexcept;
    int create() noexcept;
    int keep(int fd) noexcept;

    const std::string m_path;
    const std::string m_directory;
    int m_fd = -1;
    dev_t m_device = 0; // of the open file
    ino_t m_inode = 0;
};

} // namespace veltor::platform
