#pragma once

#include <cstdint>

namespace veltor::platform {

/// Extends a file to @p end bytes such that the bytes from @p begin on (at or beyond the old end) can be
/// written through a mapping without running out of disk space. Where the file system reserves no space,
/// the file is only extended.
/// @return false, with the file as it was, when there is no room or the file is not writable
bool extendFile(int fd, std::int64_t begin, std::int64_t end) noexcept;

} // namespace veltor::platform
