#pragma once

#include <QtCore/QString>

namespace veltor::utils {

/// The message for a file that cannot be opened.
/// @param text   translated, with %0 for the path and %1 for the reason
/// @param error  what the device says; put behind a colon unless it is empty
inline QString pathOpenError(const QString& text, const QString& path, const QString& error)
{
    return text.arg(path, error.isEmpty() ? error : QLatin1String(": ") + error);
}

} // namespace veltor::utils
