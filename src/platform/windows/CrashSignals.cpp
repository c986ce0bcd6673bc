// The C runtime's signals and the exceptions that no thread handles, and a thread that watches over the
// limits.

#include "platform/CrashSignals.h"

#include "platform/CrashModules.h"
#include "platform/CrashSteps.h"
#include "platform/HandlerStack.h"
#include "platform/windows/CrashStack.h"

#include <atomic>
#include <csignal>
#include <ctime>

namespace veltor::platform {
namespace {

constexpr int crashSignals[] = {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM};

std::atomic<CrashReporter> crashReport{nullptr};
std::atomic<DWORD> reportingThread{0};
const CONTEXT* crashContext = nullptr; // of the reporting thread; none when a signal came without

// ---- The limit of a step

HANDLE stepBegins = nullptr; // an event
std::atomic<DWORD> stepLimitMs{INFINITE};

/// Nothing can interrupt the reporting thread and let it go on: where it hangs, it is stopped, what is left
/// of the raw steps is taken here, and the process ends.
DWORD WINAPI watchSteps(void*)
{
    for (DWORD wait = INFINITE;; wait = stepLimitMs) {
        if (WaitForSingleObject(stepBegins, wait) == WAIT_TIMEOUT && !isCrashStepWorking()) {
            break;
        }
    }
    if (HANDLE const thread = OpenThread(THREAD_SUSPEND_RESUME, FALSE, reportingThread)) {
        SuspendThread(thread);
    }
    noteBrokenStep("takes too long");
    if (rawStepsAreDone()) {
        endCrashedProcess();
    }
    stepLimitMs = INFINITE;
    goOnWithCrash([](const CrashState&) { endCrashedProcess(); });
}

void startWatching() noexcept
{
    static std::atomic<bool> started{false};
    if (started.exchange(true)) {
        return;
    }
    stepBegins = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE const thread = stepBegins ? CreateThread(nullptr, 0, watchSteps, nullptr, 0, nullptr) : nullptr;
    if (thread) {
        CloseHandle(thread);
    }
    // The thread and the handlers need the library to the end of the process.
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&watchSteps), &self);
}

// ---- Crashes

void installSignals(void (*handler)(int)) noexcept
{
    for (const int number : crashSignals) {
        std::signal(number, handler);
    }
}

/// Returns only when another thread reports already, which it waits for.
void report(int number, long long code, std::uint64_t address, const CONTEXT* context) noexcept
{
    const DWORD self = GetCurrentThreadId();
    DWORD reporting = 0;
    if (reportingThread.compare_exchange_strong(reporting, self)) {
        CrashState& crash = currentCrash();
        crash.signal = number;
        crash.code = code;
        crash.address = address;
        crash.process = GetCurrentProcessId();
        crash.thread = self;
        crash.seconds = std::time(nullptr);
        crashContext = context;
        if (context) {
            takeRegisters(*context, crash);
        }
        goOnWithCrash(crashReport);
    }
    if (reporting == self) {
        noteBrokenStep("crashed itself");
        goOnWithCrash(crashReport);
    }
    Sleep(INFINITE);
}

void handle(int number)
{
    // The C runtime has put back the default action, which would end a crash in the report differently.
    installSignals(handle);
    report(number, 0, 0, nullptr);
}

/// 0 for what is no crash of this program's code, such as a debugger's business.
int signalOf(DWORD exception) noexcept
{
    switch (exception) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_STACK_OVERFLOW:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
        return SIGSEGV;
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
        return SIGILL;
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_FLT_DENORMAL_OPERAND:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INEXACT_RESULT:
    case EXCEPTION_FLT_INVALID_OPERATION:
    case EXCEPTION_FLT_OVERFLOW:
    case EXCEPTION_FLT_STACK_CHECK:
    case EXCEPTION_FLT_UNDERFLOW:
        return SIGFPE;
    default:
        return 0;
    }
}

std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> formerFilter{nullptr};

LONG WINAPI filter(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (const int number = signalOf(record.ExceptionCode)) {
        const bool hasAddress =
            record.NumberParameters >= 2 && (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION ||
                                             record.ExceptionCode == EXCEPTION_IN_PAGE_ERROR);
        report(number, record.ExceptionCode,
               hasAddress ? record.ExceptionInformation[1]
                          : reinterpret_cast<std::uintptr_t>(record.ExceptionAddress),
               exception->ContextRecord);
    }
    const LPTOP_LEVEL_EXCEPTION_FILTER former = formerFilter;
    return former ? former(exception) : EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

const unsigned crashReportSeconds = 20; // DbgHelp reads the symbols of every module first

RawHandle crashErrorHandle() noexcept
{
    HANDLE const handle = GetStdHandle(STD_ERROR_HANDLE);
    return handle ? reinterpret_cast<RawHandle>(handle) : noHandle;
}

void limitCrashStep(unsigned seconds) noexcept
{
    stepLimitMs = seconds * 1000;
    if (stepBegins) {
        SetEvent(stepBegins);
    }
}

long long crashThreadMs() noexcept
{
    ULARGE_INTEGER spent = {};
    if (HANDLE const thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, reportingThread)) {
        FILETIME made, ended, kernel, user;
        if (GetThreadTimes(thread, &made, &ended, &kernel, &user)) {
            spent.QuadPart = (static_cast<ULONGLONG>(kernel.dwHighDateTime) << 32 | kernel.dwLowDateTime) +
                             (static_cast<ULONGLONG>(user.dwHighDateTime) << 32 | user.dwLowDateTime);
        }
        CloseHandle(thread);
    }
    return static_cast<long long>(spent.QuadPart / 10000); // of 100 ns each
}

void takeCrashFrames(CrashState& crash) noexcept
{
    if (crashContext) {
        followStack(*crashContext, crash);
    } else {
        // The C runtime's way to its handler lies between; what it looks like differs with its version.
        crash.frameCount = RtlCaptureStackBackTrace(1, CrashState::maxFrames, crash.frames, nullptr);
    }
}

void endCrashedProcess() noexcept
{
    TerminateProcess(GetCurrentProcess(), 1);
    std::_Exit(1);
}

void installCrashHandler(CrashReporter reporter) noexcept
{
    crashReport = reporter;
    prepareCrashModules();
    startWatching();
    static thread_local const HandlerStack stack;
    static_cast<void>(stack);
    installSignals(handle);
    const LPTOP_LEVEL_EXCEPTION_FILTER former = SetUnhandledExceptionFilter(filter);
    if (former != filter) {
        formerFilter = former;
    }
}

} // namespace veltor::platform
