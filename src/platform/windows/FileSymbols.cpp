// Names and source lines from files of modules, by DbgHelp in a session of its own.

#include "platform/FileSymbols.h"

#include "platform/windows/CrashBuildId.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <dbghelp.h>

#include <algorithm>
#include <map>
#include <utility>

namespace veltor::platform {
namespace {

namespace fs = std::filesystem;
constexpr ULONG maxSymbolLength = 200;

class Session
{
public:
    explicit Session(const std::wstring& searchPath)
        : m_open(SymInitializeW(id(), searchPath.c_str(), FALSE) != FALSE)
    {
        SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    }
    ~Session()
    {
        if (m_open) {
            SymCleanup(id());
        }
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    bool load(const fs::path& file, std::uint64_t base)
    {
        return m_open && SymLoadModuleExW(id(), nullptr, file.c_str(), nullptr, base, 0, nullptr, 0) != 0;
    }

    ForeignLocation look(std::uint64_t address)
    {
        ForeignLocation location;
        alignas(SYMBOL_INFO) char memory[sizeof(SYMBOL_INFO) + maxSymbolLength] = {};
        auto* const symbol = reinterpret_cast<SYMBOL_INFO*>(memory);
        symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
        symbol->MaxNameLen = maxSymbolLength;
        if (SymFromAddr(id(), address, nullptr, symbol)) {
            location.symbol.assign(symbol->Name, std::min(symbol->NameLen, maxSymbolLength - 1));
        }
        IMAGEHLP_LINE64 line = {};
        line.SizeOfStruct = sizeof line;
        DWORD displacement = 0;
        if (SymGetLineFromAddr64(id(), address, &displacement, &line)) {
            location.source = line.FileName;
            location.line = static_cast<int>(line.LineNumber);
        }
        return location;
    }

private:
    HANDLE id() { return reinterpret_cast<HANDLE>(this); } // any number that is no process's
    bool m_open;
};

bool hasBuildId(const fs::path& file, const std::vector<unsigned char>& wanted)
{
    HMODULE const image = LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (!image) {
        return false;
    }
    // The lowest bits tell how it was loaded.
    const auto base = reinterpret_cast<std::uintptr_t>(image) & ~std::uintptr_t{3};
    CrashModule module;
    findBuildId(reinterpret_cast<const unsigned char*>(base), module);
    FreeLibrary(image);
    return std::equal(wanted.begin(), wanted.end(), module.buildId, module.buildId + module.buildIdSize);
}

fs::path findFile(const ForeignFrame& frame, const std::vector<fs::path>& directories)
{
    std::vector<fs::path> candidates;
    for (const fs::path& directory : directories) {
        candidates.push_back(directory / frame.module.filename());
    }
    candidates.push_back(frame.module);
    for (const fs::path& candidate : candidates) {
        std::error_code error;
        if (fs::is_regular_file(candidate, error) &&
            (frame.buildId.empty() || hasBuildId(candidate, frame.buildId))) {
            return candidate;
        }
    }
    return {};
}

} // namespace

std::vector<ForeignLocation> locateForeignCode(const std::vector<ForeignFrame>& frames,
                                               const std::vector<fs::path>& directories)
{
    std::wstring searchPath;
    for (const fs::path& directory : directories) {
        searchPath += directory.native() + L';';
    }
    Session session(searchPath);
    std::map<std::pair<fs::path, std::uint64_t>, bool> loaded;
    std::vector<ForeignLocation> locations;
    for (const ForeignFrame& frame : frames) {
        const auto [known, isNew] = loaded.try_emplace({frame.module, frame.loadAddress}, false);
        if (isNew && !frame.module.empty()) {
            const fs::path file = findFile(frame, directories);
            known->second = !file.empty() && session.load(file, frame.loadAddress);
        }
        locations.push_back(known->second ? session.look(frame.address) : ForeignLocation());
    }
    return locations;
}

} // namespace veltor::platform
