#pragma once

#include "platform/CrashSignals.h"
#include "platform/RawText.h"

namespace veltor::platform {

/// What the handlers of both systems share: the steps of a report, on the one crash that there is.

CrashState& currentCrash() noexcept;

/// Takes the steps that have not begun; the last ends the process. Also called on top of a step that broke.
[[noreturn]] void goOnWithCrash(CrashReporter report) noexcept;

/// True when the steps from here on may need what the crash has broken.
bool rawStepsAreDone() noexcept;

/// Tells on standard error why the next step comes early.
void noteBrokenStep(const char* what) noexcept;

// Each system's own.

/// How long the full report may take.
extern const unsigned crashReportSeconds;
/// Standard error, unless it has become something else.
RawHandle crashErrorHandle() noexcept;
/// The step that begins now may take so long.
void limitCrashStep(unsigned seconds) noexcept;
/// Fills the frames, each as soon as it is known.
void takeCrashFrames(CrashState& crash) noexcept;
[[noreturn]] void endCrashedProcess() noexcept;

} // namespace veltor::platform
