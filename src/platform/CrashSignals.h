#pragma once

namespace veltor::platform {

/// Reports the signal of that number and ends the process with exit code 1.
using CrashReport = void (*)(int signal);

/// Calls @p report on SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV and SIGTERM, once in the life of the
/// process, from six frames above the code that the signal interrupted. A crash inside of it ends the
/// process with exit code 1. Linux only: so does taking longer than @p limitSeconds, other threads that
/// crash meanwhile wait for the end, and the calling thread gets an alternate stack for @p report to run
/// on. Thread-safe.
void installCrashHandler(CrashReport report, unsigned limitSeconds) noexcept;

} // namespace veltor::platform
