#pragma once

namespace veltor::platform {

/// Writes up to @p capacity (0 to 65,535) return addresses of the calling thread to @p frames, innermost
/// first; the first lies in the calling function. Allocates nothing. Thread-safe.
/// @return the number written
int captureStack(void** frames, int capacity) noexcept;

} // namespace veltor::platform
