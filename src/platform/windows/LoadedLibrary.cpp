// Symbols of libraries that the process has loaded already.
#include "platform/LoadedLibrary.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <vector>

namespace veltor::platform {
namespace {

std::vector<HMODULE> modules()
{
    std::vector<HMODULE> found(256);
    DWORD bytes = 0;
    const auto ask = [&] {
        return K32EnumProcessModules(GetCurrentProcess(), found.data(),
                                     static_cast<DWORD>(found.size() * sizeof(HMODULE)), &bytes);
    };
    while (ask() && bytes > found.size() * sizeof(HMODULE)) {
        found.resize(bytes / sizeof(HMODULE));
    }
    found.resize(std::min<std::size_t>(found.size(), bytes / sizeof(HMODULE)));
    return found;
}

void* addressOf(HMODULE module, const char* name) noexcept
{
    return reinterpret_cast<void*>(GetProcAddress(module, name));
}

} // namespace

LoadedLibrary LoadedLibrary::defining(const char* symbol, bool (*accepts)(void* address))
{
    for (const HMODULE module : modules()) {
        void* const address = addressOf(module, symbol);
        HMODULE held = nullptr;
        if (address && accepts(address) &&
            GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                               reinterpret_cast<LPCWSTR>(address), &held)) {
            return LoadedLibrary(held);
        }
    }
    return LoadedLibrary(nullptr);
}

void* LoadedLibrary::symbol(const char* name) const noexcept
{
    return addressOf(static_cast<HMODULE>(m_handle), name);
}

} // namespace veltor::platform
