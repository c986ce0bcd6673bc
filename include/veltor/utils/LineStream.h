#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

class QTextStream;

namespace veltor::utils {

/// Reads characters and lines from a QTextStream through a bounded look-ahead of its own. CR, LF and any
/// run of them are one line break: blank lines are skipped, but for one at the very start of the input.
/// What is in the look-ahead has left the stream: do not read from the stream itself in between.
/// Owner thread only. The stream is not owned and must outlive this object.
class VELTOR_UTILS_EXPORT LineStream
{
public:
    /// @param stream    where the characters come from
    /// @param capacity  the most characters of look-ahead; below 1 means 2048
    explicit LineStream(QTextStream& stream, int capacity = 0);

    /// Reads until the look-ahead is full or the stream ends.
    void fillBuffer();

    /// True when no character is left. May read.
    [[nodiscard]] bool atEnd();

    /// The next character, taken from the input; a null one at the end.
    QChar getChar();

    /// Takes characters while @p predicate holds; stops before the first for which it fails, or at the
    /// end.
    void skip(bool (*predicate)(QChar));
    /// skip() for what QChar::isSpace() names, line breaks among it.
    void skipWhiteSpace();

    /// The next line without its break; the break is taken, with every CR and LF that follows. Empty at
    /// the end. Takes time and memory in proportion to the line, whatever its length.
    QString readLine();

private:
    [[nodiscard]] const QChar* unread() const noexcept;
    bool fillIfEmpty();

    QTextStream& m_stream;
    QString m_buffer; // its last m_remaining characters are not read yet
    int m_capacity;
    int m_remaining = 0;
};

} // namespace veltor::utils
