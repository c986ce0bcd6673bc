#pragma once

#include <filesystem>

namespace veltor::platform {

/// A name as the system spells it: any bytes on Linux, UTF-16 on Windows. Nothing is lost in it, where a
/// text may not be able to tell two names apart.
using NativeString = std::filesystem::path::string_type;

} // namespace veltor::platform
