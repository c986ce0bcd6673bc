// Symbols of libraries that the process has loaded already, also of those that a plugin keeps to itself.
#include "platform/LoadedLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include <string>
#include <vector>

namespace veltor::platform {
namespace {

/// The names of all modules; the program's own is empty.
std::vector<std::string> moduleNames()
{
    std::vector<std::string> names;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* list) {
            static_cast<std::vector<std::string>*>(list)->emplace_back(info->dlpi_name);
            return 0;
        },
        &names);
    return names;
}

} // namespace

LoadedLibrary LoadedLibrary::defining(const char* symbol, bool (*accepts)(void* address))
{
    // The program with what it was linked to comes first, as for the dynamic linker.
    for (const std::string& name : moduleNames()) {
        void* const handle = dlopen(name.empty() ? nullptr : name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (!handle) {
            continue;
        }
        void* const address = dlsym(handle, symbol);
        if (address && accepts(address)) {
            return LoadedLibrary(handle);
        }
        dlclose(handle);
    }
    return LoadedLibrary(nullptr);
}

void* LoadedLibrary::symbol(const char* name) const noexcept
{
    return dlsym(m_handle, name);
}

} // namespace veltor::platform
