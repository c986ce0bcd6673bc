// Zeros ahead of a journal's end.

#include "utils/storage/journal/JournalRoom.h"

#include "utils/storage/io/StorageFile.h"

#include <array>
#include <typeinfo>

namespace veltor::utils::journal {
namespace {

/// Small transactions end before it is worth anything.
constexpr quint64 FirstRoomAt = 8 * 1024;

/// One large page of the system's cache, when it is written in one piece and lies on its own multiple.
constexpr quint64 Piece = 64 * 1024;

/// Not constant: so it takes no space in the library's file, and only read it takes one page of memory.
std::array<char, Piece> g_zeros;

} // namespace

JournalRoom::JournalRoom(QIODevice& journal)
    : m_io(journal)
    , m_allowed(typeid(journal) == typeid(io::StorageFile))
    , m_reused(m_allowed && static_cast<io::StorageFile&>(journal).isReused())
{}

quint64 JournalRoom::begin(quint64 size, quint64 end)
{
    m_size = size;
    m_made = false;
    m_found = m_allowed && end < size;
    return m_found ? end : size;
}

bool JournalRoom::reuse(quint64 size)
{
    m_size = m_reused ? size : m_size;
    m_made = m_reused;
    return m_reused;
}

quint64 JournalRoom::prepare(quint64 end, quint64 length)
{
    if (m_found) {
        m_found = false;
        end = m_io.resize(end) ? end : m_size;
        m_size = end;
    }
    if (m_allowed && end >= FirstRoomAt && length < Piece && end + length > m_size) {
        extend(end, length);
    }
    return end;
}

void JournalRoom::extend(quint64 end, quint64 length)
{
    while (m_size < end + length) {
        const quint64 boundary = (m_size / Piece + 1) * Piece;
        const auto missing = static_cast<qint64>(boundary - m_size);
        m_made = true;
        if (m_io.writeAt(m_size, g_zeros.data(), missing) != missing) {
            m_allowed = false; // a full disk may still take the records alone
            close(end);
            return;
        }
        m_size = boundary;
    }
}

void JournalRoom::close(quint64 end)
{
    if (m_made) {
        static_cast<void>(m_io.resize(end));
        m_size = end;
        m_made = false;
    }
}

} // namespace veltor::utils::journal
