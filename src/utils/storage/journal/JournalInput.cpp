// Reading a journal through one window.

#include "utils/storage/journal/JournalInput.h"

#include "utils/storage/journal/Crc32c.h"

#include <algorithm>

namespace veltor::utils::journal {
namespace {

constexpr qint64 MinReach = 512;
constexpr qint64 MaxReach = 256 * 1024;

} // namespace

JournalInput::JournalInput(QIODevice& journal)
    : m_io(journal)
    , m_reach(MinReach)
{
    const std::optional<quint64> size = m_io.size();
    m_readable = size.has_value();
    m_size = size.value_or(0);
}

JournalInput::Piece JournalInput::fetch(quint64 offset, qint64 length, quint64 endHint)
{
    if (!m_io.canSeek(offset)) {
        return {nullptr, -1};
    }
    if (offset >= m_size) {
        return {nullptr, 0};
    }
    length = std::min({length, MaxPiece, static_cast<qint64>(m_size - offset)});
    const quint64 end = m_start + static_cast<quint64>(m_length);
    const bool startsInside = offset >= m_start && offset <= end;
    if (!startsInside || end - offset < static_cast<quint64>(length)) {
        const bool worthwhile = startsInside || 2 * m_used > m_length;
        m_reach = std::clamp(worthwhile ? 2 * m_reach : m_used, MinReach, MaxReach);
        const auto reach = static_cast<quint64>(m_reach);
        if (endHint > offset && endHint - offset <= reach) {
            const quint64 from = endHint > reach ? endHint - reach : 0;
            const quint64 to = std::max(endHint, offset + static_cast<quint64>(length));
            load(from, static_cast<qint64>(to - from));
        } else {
            load(offset, std::max(length, m_reach));
        }
    }
    if (m_length < 0) {
        m_length = 0;
        return {nullptr, -1};
    }
    const auto skipped = static_cast<qint64>(offset - m_start);
    length = std::clamp<qint64>(m_length - skipped, 0, length);
    m_used += length;
    return {m_window.data() + skipped, length};
}

bool JournalInput::checksum(quint64 offset, quint64 length, quint32& checksum, quint64& readable)
{
    checksum = 0;
    for (readable = 0; readable < length;) {
        const auto wanted = static_cast<qint64>(std::min<quint64>(length - readable, MaxPiece));
        const Piece piece = fetch(offset + readable, wanted);
        const qint64 got = std::max<qint64>(piece.length, 0);
        checksum = crc32c(checksum, piece.data, static_cast<size_t>(got));
        readable += static_cast<quint64>(got);
        if (got < wanted) {
            return false;
        }
    }
    return true;
}

void JournalInput::load(quint64 offset, qint64 length)
{
    length = std::min(length, static_cast<qint64>(m_size - offset));
    if (m_window.size() < static_cast<size_t>(length)) {
        m_window.resize(static_cast<size_t>(length));
    }
    m_start = offset;
    m_length = m_io.readAt(offset, m_window.data(), length);
    m_used = 0;
}

} // namespace veltor::utils::journal
