#pragma once

#include "platform/CrashState.h"
#include "platform/RawText.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace veltor::platform {

/// Where crashes are written: "%p" in the name stands for the process's number, "%t" for the time of the
/// crash in UTC ("20261121T183000Z"), "%%" for a percent sign.
struct CrashFilePlan
{
    std::filesystem::path directory;
    std::filesystem::path::string_type nameTemplate;
    std::string application, applicationVersion, libraryVersion; ///< UTF-8
};

/// Crashes from now on go to a new file of that plan; none when its name is empty. Fails, with the former
/// plan in force, where no file can be made in the directory. On Linux a file without a name is opened here,
/// with room for a report, which is named when it is complete: neither a full disk nor a lack of descriptors
/// is in its way, and a process that does not crash leaves nothing. Thread-safe.
std::error_code setCrashFile(CrashFilePlan plan);

/// Writes @p crash to a new file that only its owner may read, and a line with its name, or with why there is
/// none, to @p words. Never writes to a file that is there already: ".1" and so on are added to the name. For
/// the crash handler.
void writeCrashFile(const CrashState& crash, RawText& words) noexcept;

/// Whether that is an ordinary file of the user whom this process acts for; on Windows any ordinary file.
bool isOwnFile(const std::filesystem::path& path) noexcept;

} // namespace veltor::platform
