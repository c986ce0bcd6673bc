#pragma once

#include <string>

namespace veltor::platform {

/// The linker's name as C++ writes it, at most 200 bytes of it and never half a character of UTF-8.
std::string readableName(const char* name);

} // namespace veltor::platform
