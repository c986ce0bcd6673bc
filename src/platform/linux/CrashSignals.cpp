// The signals that end a process, and the limits that its last steps keep to.

#include "platform/CrashSignals.h"

#include "platform/CrashModules.h"
#include "platform/CrashSteps.h"
#include "platform/HandlerStack.h"
#include "platform/linux/InterruptedStack.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <mutex>

namespace veltor::platform {
namespace {

constexpr int crashSignals[] = {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM};

std::atomic<CrashReporter> crashReport{nullptr};
std::atomic<pid_t> reportingThread{0};
std::atomic<pid_t> reportingProcess{0}; // a moment later

ucontext_t* crashContext = nullptr;

// ---- Standard error, as it was when the handler was installed

struct stat errorStream = {};

} // namespace

const unsigned crashReportSeconds = 4;

/// Not some file of the host, opened under the number of a closed standard error.
RawHandle crashErrorHandle() noexcept
{
    struct stat now = {};
    if (fstat(STDERR_FILENO, &now) != 0) {
        return noHandle;
    }
    const bool same = now.st_dev == errorStream.st_dev && now.st_ino == errorStream.st_ino;
    const bool appends = (fcntl(STDERR_FILENO, F_GETFL) & O_APPEND) != 0;
    return same || appends || !S_ISREG(now.st_mode) ? STDERR_FILENO : noHandle;
}

namespace {

// ---- Timers of the kernel, aimed at one thread; by plain calls, as the C library's may allocate

using KernelTimer = int;

bool createTimer(int signal, void* tag, KernelTimer& timer) noexcept
{
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = signal;
    event.sigev_value.sival_ptr = tag;
    event._sigev_un._tid = gettid();
    return syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer) == 0;
}

void startTimer(KernelTimer timer, time_t seconds, long nanoseconds) noexcept
{
    const itimerspec once = {{0, 0}, {seconds, nanoseconds}};
    syscall(SYS_timer_settime, timer, 0, &once, nullptr);
}

bool isRunning(KernelTimer timer) noexcept
{
    itimerspec rest = {};
    syscall(SYS_timer_gettime, timer, &rest);
    return rest.it_value.tv_sec != 0 || rest.it_value.tv_nsec != 0;
}

KernelTimer limitTimer = 0;
bool hasLimitTimer = false;

void timeUp(int) noexcept
{
    if (gettid() != reportingThread) {
        syscall(SYS_tgkill, getpid(), reportingThread.load(), SIGALRM);
        return;
    }
    if (hasLimitTimer && isRunning(limitTimer)) {
        return; // came late: the step it was meant for has ended
    }
    if (isCrashStepWorking()) {
        return;
    }
    noteBrokenStep("takes too long");
    goOnWithCrash(crashReport);
}

/// A step must find its end: a crash inside of it comes to handle(), whatever mask the signal came with,
/// since the kernel kills where they are blocked; and a wait is limited. A write that is refused ends
/// nothing.
void boundSteps() noexcept
{
    struct sigaction action = {};
    action.sa_handler = timeUp;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    sigaddset(&set, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    sigemptyset(&set);
    for (const int number : {SIGFPE, SIGABRT, SIGILL, SIGSEGV, SIGALRM}) {
        sigaddset(&set, number);
    }
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    hasLimitTimer = createTimer(SIGALRM, nullptr, limitTimer);
}

void takeSignal(int number, const siginfo_t& info, ucontext_t& context) noexcept
{
    CrashState& crash = currentCrash();
    crash.signal = number;
    crash.code = info.si_code;
    if (info.si_code > 0 && (number == SIGSEGV || number == SIGFPE || number == SIGILL)) {
        crash.address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    }
    crash.process = getpid();
    crash.thread = gettid();
    prctl(PR_GET_NAME, crash.threadName);
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    crash.seconds = now.tv_sec;
    crashContext = &context;
    InterruptedStack(context).takeRegisters(crash);
}

// ---- Requests that come at a bad moment

char deferralTag;
std::atomic<int> deferrals{0};

/// A request to end that meets the thread inside the allocator comes again a moment later, when the thread
/// has left it: the report allocates. What the code itself brought about cannot wait.
bool defer(int number, const siginfo_t& info, ucontext_t& context) noexcept
{
    constexpr int maxDeferrals = 1000;
    constexpr long delayNs = 1000000;
    if (info.si_code == SI_TIMER && info.si_value.sival_ptr == &deferralTag) {
        syscall(SYS_timer_delete, info.si_timerid);
    }
    const bool request =
        number == SIGINT || number == SIGTERM || info.si_code == SI_USER || info.si_code == SI_TIMER;
    KernelTimer timer = 0;
    if (!request || deferrals >= maxDeferrals || !InterruptedStack(context).isAllocating() ||
        !createTimer(number, &deferralTag, timer)) {
        return false;
    }
    ++deferrals;
    startTimer(timer, 0, delayNs);
    return true;
}

/// False in a process that was forked off meanwhile, where nobody comes to an end.
bool isReportingProcess() noexcept
{
    const pid_t process = reportingProcess;
    return process == 0 || process == getpid();
}

void handle(int number, siginfo_t* info, void* memory) noexcept
{
    const int formerErrno = errno;
    auto& context = *static_cast<ucontext_t*>(memory);
    const pid_t self = gettid();
    if (reportingThread == 0 && defer(number, *info, context)) {
        errno = formerErrno;
        return;
    }
    pid_t reporting = 0;
    if (reportingThread.compare_exchange_strong(reporting, self)) {
        reportingProcess = getpid();
        takeSignal(number, *info, context);
        boundSteps();
        goOnWithCrash(crashReport);
    }
    if (reporting == self) {
        noteBrokenStep("crashed itself");
        goOnWithCrash(crashReport);
    }
    if (!isReportingProcess()) {
        endCrashedProcess();
    }
    // Another thread reports. Requests to end are being granted already; a crash must not go on.
    if (number == SIGINT || number == SIGTERM) {
        errno = formerErrno;
        return;
    }
    for (;;) {
        pause();
    }
}

/// A program that ends while one of its threads reports would end with a code of its own, and cut the report
/// short.
void letReportEnd() noexcept
{
    while (reportingThread != 0 && reportingThread != gettid() && isReportingProcess()) {
        pause();
    }
}

} // namespace

void limitCrashStep(unsigned seconds) noexcept
{
    if (hasLimitTimer) {
        startTimer(limitTimer, static_cast<time_t>(seconds), 0);
    } else {
        alarm(seconds);
    }
}

long long crashThreadMs() noexcept
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1000LL + time.tv_nsec / 1000000;
}

void takeCrashFrames(CrashState& crash) noexcept
{
    InterruptedStack(*crashContext).takeFrames(crash);
}

void endCrashedProcess() noexcept
{
    _exit(1);
}

void installCrashHandler(CrashReporter report) noexcept
{
    static std::mutex lock; // guards what is prepared here, against other calls
    const std::lock_guard guard(lock);
    crashReport = report;
    if (fstat(STDERR_FILENO, &errorStream) != 0) {
        errorStream = {};
    }
    prepareCrashModules();
    [[maybe_unused]] static const int registered = std::atexit(letReportEnd);
    [[maybe_unused]] static thread_local const HandlerStack stack;

    struct sigaction action = {};
    action.sa_sigaction = handle;
    // While it reports, crashes come here again, but requests to end can wait.
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    sigaddset(&action.sa_mask, SIGINT);
    sigaddset(&action.sa_mask, SIGTERM);
    for (const int number : crashSignals) {
        sigaction(number, &action, nullptr);
    }
}

} // namespace veltor::platform
