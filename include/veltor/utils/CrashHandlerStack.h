#pragma once

#include <veltor/Export.h>

#include <memory>

namespace veltor::utils {

/// Gives the calling thread a stack of its own for the crash handler, so that an overflow of the thread's
/// stack is reported as well; without, the system ends the process without a word. Lives on the stack of the
/// thread's outermost function. The library's own threads, and those that have called
/// Tracer::registerSignalHandler(), need none.
///
/// On Linux 1 MiB of address space with a guard page, of which only touched pages take memory; a stack for
/// signals that the thread had before is put back at the end. On Windows 128 KiB of the thread's own stack
/// are kept free until the thread ends.
///
/// Threads: made and destroyed on the thread it is for.
class VELTOR_UTILS_EXPORT CrashHandlerStack
{
public:
    /// For the calling thread, which destroys the object too.
    CrashHandlerStack();
    ~CrashHandlerStack();
    CrashHandlerStack(const CrashHandlerStack&) = delete;
    CrashHandlerStack& operator=(const CrashHandlerStack&) = delete;

    /// False when the system had no memory for it.
    [[nodiscard]] bool isActive() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace veltor::utils
