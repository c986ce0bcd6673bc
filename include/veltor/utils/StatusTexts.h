#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

namespace veltor::utils {

/// Whether something is on, where a group may switch its members off.
enum class StatusCode : int
{
    Off = 0,      ///< off by itself
    On = 1,       ///< on
    GroupOff = 2, ///< off for the group
};

/// The status for the user, translated in the context "QObject". Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT QString toOnOff(bool on);
/// The same for a group's member; an empty text for a number that is no StatusCode.
[[nodiscard]] VELTOR_UTILS_EXPORT QString toOnOff(StatusCode status);
/// "Yes" or "no" for the user, likewise.
[[nodiscard]] VELTOR_UTILS_EXPORT QString toYesNo(bool yes);

} // namespace veltor::utils
