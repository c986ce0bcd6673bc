#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace veltor::platform {

/// An address of another process, and the module it was in.
struct ForeignFrame
{
    std::filesystem::path module;
    std::uint64_t loadAddress = 0;
    std::uint64_t address = 0;
    std::vector<unsigned char> buildId; ///< empty: the file at the module's path is taken as it is
};

/// Empty where nothing is known.
struct ForeignLocation
{
    std::string symbol; ///< UTF-8
    std::string source; ///< file name of the source
    int line = 0;
};

/// What the files of the modules say about @p frames, in the same order. A file of another build id is not
/// asked. Files and separate debug information are looked for in @p directories first. Thread-safe; on
/// Windows one thread at a time.
std::vector<ForeignLocation> locateForeignCode(const std::vector<ForeignFrame>& frames,
                                               const std::vector<std::filesystem::path>& directories);

} // namespace veltor::platform
