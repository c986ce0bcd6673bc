#include "platform/CrashSignals.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace veltor::platform {
namespace {

// Between the code that a signal interrupts and the report there are the kernel's return frame, the
// handler and calls to this depth; a report that leaves out six frames above itself begins with that code.
constexpr int callDepth = 3;

constexpr int crashSignals[] = {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM};

std::atomic<CrashReport> crashReport{nullptr};
std::atomic<unsigned> reportLimitSeconds{0};
std::atomic<pid_t> reportingThread{0};

/// Room for the report of a thread whose own stack is full. Symbol look-up and logging need some 50 KiB,
/// sanitizers several times that; untouched pages cost nothing.
class AlternateStack
{
public:
    AlternateStack() noexcept
    {
        m_memory =
            mmap(nullptr, Size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (m_memory == MAP_FAILED) {
            return;
        }
        stack_t stack{};
        stack.ss_sp = m_memory;
        stack.ss_size = Size;
        sigaltstack(&stack, &m_former);
    }

    ~AlternateStack()
    {
        // Process exit from the crash handler comes here while it stands on this very stack.
        if (m_memory == MAP_FAILED || reportingThread != 0) {
            return;
        }
        sigaltstack(&m_former, nullptr);
        munmap(m_memory, Size);
    }

    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

private:
    static constexpr std::size_t Size = std::size_t{1} << 20;

    void* m_memory;
    stack_t m_former{};
};

void endNow(int) noexcept
{
    _exit(1);
}

/// The report must find its end: crashes inside of it come to handle(), whatever mask the signal came with,
/// since the kernel kills where they are blocked; and a time limit, since it may wait for a lock that the
/// crashed code holds.
void boundReport() noexcept
{
    struct sigaction action = {};
    action.sa_handler = endNow;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGFPE, SIGABRT, SIGILL, SIGSEGV, SIGALRM}) {
        sigaddset(&set, number);
    }
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    alarm(reportLimitSeconds);
}

[[gnu::noinline]] void callReport(int number, int depth) noexcept
{
    if (depth > 1) {
        callReport(number, depth - 1);
    } else {
        crashReport.load()(number);
    }
    asm volatile(""); // the calls above stay calls, with a frame each
}

void handle(int number) noexcept
{
    const pid_t self = gettid();
    pid_t reporting = 0;
    if (reportingThread.compare_exchange_strong(reporting, self)) {
        boundReport();
        callReport(number, callDepth);
        _exit(1);
    }
    if (reporting == self) {
        _exit(1);
    }
    // Another thread reports. Requests to end are being granted already; a crash must not go on.
    if (number == SIGINT || number == SIGTERM) {
        return;
    }
    for (;;) {
        pause();
    }
}

} // namespace

void installCrashHandler(CrashReport report, unsigned limitSeconds) noexcept
{
    crashReport = report;
    reportLimitSeconds = limitSeconds;
    [[maybe_unused]] static thread_local const AlternateStack stack;

    struct sigaction action = {};
    action.sa_handler = handle;
    // While it reports, crashes come here again, but requests to end can wait.
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    sigaddset(&action.sa_mask, SIGINT);
    sigaddset(&action.sa_mask, SIGTERM);
    for (const int number : crashSignals) {
        sigaction(number, &action, nullptr);
    }
}

} // namespace veltor::platform
