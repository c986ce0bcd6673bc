#pragma once

#include "platform/CrashState.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace veltor::platform {

void takeRegisters(const CONTEXT& context, CrashState& crash) noexcept;

/// Follows the stack from @p context: by frame pointers with 32 bits, by unwind tables with 64. Memory that
/// cannot be read ends the walk.
void followStack(const CONTEXT& context, CrashState& crash) noexcept;

} // namespace veltor::platform
