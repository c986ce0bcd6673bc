#pragma once

#include "platform/CrashState.h"

namespace veltor::platform {

/// The full report, free to allocate and to wait; the raw one is written already.
using CrashReporter = void (*)(const CrashState& crash);

/// From now on a crash (SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV and SIGTERM; on Windows also what no thread
/// handles) is told in steps, each once in the life of the process: last words to standard error; the crash
/// file (CrashFile.h); @p report; the exit functions; the end with exit code 1. A step that crashes or takes
/// longer than its limit, seconds all in all, is followed by the next one. Other threads that crash meanwhile
/// wait for the end. The calling thread gets a HandlerStack. Thread-safe.
void installCrashHandler(CrashReporter report) noexcept;

} // namespace veltor::platform
