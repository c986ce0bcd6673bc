// Positioned reads and writes.

#include "platform/FileIo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace veltor::platform {
static_assert(sizeof(off_t) == 8, "build with large-file support");

std::int64_t FileIo::size(int fd)
{
    // Not fstat(), which takes three times as long, and obliges the next write to the file to give it a
    // new time stamp. The descriptor's position is nobody's here.
    return ::lseek(fd, 0, SEEK_END);
}

std::int64_t FileIo::readAt(int fd, std::int64_t position, char* buffer, std::int64_t length)
{
    std::int64_t done = 0;
    while (done < length) {
        const ssize_t got = ::pread(fd, buffer + done, static_cast<size_t>(length - done), position + done);
        if (got > 0) {
            done += got;
        } else if (got == 0) {
            break;
        } else if (errno != EINTR) {
            return done > 0 ? done : -1;
        }
    }
    return done;
}

std::int64_t FileIo::writeAt(int fd, std::int64_t position, const char* data, std::int64_t length)
{
    std::int64_t done = 0;
    while (done < length) {
        const ssize_t put = ::pwrite(fd, data + done, static_cast<size_t>(length - done), position + done);
        if (put > 0) {
            done += put;
        } else if (put == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

bool FileIo::resize(int fd, std::int64_t size)
{
    int result = 0;
    do {
        result = ::ftruncate(fd, size);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool FileIo::status(int fd, FileStatus& status)
{
    struct stat found;
    if (::fstat(fd, &found) != 0) {
        return false;
    }
    status = {{found.st_dev, found.st_ino},
              found.st_size,
              S_ISREG(found.st_mode),
              static_cast<unsigned>(found.st_mode) & 0777,
              found.st_uid,
              static_cast<unsigned>(found.st_nlink)};
    return true;
}

bool FileIo::sync(int fd)
{
    // The size is among what fdatasync() waits for; time stamps are not.
    int result = 0;
    do {
        result = ::fdatasync(fd);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

int FileIo::removeName(const NativePath& path)
{
    return ::unlink(path.c_str()) == 0 ? 0 : errno;
}

} // namespace veltor::platform
