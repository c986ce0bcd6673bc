#pragma once

#include "platform/CrashState.h"
#include "platform/RawText.h"

namespace veltor::platform {

/// The crash as text for people and as a JSON object, by code that a signal handler may run.

/// One paragraph: signal, address, thread and registers.
void writeHeadline(RawText& out, const CrashState& crash) noexcept;

/// A line for each frame: "#0 0x55d01234 /opt/bin/program+0x1234".
void writeFrames(RawText& out, const CrashState& crash) noexcept;

/// Texts of the crash file that are known beforehand, in UTF-8.
struct CrashIdentity
{
    const char* application;
    const char* applicationVersion;
    const char* libraryVersion;
};

/// One JSON object on one line; readCrashReport() of the library reads it.
void writeJson(RawText& out, const CrashState& crash, const CrashIdentity& identity) noexcept;

} // namespace veltor::platform
