// Case in names: a folder's own mark, and file systems that come from elsewhere.
#include "platform/FileRules.h"

#include "platform/linux/Descriptor.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>

namespace veltor::platform {
namespace {

// Of <linux/magic.h>, which lacks some.
constexpr std::array<unsigned long, 7> ignoringCase{
    0x4d44,     // vfat
    0x2011BAB0, // exfat
    0x7366746e, // ntfs3
    0x5346544e, // ntfs
    0xFF534D42, // cifs
    0xFE534D42, // smb2
    0x517B,     // smb
};

} // namespace

bool comparesCase(const NativeString& folder) noexcept
{
    const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    struct statfs system = {};
    if ((fd ? ::fstatfs(fd.get(), &system) : ::statfs(folder.c_str(), &system)) != 0) {
        return true;
    }
    const auto type = static_cast<unsigned long>(system.f_type) & 0xFFFFFFFFul;
    if (std::find(ignoringCase.begin(), ignoringCase.end(), type) != ignoringCase.end()) {
        return false;
    }
#ifdef FS_CASEFOLD_FL
    int flags = 0;
    if (fd && ::ioctl(fd.get(), FS_IOC_GETFLAGS, &flags) == 0) {
        return (flags & FS_CASEFOLD_FL) == 0;
    }
#endif
    return true;
}

} // namespace veltor::platform
