#pragma once

#include <veltor/Export.h>

#include <QtCore/QLocale>

namespace veltor::utils {

/// @defgroup language The language of messages
///
/// The language of the library's messages: texts of exceptions, log lines, words for the user. They are
/// written in Russian; catalogues of other languages (English: "en") are embedded in the library.
///
/// Only texts that are made afterwards change, and only their words: numbers, JSON and everything that takes
/// a QLocale of its own stay as they are. The application gets a QEvent::LanguageChange, and so do its
/// windows. A translator of the application's own wins when it was installed later.
///
/// Threads: the application's thread only; other threads may go on making messages.
/// @{

/// Makes the library's messages speak the language of @p locale: the first of QLocale::uiLanguages() that
/// is Russian or has a catalogue. A catalogue of the whole language serves each of its countries.
///
/// May be called again, with the same locale (nothing happens) or another one. The catalogue stays until
/// removeTranslation() or the end of the application object; one that is created later begins in Russian.
///
/// @return true when a catalogue is installed now; false when the messages are in Russian now, because the
///         locale wants Russian, because there is no catalogue for it, or because there is no
///         QCoreApplication
VELTOR_UTILS_EXPORT bool installTranslation(const QLocale& locale);

/// Makes the messages Russian again. Without effect when they are.
VELTOR_UTILS_EXPORT void removeTranslation();

/// @}

} // namespace veltor::utils
