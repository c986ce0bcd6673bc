#include "platform/FileSpace.h"

#include "platform/FileIo.h"

namespace veltor::platform {

bool extendFile(int fd, std::int64_t /*begin*/, std::int64_t end) noexcept
{
    return fileIo().resize(fd, end); // reserves the space: only files made sparse on purpose have holes
}

} // namespace veltor::platform
