#pragma once

#include <cstdint>

namespace veltor::platform {

/// What is known about the crash, gathered step by step: whoever reads it sees what was there in time.
/// There is one, of static storage, filled by the thread that crashed.
struct CrashState
{
    struct Register
    {
        const char* name;
        std::uint64_t value;
    };
    static constexpr int maxFrames = 64;
    static constexpr int maxRegisters = 40;

    int signal = 0;
    long long code = 0;        ///< the system's reason: si_code, or the exception code on Windows
    std::uint64_t address = 0; ///< that could not be used; 0 for signals that somebody sent
    long long process = 0;
    long long thread = 0;
    char threadName[64] = {};
    long long seconds = 0; ///< since 1970, UTC

    int registerCount = 0;
    Register registers[maxRegisters] = {};

    /// Where it was, innermost first: the instruction, then return addresses.
    volatile int frameCount = 0;
    void* frames[maxFrames] = {};
};

/// "SIGSEGV"; "signal" for one that the crash handler does not know.
const char* signalName(int signal) noexcept;

} // namespace veltor::platform
