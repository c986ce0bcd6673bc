#pragma once

#include "platform/Directory.h"
#include "platform/linux/Descriptor.h"

#include <dirent.h>

namespace veltor::platform {

/// An open folder on Linux; the stream is made when names are first asked for, and owns the descriptor then.
struct Directory::Folder
{
    ~Folder()
    {
        if (stream) {
            ::closedir(stream);
        }
    }

    Descriptor fd;
    DIR* stream = nullptr;

    [[nodiscard]] int at() const { return stream ? ::dirfd(stream) : fd.get(); }
};

/// Opens a folder by its name in another; see Directory::openIn().
Descriptor openFolderAt(int at, const char* name, Links links, bool grant) noexcept;

/// statx() as a FileStatus; 0 or errno.
int fileStatus(int at, const char* name, int flags, FileStatus& status) noexcept;

} // namespace veltor::platform
