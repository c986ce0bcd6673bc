// Build ids of PE images, read from their debug directory as it is mapped.

#include "platform/windows/CrashBuildId.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstring>

namespace veltor::platform {
namespace {

/// "RSDS", 16 bytes of identifier, 4 of age, and the name of a PDB file.
constexpr char signature[] = {'R', 'S', 'D', 'S'};
constexpr int idBytes = 20;

} // namespace

void findBuildId(const unsigned char* base, CrashModule& module) noexcept
{
    module.buildIdSize = 0;
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, base, sizeof dos);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew <= 0) {
        return;
    }
    IMAGE_NT_HEADERS headers; // of this process's width, as all its modules are
    std::memcpy(&headers, base + dos.e_lfanew, sizeof headers);
    const IMAGE_OPTIONAL_HEADER& optional = headers.OptionalHeader;
    const IMAGE_DATA_DIRECTORY& debug = optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
    const auto isInside = [size = optional.SizeOfImage](DWORD start, DWORD length) {
        return start <= size && length <= size - start;
    };
    if (headers.Signature != IMAGE_NT_SIGNATURE || optional.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC ||
        debug.VirtualAddress == 0 || !isInside(debug.VirtualAddress, debug.Size)) {
        return;
    }
    for (DWORD i = 0; i < debug.Size / sizeof(IMAGE_DEBUG_DIRECTORY); ++i) {
        IMAGE_DEBUG_DIRECTORY entry;
        std::memcpy(&entry, base + debug.VirtualAddress + i * sizeof entry, sizeof entry);
        const unsigned char* const record = base + entry.AddressOfRawData;
        if (entry.Type == IMAGE_DEBUG_TYPE_CODEVIEW && entry.AddressOfRawData != 0 &&
            isInside(entry.AddressOfRawData, sizeof signature + idBytes) &&
            std::memcmp(record, signature, sizeof signature) == 0) {
            std::memcpy(module.buildId, record + sizeof signature, idBytes);
            module.buildIdSize = idBytes;
            return;
        }
    }
}

} // namespace veltor::platform
