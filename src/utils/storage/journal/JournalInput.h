#pragma once

#include "utils/storage/io/DeviceIo.h"

#include <vector>

namespace veltor::utils::journal {

/// Reads pieces of a journal through one bounded window. The window grows while it is used up, in either
/// direction, and shrinks when most of it was read in vain: a walk costs what it visits, whether the
/// records of a chain lie side by side or scattered among those of other files.
class JournalInput
{
public:
    /// The longest piece that one fetch() gives.
    static constexpr qint64 MaxPiece = 64 * 1024;

    explicit JournalInput(QIODevice& journal);

    /// The journal's size in bytes; 0 when it cannot be told, see isReadable().
    [[nodiscard]] quint64 size() const noexcept { return m_size; }
    /// False when not even its size can be told: then it is not to be taken for an empty one.
    [[nodiscard]] bool isReadable() const noexcept { return m_readable; }
    /// The system's words for the last failed read; empty where nothing failed.
    [[nodiscard]] const QString& reason() const noexcept { return m_io.reason(); }

    struct Piece
    {
        const char* data; ///< valid until the next fetch()
        qint64 length;    ///< shorter than asked for where the journal ends or cannot be read, -1 when
                          ///< the offset cannot even be sought
    };

    /// The piece of @p length bytes (at most MaxPiece) at @p offset.
    /// @param endHint  when walking backwards, the offset below which the records to come lie; else 0
    Piece fetch(quint64 offset, qint64 length, quint64 endHint = 0);

    /// CRC-32C of @p length bytes at @p offset, which must lie inside the journal. False when they cannot
    /// all be read; @p readable then counts those that could.
    bool checksum(quint64 offset, quint64 length, quint32& checksum, quint64& readable);

private:
    void load(quint64 offset, qint64 length);

    io::DeviceIo m_io;
    quint64 m_size = 0;
    bool m_readable = false;
    std::vector<char> m_window;
    quint64 m_start = 0; // the window holds [m_start, m_start + m_length)
    qint64 m_length = 0;
    qint64 m_used = 0; // bytes handed out of this window
    qint64 m_reach;    // how much the next window is to hold
};

} // namespace veltor::utils::journal
