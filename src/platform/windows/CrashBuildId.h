#pragma once

#include "platform/CrashModules.h"

namespace veltor::platform {

/// The build id of the image that is mapped at @p base: the identifier and age that link a PE file to its
/// debug information, in the order of their bytes. Leaves @p module without one when the image has none.
void findBuildId(const unsigned char* base, CrashModule& module) noexcept;

} // namespace veltor::platform
