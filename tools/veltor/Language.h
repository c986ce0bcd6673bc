#pragma once

#include <QtCore/QString>

class QFileDevice;

/// The language of all that the tool prints: Russian for who has set it, English for all others. The texts of
/// the tool, of the library, of Qt and of the system never mix.
namespace veltor::tool {

/// Chooses it, after the application object was made: LC_ALL, LC_MESSAGES or LANG, the first that is set; on
/// Windows LC_ALL or the user's setting.
void prepareLanguage();

/// What a number of errno means.
[[nodiscard]] QString systemReason(int errorNumber);

/// Why @p file cannot be opened for reading; called right after it failed.
[[nodiscard]] QString openReason(const QFileDevice& file);

} // namespace veltor::tool
