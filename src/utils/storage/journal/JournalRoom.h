#pragma once

#include "utils/storage/io/DeviceIo.h"

namespace veltor::utils::journal {

/// Room ahead of a journal's end: zeros that are written in large aligned pieces, since a page that is new to
/// a file costs four times as much on its own. Nothing leads there, so to every reader it is what an append
/// that was never linked leaves behind.
///
/// A journal that stays is cut to its end; what an owner who died has left behind the end, room or an append
/// without a link, the next one cuts off before it appends. Only a journal that was opened here, under its
/// lock, gets room: another device may be shared with a child of this process, which must not cut it.
class JournalRoom
{
public:
    /// @param journal  outlives the room
    explicit JournalRoom(QIODevice& journal);

    /// Takes the device as it is found. @param end  behind its last record
    /// @return the end: behind everything where the device cannot be cut
    quint64 begin(quint64 size, quint64 end);

    /// Whether the device was a journal before and has its new header: what that held is room.
    [[nodiscard]] bool isReused() const noexcept { return m_reused; }
    /// Starts on such a device. False, and nothing done, on any other.
    bool reuse(quint64 size);

    /// Makes ready for @p length bytes at @p end. No failure of it is one: then there is no room.
    /// @return the end, which has moved where what lies behind it cannot be cut off
    [[nodiscard]] quint64 prepare(quint64 end, quint64 length);

    /// Bytes were written up to there.
    void written(quint64 end) noexcept { m_size = qMax(m_size, end); }

    /// Cuts off what is not used.
    void close(quint64 end);

private:
    void extend(quint64 end, quint64 length);

    io::DeviceIo m_io;
    bool m_allowed;
    bool m_reused;
    bool m_found = false; // something behind the end that is not of this room
    bool m_made = false;
    quint64 m_size = 0; // of the device
};

} // namespace veltor::utils::journal
