#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace veltor::platform {

/// A path as the system's calls take it.
#ifdef _WIN32
using NativePath = std::wstring;
#else
using NativePath = std::string;
#endif

/// What tells one file from another, whatever names lead to it: its volume, and its number there.
using FileIdentity = std::pair<unsigned long long, unsigned long long>;

/// What the system tells of an open file.
struct FileStatus
{
    FileIdentity identity;
    std::int64_t size = 0;
    bool regular = false; ///< no folder, pipe, device...
    unsigned access = 0;  ///< who may do what: the low nine bits of the mode; 0 on Windows
    unsigned owner = 0;   ///< user number; 0 on Windows
    unsigned names = 1;   ///< hard links
};

/// Positioned access to an open file by its C descriptor: one system call an operation, no seek.
/// Behind an interface so that tests can stop, fail or tear each call. Thread-safe as far as the
/// operating system's calls are; on Windows the descriptor's own file position moves. After a failure the
/// system's error (errno, GetLastError()) tells why.
class FileIo
{
public:
    virtual ~FileIo() = default;

    /// Size in bytes, -1 on failure.
    virtual std::int64_t size(int fd);
    /// Reads until @p length bytes or the end; the number of bytes read, -1 if nothing could be read.
    virtual std::int64_t readAt(int fd, std::int64_t position, char* buffer, std::int64_t length);
    /// Writes until @p length bytes or a failure; the number of bytes written.
    virtual std::int64_t writeAt(int fd, std::int64_t position, const char* data, std::int64_t length);
    /// Cuts or extends (with zeros) to @p size bytes.
    virtual bool resize(int fd, std::int64_t size);
    /// What file it is; false when the system does not tell.
    virtual bool status(int fd, FileStatus& status);
    /// Waits until the file's bytes and its size are on the disk, as far as the disk tells the truth.
    virtual bool sync(int fd);
    /// Removes a name. @return 0, or the system's error
    virtual int removeName(const NativePath& path);
};

/// The implementation in use.
FileIo& fileIo() noexcept;

/// Puts another implementation in place and returns the former one; null restores the system's own.
/// For tests; not to be called while files are in use.
FileIo* exchangeFileIo(FileIo* replacement) noexcept;

} // namespace veltor::platform
