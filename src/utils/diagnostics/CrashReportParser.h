#pragma once

#include <veltor/utils/CrashReport.h>

namespace veltor::utils {

/// The bytes of a crash file, which are not trusted; none with a reason when they do not fit.
std::optional<CrashReport> parseCrashReport(const QByteArray& bytes, QString& reason);

} // namespace veltor::utils
