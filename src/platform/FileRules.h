#pragma once

#include "platform/NativeString.h"

namespace veltor::platform {

/// Whether a folder tells names that differ only in case apart: by its own mark where there is one, else by
/// what is known of its file system.
bool comparesCase(const NativeString& folder) noexcept;

} // namespace veltor::platform
