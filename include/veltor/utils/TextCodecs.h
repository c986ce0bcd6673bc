#pragma once

#include <veltor/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

class QTextCodec;

namespace veltor::utils {

/// @defgroup codecs Text codecs
///
/// Encodings of data files, and walks over a text by code points. Codecs belong to Qt and are never
/// deleted. All functions are thread-safe.
/// @{

/// The codec of that name, as Qt knows it: case and punctuation do not matter. Never null.
/// @throws std::invalid_argument for an unknown name; the message holds the first 21 characters of it
VELTOR_UTILS_EXPORT QTextCodec* codecForName(const QString& name);

/// Encodes @p text into a field of limited size.
/// @param text      any length
/// @param maxBytes  size of the field; at most this many characters are encoded. Below 0 counts as 0.
/// @param codec     not null. One that begins with a byte-order mark, as UTF-16 does, puts it into the
///                  field.
/// @param fits      if not null, told whether the whole text is in the result
/// @return at most @p maxBytes bytes. They are cut by bytes: the last character of a text that does not
///         fit may be a part of one.
VELTOR_UTILS_EXPORT QByteArray fromUnicode(const QString& text, int maxBytes, QTextCodec* codec, bool* fits);

/// The same, and writes a log line of level 3 when the text does not fit.
VELTOR_UTILS_EXPORT QByteArray fromUnicodeVerbose(const QString& text, int maxBytes, QTextCodec* codec,
                                                  bool* fits);

/// Calls @p visitor with each code point from the first to the last, until it answers false. An unpaired
/// surrogate is passed as it is.
/// @return false when the visitor ended the walk, true otherwise and for an empty text
VELTOR_UTILS_EXPORT bool enumUTF32(const QString& text, const std::function<bool(unsigned int)>& visitor);

/// The same from the last code point to the first.
VELTOR_UTILS_EXPORT bool enumUTF32reverse(const QString& text,
                                          const std::function<bool(unsigned int)>& visitor);

/// The codecs that Qt offers, each once under its primary name, in the order of their MIB numbers as Qt
/// lists them.
VELTOR_UTILS_EXPORT QStringList availableCodecs();

/// The UTF codec of a file that begins with a byte-order mark; null without one, and when the file is
/// empty or cannot be opened. However long the file's first line, only its beginning is looked at.
VELTOR_UTILS_EXPORT QTextCodec* codecForTextFile(const QString& path);

/// @}

} // namespace veltor::utils
