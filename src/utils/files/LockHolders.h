#pragma once

#include <QtCore/QString>

namespace veltor::utils {

/// Who has a lock on an open file, by name, number and user, for a sentence; empty where nobody can be named.
/// A walk over all processes: for the message after a lock was refused.
[[nodiscard]] QString lockHolderNames(int fd);

} // namespace veltor::utils
