// Bytes for the JSON parser, a piece of the file at a time.

#include "JsonInput.h"

#include "Text.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace veltor::tool {
namespace {

constexpr std::size_t pieceBytes = 256 * 1024;
/// What stays of the piece before: a number that lies across the border, when it is not longer.
constexpr std::ptrdiff_t longestNumber = 4096;
/// And so many bytes in any case: of a character that is no UTF-8 the parser has taken what stands behind it.
constexpr std::ptrdiff_t longestLookBack = 8;
constexpr char byteOrderMark[] = "\xEF\xBB\xBF";
constexpr std::ptrdiff_t markSize = 3;

bool isOfNumber(char c)
{
    return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
}

} // namespace

JsonInput::JsonInput(QIODevice& device)
    : m_device(device)
    , m_buffer(longestNumber + pieceBytes + 1)
    , m_at(m_buffer.data())
    , m_end(m_at)
{
    readOn();
    const auto mayBeMark = [this] {
        return std::memcmp(m_at, byteOrderMark, std::size_t(std::min(markSize, m_end - m_at))) == 0;
    };
    while (m_end != m_at && m_end - m_at < markSize && mayBeMark() && append()) {
        // A pipe may give less than a mark.
    }
    if (m_end - m_at >= markSize && mayBeMark()) {
        m_at += markSize;
        if (m_at == m_end) {
            readOn();
        }
    }
}

/// All was taken: the next piece, behind the number that the former one ends with.
void JsonInput::readOn()
{
    if (m_isKeeping) {
        m_kept.append(m_keepFrom, m_end);
    }
    char* tail = m_end;
    while (tail != m_buffer.data() && m_end - tail < longestNumber &&
           (isOfNumber(tail[-1]) || m_end - tail < longestLookBack)) {
        --tail;
    }
    m_lines += std::count(m_buffer.data(), tail, '\n');
    m_base += tail - m_buffer.data();
    const auto kept = static_cast<std::size_t>(m_end - tail);
    std::memmove(m_buffer.data(), tail, kept);
    m_at = m_buffer.data() + kept;
    m_end = m_at;
    append();
    m_keepFrom = m_at;
}

/// Adds what the device gives next; false at its end.
bool JsonInput::append()
{
    const auto room = m_buffer.data() + m_buffer.size() - 1 - m_end;
    const qint64 count = m_device.read(m_end, std::min<qint64>(room, pieceBytes));
    if (count < 0) {
        throw std::runtime_error(Text::tr("не читается: %1").arg(m_device.errorString()).toStdString());
    }
    m_end += count;
    *m_end = '\0'; // what the parser takes for the end
    return count > 0;
}

qint64 JsonInput::lineOf(qint64 offset) const
{
    const qint64 inBuffer = std::clamp<qint64>(offset - m_base, 0, m_end - m_buffer.data());
    return 1 + m_lines + std::count(m_buffer.data(), m_buffer.data() + inBuffer, '\n');
}

std::string_view JsonInput::numberBefore() const
{
    const char* begin = m_at;
    while (begin != m_buffer.data() && isOfNumber(begin[-1])) {
        --begin;
    }
    return {begin, static_cast<std::size_t>(m_at - begin)};
}

void JsonInput::keep()
{
    m_isKeeping = true;
    m_kept.clear();
    m_keepFrom = m_at;
}

std::string JsonInput::takeKept()
{
    m_kept.append(m_keepFrom, m_at);
    m_isKeeping = false;
    return std::exchange(m_kept, {});
}

} // namespace veltor::tool
