#pragma once

#include <QtCore/QString>

/// How texts from outside (names of files, contents of maps and journals, what the library logs of them) are
/// shown: no escape sequence, line end, control character or change of the writing direction in them reaches
/// a terminal. Everything that was not written by the tool itself goes through one of these, also into pipes:
/// what stands behind a pipe may be a terminal in its turn.
namespace veltor::tool {

/// A name as it stands when all of it can be shown, otherwise in the quotation of shells that shows and means
/// the same: $'two\nlines'.
[[nodiscard]] QString shownName(const QString& name);

/// A text on one line, with what cannot be shown as \n, \t, \x1b or \u202e in its place.
[[nodiscard]] QString shownLine(const QString& text);

/// A JSON text whose strings mean the same, with what JSON allows in them but a terminal obeys as \u009b.
[[nodiscard]] QString shownJson(const QString& json);

} // namespace veltor::tool
