#pragma once

#include "platform/CrashSignals.h"
#include "platform/RawText.h"

namespace veltor::platform {

/// What the handlers of both systems share: the steps of a report, on the one crash that there is.

CrashState& currentCrash() noexcept;

/// Takes the steps that have not begun; the last ends the process. Also called on top of a step that broke.
[[noreturn]] void goOnWithCrash(CrashReporter report) noexcept;

/// To be asked when the limit of a step is over: true when the reporting thread has been at work meanwhile
/// and has not had as much of a processor as the limit says, on a busy machine. Then the limit begins anew,
/// some times.
bool isCrashStepWorking() noexcept;

/// True when the steps from here on may need what the crash has broken.
bool rawStepsAreDone() noexcept;

/// Tells on standard error why the next step comes early.
void noteBrokenStep(const char* what) noexcept;

// Each system's own.

/// How long the full report may take.
extern const unsigned crashReportSeconds;
/// Standard error, unless it has become something else.
RawHandle crashErrorHandle() noexcept;
/// The step at work may take so long from now on.
void limitCrashStep(unsigned seconds) noexcept;
/// What the reporting thread has had of a processor so far.
long long crashThreadMs() noexcept;
/// Fills the frames, each as soon as it is known.
void takeCrashFrames(CrashState& crash) noexcept;
[[noreturn]] void endCrashedProcess() noexcept;

} // namespace veltor::platform
