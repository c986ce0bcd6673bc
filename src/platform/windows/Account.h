#pragma once

#include "platform/windows/Handle.h"

#include <string>
#include <vector>

namespace veltor::platform {

/// A record of the process's token, as bytes; empty on failure.
std::vector<unsigned char> tokenRecord(TOKEN_INFORMATION_CLASS which);

/// A security descriptor in the system's text form that gives everything to the own user, the system and the
/// administrators, and nothing to others; empty on failure.
std::wstring ownUserOnly();

/// Whether the own user, or who owns what he makes, owns the file of a handle.
bool isOwn(HANDLE file);

} // namespace veltor::platform
