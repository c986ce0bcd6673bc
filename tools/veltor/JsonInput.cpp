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
    if (m_end - m_at >= 3 && std::memcmp(m_at, "\xEF\xBB\xBF", 3) == 0) {
        m_at += 3;
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
    while (tail != m_buffer.data() && m_end - tail < longestNumber && isOfNumber(tail[-1])) {
        --tail;
    }
    m_lines += std::count(m_buffer.data(), tail, '\n');
    m_base += tail - m_buffer.data();
    const auto kept = static_cast<std::size_t>(m_end - tail);
    std::memmove(m_buffer.data(), tail, kept);
    m_at = m_buffer.data() + kept;
    const qint64 count = m_device.read(m_at, static_cast<qint64>(pieceBytes));
    if (count < 0) {
        throw std::runtime_error(Text::tr("не читается: %1").arg(m_device.errorString()).toStdString());
    }
    m_end = m_at + count;
    *m_end = '\0'; // what the parser takes for the end
    m_keepFrom = m_at;
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
