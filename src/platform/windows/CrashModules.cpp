// Modules as the memory manager sees them: the image that an address was mapped from.

#include "platform/CrashModules.h"

#include "platform/windows/CrashBuildId.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace veltor::platform {

void prepareCrashModules() noexcept {}

bool findCrashModule(std::uintptr_t address, CrashModule& module) noexcept
{
    MEMORY_BASIC_INFORMATION region;
    if (VirtualQuery(reinterpret_cast<void*>(address), &region, sizeof region) == 0 ||
        region.State != MEM_COMMIT || region.Type != MEM_IMAGE) {
        return false;
    }
    constexpr DWORD maxName = 512;
    static wchar_t name[maxName]; // one thread reports
    const DWORD length = GetModuleFileNameW(static_cast<HMODULE>(region.AllocationBase), name, maxName);
    const int size =
        length == 0 ? 0
                    : WideCharToMultiByte(CP_UTF8, 0, name, static_cast<int>(length), module.pathMemory,
                                          static_cast<int>(sizeof module.pathMemory) - 1, nullptr, nullptr);
    module.pathMemory[size] = '\0';
    module.path = module.pathMemory;
    module.loadAddress = reinterpret_cast<std::uintptr_t>(region.AllocationBase);
    module.offset = address - module.loadAddress;
    findBuildId(static_cast<const unsigned char*>(region.AllocationBase), module);
    return true;
}

} // namespace veltor::platform
