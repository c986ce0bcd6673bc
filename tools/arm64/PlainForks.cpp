// Preloaded into programs under QEMU, which cannot start a process together with a descriptor of it (clone
// with CLONE_PIDFD). Qt asks the kernel whether that works, and the machine's says yes; here it says no.

#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>

#include <dlfcn.h>

namespace {

/// The programs that are started, QEMU itself among them, are not of this processor.
[[gnu::constructor]] void keepFromChildren()
{
    unsetenv("LD_PRELOAD");
}

} // namespace

extern "C" long syscall(long number, ...) noexcept
{
    using Syscall = long (*)(long, ...);
    static const auto real = reinterpret_cast<Syscall>(dlsym(RTLD_NEXT, "syscall"));
    long words[6];
    va_list arguments;
    va_start(arguments, number);
    for (long& word : words) {
        word = va_arg(arguments, long);
    }
    va_end(arguments);
    if (number == SYS_waitid && words[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    return real(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
