#pragma once

#include "platform/Directory.h"

#include <cstdint>
#include <optional>
#include <system_error>

namespace veltor::platform {

/// What the system says about writing to a file, learnt without opening it.
struct WriteFacts
{
    /// How far the way to the file leads.
    enum class Way
    {
        There,      ///< the file exists
        New,        ///< it does not, and its folder does
        NoFolder,   ///< `place` does not exist
        NotAFolder, ///< `place` is something else
        NoPassage,  ///< `place` does not let the user through
        Loop,       ///< links lead in a circle
        NameTooLong,
        Failed, ///< see `error`
    };

    Way way = Way::Failed;
    NativeString place; ///< see Way; of a new file its folder, of an existing one itself, links followed
    std::error_code error;

    FileKind kind = FileKind::Unknown;
    bool noRights = false;      ///< for a new file: in its folder
    bool readOnlyMark = false;  ///< nobody may write
    bool immutableMark = false; ///< for a new file: its folder's
    bool appendMark = false;    ///< only at the end
    bool readOnlyMount = false;
    std::optional<std::uint64_t> freeBytes; ///< for this user
    bool noMoreFiles = false;               ///< a new file has no room in the file system's table
    bool quotaFull = false;
};

/// Looks at a file, or at the folder where it would be made. Nothing is changed by looking. Thread-safe.
/// @param wantedBytes  how much is to be written, for the quota
WriteFacts writeFacts(const NativeString& path, std::uint64_t wantedBytes);

} // namespace veltor::platform
