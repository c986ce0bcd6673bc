// WriteFile, begun again until all is written.

#include "platform/RawText.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace veltor::platform {

bool writeRaw(RawHandle handle, const char* bytes, std::size_t size) noexcept
{
    while (size > 0) {
        DWORD done = 0;
        if (!WriteFile(reinterpret_cast<HANDLE>(handle), bytes, static_cast<DWORD>(size), &done, nullptr) ||
            done == 0) {
            return false;
        }
        bytes += done;
        size -= done;
    }
    return true;
}

} // namespace veltor::platform
