// Lines of a text, read in bounded pieces.

#include <veltor/utils/LineStream.h>

#include <QtCore/QTextStream>

#include <QtCore/QtAlgorithms>

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace veltor::utils {
namespace {

constexpr int defaultCapacity = 2048;

bool isBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

/// The first break in [@p begin, @p end), or @p end.
const QChar* findBreak(const QChar* begin, const QChar* end)
{
#ifdef __SSE2__
    const __m128i lineFeed = _mm_set1_epi16('\n');
    const __m128i carriageReturn = _mm_set1_epi16('\r');
    for (; end - begin >= 8; begin += 8) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
        const __m128i breaks =
            _mm_or_si128(_mm_cmpeq_epi16(text, lineFeed), _mm_cmpeq_epi16(text, carriageReturn));
        if (const int bits = _mm_movemask_epi8(breaks)) { // two a character
            return begin + qCountTrailingZeroBits(static_cast<quint32>(bits)) / 2;
        }
    }
#endif
    return std::find_if(begin, end, isBreak);
}

} // namespace

LineStream::LineStream(QTextStream& stream, int capacity)
    : m_stream(stream)
    , m_capacity(capacity < 1 ? defaultCapacity : capacity)
{}

void LineStream::fillBuffer()
{
    if (m_remaining >= m_capacity) {
        return;
    }
    const QString text = m_stream.read(m_capacity - m_remaining);
    if (m_remaining > 0) {
        m_buffer.remove(0, m_buffer.size() - m_remaining);
        m_buffer += text;
    } else {
        m_buffer = text;
    }
    m_remaining = static_cast<int>(m_buffer.size());
}

bool LineStream::atEnd()
{
    return !fillIfEmpty();
}

QChar LineStream::getChar()
{
    if (!fillIfEmpty()) {
        return QChar();
    }
    const QChar next = *unread();
    --m_remaining;
    return next;
}

void LineStream::skip(bool (*predicate)(QChar))
{
    while (fillIfEmpty()) {
        const QChar* const end = unread() + m_remaining;
        const QChar* const stop = std::find_if_not(unread(), end, predicate);
        m_remaining = static_cast<int>(end - stop);
        if (m_remaining > 0) {
            return;
        }
    }
}

void LineStream::skipWhiteSpace()
{
    skip([](QChar c) { return c.isSpace(); });
}

QString LineStream::readLine()
{
    QString line;
    while (fillIfEmpty()) {
        const QChar* const begin = unread();
        const QChar* const end = begin + m_remaining;
        const QChar* const stop = findBreak(begin, end);
        const auto length = static_cast<int>(stop - begin);
        if (line.isEmpty() && length > 0) {
            line = QString(begin, length);
        } else {
            line.append(begin, length);
        }
        m_remaining = static_cast<int>(end - stop);
        if (m_remaining > 0) {
            do {
                --m_remaining;
            } while (fillIfEmpty() && isBreak(*unread()));
            break;
        }
    }
    return line;
}

const QChar* LineStream::unread() const noexcept
{
    return m_buffer.constData() + (m_buffer.size() - m_remaining);
}

/// @return false at the end of the input
bool LineStream::fillIfEmpty()
{
    if (m_remaining == 0) {
        fillBuffer();
    }
    return m_remaining > 0;
}

} // namespace veltor::utils
