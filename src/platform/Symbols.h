#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace veltor::platform {

/// What is at an address of this process; empty texts where nothing is known.
struct CodeLocation
{
    std::string symbol;                        ///< in the local 8-bit encoding, at most 200 bytes
    std::filesystem::path::string_type module; ///< the file's full name, as the system spells it
};

/// Looks an address up; one of 32 bits is given sign-extended. The first call readies the symbol engine,
/// which is released when the library is unloaded; nothing is known after that. On Linux thread-safe, and
/// a signal handler that interrupted this function on the same thread learns nothing instead of waiting
/// for itself; on Windows one thread at a time.
CodeLocation locateCode(std::uint64_t address);

} // namespace veltor::platform
