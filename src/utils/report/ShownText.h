#pragma once

#include <QtCore/QString>

namespace veltor::utils {

/// A text from outside as it may be shown: line ends are line feeds, other control characters their pictures,
/// and what no text may hold, or what turns the direction of writing, the replacement character.
[[nodiscard]] QString shownText(const QString& text);

} // namespace veltor::utils
