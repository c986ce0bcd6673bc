#pragma once

#include <QtCore/QString>

namespace veltor::utils {

/// What went wrong: a text of the storage, and the system's or the device's words where it was their doing.
struct Fault
{
    QString text;
    QString reason;

    /// Both in one line.
    [[nodiscard]] QString whole() const
    {
        return reason.isEmpty() ? text : text + QStringLiteral(": ") + reason;
    }
};

} // namespace veltor::utils
