// Any bytes as a crash file: read or refused with a reason, never both. To be run with
// ASAN_OPTIONS=detect_leaks=0: Qt 5's JSON parser leaks a little of some texts that it refuses.

#include "utils/diagnostics/CrashReportParser.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    QString reason;
    const auto report = veltor::utils::parseCrashReport(
        QByteArray(reinterpret_cast<const char*>(bytes), static_cast<int>(size)), reason);
    if (report.has_value() != reason.isEmpty()) {
        std::abort();
    }
    return 0;
}
