// The steps of a report: each runs once, whatever breaks in the one before.

#include "platform/CrashSteps.h"

#include "platform/CrashFile.h"
#include "platform/CrashText.h"

#include <cstdlib>

namespace veltor::platform {
namespace {

enum class Step : int
{
    Headline,
    Stack,
    Frames,
    File,
    Report,
    Exit,
    End
};

// Of the reporting thread alone.
volatile int nextStep = 0;
volatile bool reported = false;
CrashState crash;

// Of the step at work; read where its limit is over.
volatile unsigned limitSeconds = 0;
volatile int limitsOver = 0;
volatile long long msAtBegin = 0;
volatile long long msAtLook = 0;

unsigned limitOf(Step step) noexcept
{
    constexpr unsigned raw = 1;
    constexpr unsigned exit = 5;
    constexpr unsigned shortExit = 2; // what held the report up will hold up exit functions as well
    switch (step) {
    case Step::Report:
        return crashReportSeconds;
    case Step::Exit:
        return reported ? exit : shortExit;
    default:
        return raw;
    }
}

void run(Step step, CrashReporter report) noexcept
{
    RawText words(crashErrorHandle());
    switch (step) {
    case Step::Headline:
        writeHeadline(words, crash);
        break;
    case Step::Stack:
        takeCrashFrames(crash);
        break;
    case Step::Frames:
        writeFrames(words, crash);
        break;
    case Step::File:
        writeCrashFile(crash, words);
        break;
    case Step::Report:
        report(crash);
        reported = true;
        break;
    case Step::Exit:
        std::exit(1);
    case Step::End:
        endCrashedProcess();
    }
}

} // namespace

CrashState& currentCrash() noexcept
{
    return crash;
}

void goOnWithCrash(CrashReporter report) noexcept
{
    for (;;) {
        const auto step = static_cast<Step>(nextStep);
        if (step != Step::End) {
            nextStep = nextStep + 1;
        }
        limitSeconds = limitOf(step);
        limitsOver = 0;
        msAtBegin = crashThreadMs();
        msAtLook = msAtBegin;
        limitCrashStep(limitSeconds);
        run(step, report);
    }
}

bool isCrashStepWorking() noexcept
{
    constexpr int mostLimits = 10;
    const long long limitMs = limitSeconds * 1000LL;
    const long long now = crashThreadMs();
    const bool moved = now - msAtLook > limitMs / 100; // what waits uses next to nothing
    msAtLook = now;
    limitsOver = limitsOver + 1;
    if (!moved || now - msAtBegin > limitMs * 3 / 4 || limitsOver >= mostLimits) {
        return false;
    }
    limitCrashStep(limitSeconds);
    return true;
}

bool rawStepsAreDone() noexcept
{
    return nextStep > static_cast<int>(Step::File);
}

void noteBrokenStep(const char* what) noexcept
{
    RawText(crashErrorHandle()).text("*** crash handler: a step ").text(what).text("\n");
}

} // namespace veltor::platform
