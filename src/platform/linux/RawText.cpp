// write(2), begun again until all is written.

#include "platform/RawText.h"

#include <unistd.h>

#include <cerrno>

namespace veltor::platform {

bool writeRaw(RawHandle handle, const char* bytes, std::size_t size) noexcept
{
    while (size > 0) {
        const ssize_t done = write(static_cast<int>(handle), bytes, size);
        if (done > 0) {
            bytes += done;
            size -= static_cast<std::size_t>(done);
        } else if (done == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace veltor::platform
