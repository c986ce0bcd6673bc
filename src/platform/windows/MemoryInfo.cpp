// The memory of the machine and the process.

#include "platform/MemoryInfo.h"

#include <windows.h>

namespace veltor::platform {

PhysicalMemory queryPhysicalMemory() noexcept
{
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (!::GlobalMemoryStatusEx(&status)) {
        return {};
    }
    return {status.ullTotalPhys, status.ullAvailPhys};
}

std::uint64_t containerMemoryLimit()
{
    return 0;
}

} // namespace veltor::platform
