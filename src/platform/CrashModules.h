#pragma once

#include <cstdint>

namespace veltor::platform {

/// The program or library that an address lies in, and what finds the same code in its file again.
struct CrashModule
{
    static constexpr int maxBuildId = 32;

    const char* path = "";         ///< in UTF-8 on Windows; lives as long as the object and the module
    std::uint64_t loadAddress = 0; ///< what was added to the addresses in the file
    std::uint64_t offset = 0;      ///< address - loadAddress
    int buildIdSize = 0;
    unsigned char buildId[maxBuildId] = {};
    char pathMemory[1024] = {};
};

/// Prepares what a signal handler could not ask for any more.
void prepareCrashModules() noexcept;

/// False when @p address is inside no module. Allocates nothing; on Linux takes no lock either.
bool findCrashModule(std::uintptr_t address, CrashModule& module) noexcept;

} // namespace veltor::platform
