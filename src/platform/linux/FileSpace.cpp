// The stretches of a file that hold data.

#include "platform/FileSpace.h"

#include "platform/FileIo.h"

#include <fcntl.h>

#include <cerrno>

namespace veltor::platform {

bool extendFile(int fd, std::int64_t begin, std::int64_t end) noexcept
{
    int result = 0;
    do {
        result = ::fallocate(fd, 0, begin, end - begin);
    } while (result != 0 && errno == EINTR);
    if (result == 0) {
        return true;
    }
    // posix_fallocate() would fill the range by writing where this is not supported.
    return (errno == EOPNOTSUPP || errno == ENOSYS) && fileIo().resize(fd, end);
}

} // namespace veltor::platform
