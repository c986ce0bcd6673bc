#include "platform/CrashSignals.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace veltor::platform {
namespace {

constexpr int crashSignals[] = {SIGFPE, SIGABRT, SIGILL, SIGINT, SIGSEGV, SIGTERM};

std::atomic<CrashReport> crashReport{nullptr};
std::atomic<bool> reporting{false};

void handle(int number);

void install() noexcept
{
    for (const int number : crashSignals) {
        std::signal(number, handle);
    }
}

void handle(int number)
{
    if (reporting.exchange(true)) {
        std::_Exit(1);
    }
    // The C runtime has put back the default action, which would end a crash in the report differently.
    install();
    crashReport.load()(number);
    std::_Exit(1);
}

} // namespace

void installCrashHandler(CrashReport report, unsigned) noexcept
{
    crashReport = report;
    install();
}

} // namespace veltor::platform
