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
    /// Logging needs what the crash may have broken. So the signal, the registers and the raw frames go to
    /// standard error first, and to a file if setCrashReportFile() named one, by code that needs no heap and
    /// no lock; then follow the log and the exit functions. What crashes on this way, or takes longer than
    /// some seconds, is followed by what comes next, and the exit code is 1 in every case. On Linux the
    /// backtrace begins with the instruction that crashed, or was interrupted, and SIGALRM is taken over
    /// meanwhile; a request to end that comes while its thread allocates is granted a moment later. On
    /// Windows a report that hangs ends the process without exit functions.
    ///
    /// Other threads that crash meanwhile wait for the end. The handler has a stack of its own, to tell of an
    /// overflow, on every thread that has called this function, on those of the library and with a
    /// CrashHandlerStack; call it on the main thread, early.
    ///
    /// Thread-safe.
    static void registerSignalHandler();
};

} // namespace veltor::utils
