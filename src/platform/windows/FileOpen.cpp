#include "platform/windows/FileOpen.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdint>

namespace veltor::platform {

int openFile(const std::wstring& path, FileOpening opening) noexcept
{
    const DWORD access = opening.write ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
    const HANDLE handle =
        CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    opening.createNew ? CREATE_NEW : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) { // NOLINT: the system's own convention
        return -1;
    }
    const int flags = _O_BINARY | (opening.write ? _O_RDWR : _O_RDONLY);
    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), flags);
    if (descriptor < 0) {
        CloseHandle(handle);
    }
    return descriptor;
}

} // namespace veltor::platform
