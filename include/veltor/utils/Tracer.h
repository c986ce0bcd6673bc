#pragma once

#include <veltor/Export.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace veltor::utils {

/// Call stacks as text, and a handler that logs one when the process crashes.
///
/// Symbol names are demangled and at most 200 bytes long. On Linux they come from the symbol tables of
/// the program and its libraries, so functions that are not exported have names as long as these tables
/// are not stripped; libraries loaded or unloaded meanwhile are noticed. On Windows only the modules
/// present at the first look-up are known.
class VELTOR_UTILS_EXPORT Tracer
{
public:
    /// The return addresses of the calling thread's stack, innermost first: the first lies in this very
    /// function.
    /// @param maxFrames  how many to capture at most; 0 or less gives none, and above 65,535 counts as that
    ///
    /// Thread-safe.
    [[nodiscard]] static QVector<void*> backtrace(int maxFrames);

    /// One line per address, in the same order: "symbol: module file". An address without a symbol is
    /// shown as "[0x1234abcd]", one outside all modules with "[unknown file]" as its module. An address is
    /// looked up as it is: the return address of a call that ends its function may show the next function.
    ///
    /// Threads: on Linux thread-safe; on Windows one thread at a time, which is the callers' business.
    [[nodiscard]] static QStringList symbols(const QVector<void*>& frames);

    /// Writes the innermost 64 frames of the caller's stack as one record of the log: "Backtrace:" and a
    /// line for each.
    /// @param level  of the record
    /// @param skip  how many of the caller's own frames to leave out, negative counts as 0; when that
    ///     would leave none, all 64 are written, those of this class included
    ///
    /// Threads: as symbols().
    static void logBacktrace(logging::LogLevel level, int skip);

    /// From now on SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV and SIGTERM are logged with a backtrace and end
    /// the process with exit code 1. Interrupt and termination requests are meant to be included. Functions
    /// registered for process exit still run, on the thread that got the signal.
    ///
    /// Logging a crash needs what the crash may have broken. So, on Linux: a crash while a crash is being
    /// handled ends the process at once, and so does a handler that has not come to its end, exit functions
    /// included, after 30 seconds (it takes over SIGALRM for that); both with exit code 1. Crashes of other
    /// threads meanwhile are not reported. The handler runs on a stack of its own, so that it survives an
    /// overflow of the stack, on every thread that has called this function; call it on the main thread.
    ///
    /// Thread-safe.
    static void registerSignalHandler();
};

} // namespace veltor::utils
