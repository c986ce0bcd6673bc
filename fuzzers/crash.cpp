// Any bytes as a crash file: read or refused with a reason, never both, and what is read lies within its
// bounds.

#include "Fuzz.h"

#include "utils/diagnostics/CrashReportParser.h"

using veltor::fuzz::demand;

/// Qt 5's JSON parser leaks a little of some texts that it refuses.
extern "C" const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    QString reason;
    const auto report = veltor::utils::parseCrashReport(
        QByteArray(reinterpret_cast<const char*>(bytes), static_cast<int>(size)), reason);
    demand(report.has_value() == reason.isEmpty(), "a file is read or refused", reason);
    if (report) {
        demand(report->signal > 0 && report->time.isValid() && report->frames.size() <= 1024,
               "a report is one");
        for (const auto& frame : report->frames) {
            demand(frame.module.isEmpty() || frame.loadAddress + frame.offset == frame.address,
                   "a frame lies in its module", frame.module);
        }
    }
    return 0;
}
