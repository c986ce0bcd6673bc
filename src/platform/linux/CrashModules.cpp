// Modules as the dynamic linker's lock-free look-up knows them, and their build ids as they are mapped.

#include "platform/CrashModules.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <climits>
#include <cstring>

namespace veltor::platform {
namespace {

char programPath[PATH_MAX];

/// A note as it lies in memory: three sizes, then name and contents, each padded to four bytes.
bool takeBuildId(const char* note, const char* end, CrashModule& module) noexcept
{
    const auto padded = [](std::size_t size) { return (size + 3) & ~std::size_t{3}; };
    while (end - note >= static_cast<std::ptrdiff_t>(sizeof(ElfW(Nhdr)))) {
        ElfW(Nhdr) header;
        std::memcpy(&header, note, sizeof header);
        note += sizeof header;
        const std::size_t size = padded(header.n_namesz) + padded(header.n_descsz);
        if (size > static_cast<std::size_t>(end - note)) {
            return false;
        }
        const char* const contents = note + padded(header.n_namesz);
        if (header.n_type == NT_GNU_BUILD_ID && header.n_namesz == 4 && std::memcmp(note, "GNU", 4) == 0 &&
            header.n_descsz <= sizeof module.buildId) {
            module.buildIdSize = static_cast<int>(header.n_descsz);
            std::memcpy(module.buildId, contents, header.n_descsz);
            return true;
        }
        note += size;
    }
    return false;
}

void findBuildId(const dl_find_object& object, CrashModule& module) noexcept
{
    const auto* const start = static_cast<const char*>(object.dlfo_map_start);
    const auto* const end = static_cast<const char*>(object.dlfo_map_end);
    const auto size = static_cast<std::size_t>(end - start);
    ElfW(Ehdr) header;
    if (size < sizeof header) {
        return;
    }
    std::memcpy(&header, start, sizeof header);
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_phentsize != sizeof(ElfW(Phdr)) ||
        header.e_phoff > size || header.e_phnum > (size - header.e_phoff) / sizeof(ElfW(Phdr))) {
        return;
    }
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        std::memcpy(&segment, start + header.e_phoff + i * sizeof segment, sizeof segment);
        const auto* const note = reinterpret_cast<const char*>(module.loadAddress + segment.p_vaddr);
        if (segment.p_type == PT_NOTE && note >= start && note < end &&
            segment.p_memsz <= static_cast<std::size_t>(end - note) &&
            takeBuildId(note, note + segment.p_memsz, module)) {
            return;
        }
    }
}

} // namespace

void prepareCrashModules() noexcept
{
    // Before the program's file is replaced or removed, which would show in its name.
    const ssize_t length = readlink("/proc/self/exe", programPath, sizeof programPath - 1);
    programPath[length > 0 ? length : 0] = '\0';
    if (const auto* name = reinterpret_cast<const char*>(getauxval(AT_EXECFN)); length <= 0 && name) {
        std::strncpy(programPath, name, sizeof programPath - 1); // as it was called, perhaps relative
    }
}

bool findCrashModule(std::uintptr_t address, CrashModule& module) noexcept
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void*>(address), &object) != 0 || !object.dlfo_link_map) {
        return false;
    }
    const link_map& map = *object.dlfo_link_map;
    module.path = map.l_name && *map.l_name ? map.l_name : programPath;
    module.loadAddress = map.l_addr;
    module.offset = address - map.l_addr;
    module.buildIdSize = 0;
    findBuildId(object, module);
    return true;
}

} // namespace veltor::platform
