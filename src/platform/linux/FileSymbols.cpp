// Names and source lines from files of modules and their separate debug information, by libdw.

#include "platform/FileSymbols.h"

#include "platform/linux/SymbolName.h"

#include <elfutils/libdwelf.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

namespace veltor::platform {
namespace {

namespace fs = std::filesystem;
using BuildId = std::vector<unsigned char>;

struct Close
{
    void operator()(Elf* elf) const noexcept { elf_end(elf); }
    void operator()(Dwfl* session) const noexcept { dwfl_end(session); }
};

bool hasBuildId(int file, const BuildId& wanted)
{
    const std::unique_ptr<Elf, Close> elf(elf_begin(file, ELF_C_READ_MMAP, nullptr));
    const void* id = nullptr;
    const ssize_t size = elf ? dwelf_elf_gnu_build_id(elf.get(), &id) : -1;
    const auto* const bytes = static_cast<const unsigned char*>(id);
    return size > 0 && std::equal(wanted.begin(), wanted.end(), bytes, bytes + size);
}

/// An open descriptor of the file when it is the one, otherwise -1. Never waits for a pipe's other end.
int openWhenSame(const fs::path& path, const BuildId& wanted)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return -1;
    }
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file >= 0 && (wanted.empty() || hasBuildId(file, wanted))) {
        return file;
    }
    if (file >= 0) {
        close(file);
    }
    return -1;
}

/// ".build-id/ab/cdef.debug"
fs::path pathOfBuildId(const BuildId& id)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : id) {
        text += {digits[byte >> 4], digits[byte & 0xF]};
    }
    return text.size() > 2 ? fs::path(".build-id") / text.substr(0, 2) / (text.substr(2) + ".debug")
                           : fs::path();
}

/// A file that serves as the module: itself, a copy elsewhere, or its separate debug information, which has
/// the same addresses.
std::pair<fs::path, int> findFile(const ForeignFrame& frame, const std::vector<fs::path>& directories)
{
    std::vector<fs::path> candidates;
    candidates.reserve(3 * directories.size() + 1);
    const fs::path name = frame.module.filename();
    for (const fs::path& directory : directories) {
        candidates.push_back(directory / name);
    }
    candidates.push_back(frame.module);
    if (!frame.buildId.empty()) {
        for (const fs::path& directory : directories) {
            candidates.push_back(directory / pathOfBuildId(frame.buildId));
            candidates.push_back(directory / (name.string() + ".debug"));
        }
        candidates.push_back("/usr/lib/debug" / pathOfBuildId(frame.buildId));
    }
    for (const fs::path& candidate : candidates) {
        if (const int file = openWhenSame(candidate, frame.buildId); file >= 0) {
            return {candidate, file};
        }
    }
    return {{}, -1};
}

ForeignLocation look(Dwfl_Module* module, std::uint64_t address)
{
    ForeignLocation location;
    if (const char* name = dwfl_module_addrname(module, address)) {
        location.symbol = readableName(name);
    }
    if (Dwfl_Line* const line = dwfl_module_getsrc(module, address)) {
        if (const char* source = dwfl_lineinfo(line, nullptr, &location.line, nullptr, nullptr, nullptr)) {
            location.source = source;
        }
    }
    return location;
}

} // namespace

std::vector<ForeignLocation> locateForeignCode(const std::vector<ForeignFrame>& frames,
                                               const std::vector<fs::path>& directories)
{
    std::string path;
    for (const fs::path& directory : directories) {
        path += directory.string() + ':';
    }
    path += ".debug:/usr/lib/debug";
    char* searched = path.data();
    const Dwfl_Callbacks callbacks = {dwfl_build_id_find_elf, dwfl_standard_find_debuginfo,
                                      dwfl_offline_section_address, &searched};
    elf_version(EV_CURRENT);

    using Place = std::pair<fs::path, std::uint64_t>;
    // Each module in a session of its own: addresses in a damaged report may overlap.
    std::map<Place, std::pair<std::unique_ptr<Dwfl, Close>, Dwfl_Module*>> modules;
    std::vector<ForeignLocation> locations;
    for (const ForeignFrame& frame : frames) {
        auto [known, isNew] = modules.try_emplace({frame.module, frame.loadAddress});
        auto& [session, module] = known->second;
        if (isNew && !frame.module.empty()) {
            const auto [name, file] = findFile(frame, directories);
            session.reset(file >= 0 ? dwfl_begin(&callbacks) : nullptr);
            module = session ? dwfl_report_elf(session.get(), name.c_str(), name.c_str(), file,
                                               frame.loadAddress, true)
                             : nullptr;
            if (file >= 0 && !module) {
                close(file);
            }
            if (session) {
                dwfl_report_end(session.get(), nullptr, nullptr);
            }
        }
        locations.push_back(module ? look(module, frame.address) : ForeignLocation());
    }
    return locations;
}

} // namespace veltor::platform
