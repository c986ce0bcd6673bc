// Numbers and JSON strings as text, by code that a signal handler may run.

#include "platform/RawText.h"

namespace veltor::platform {
namespace {

constexpr char digitsOf16[] = "0123456789abcdef";

/// The length of the whole UTF-8 sequence that begins here, 0 when it is none. Stops at the text's end.
int sequenceLength(const unsigned char* at) noexcept
{
    struct Form
    {
        unsigned char mask, lead;
        std::uint32_t least;
    };
    constexpr Form forms[] = {
        {0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
    for (int tail = 0; tail < 4; ++tail) {
        const Form form = forms[tail];
        if ((at[0] & form.mask) != form.lead) {
            continue;
        }
        std::uint32_t point = at[0] & static_cast<unsigned char>(~form.mask);
        for (int i = 1; i <= tail; ++i) {
            if ((at[i] & 0xC0) != 0x80) {
                return 0;
            }
            point = point << 6 | (at[i] & 0x3FU);
        }
        const bool surrogate = point >= 0xD800 && point < 0xE000;
        return point < form.least || surrogate || point > 0x10FFFF ? 0 : tail + 1;
    }
    return 0;
}

} // namespace

void RawText::put(char character) noexcept
{
    if (m_size == sizeof m_buffer) {
        flush();
    }
    m_buffer[m_size++] = character;
}

bool RawText::flush() noexcept
{
    m_good = m_good && (m_size == 0 || writeRaw(m_handle, m_buffer, m_size));
    m_written += m_size;
    m_size = 0;
    return m_good;
}

RawText& RawText::text(const char* text) noexcept
{
    for (; *text; ++text) {
        put(*text);
    }
    return *this;
}

RawText& RawText::decimal(long long number) noexcept
{
    return decimal(number, 1);
}

RawText& RawText::decimal(long long number, int digits) noexcept
{
    char reversed[24];
    int count = 0;
    auto rest = static_cast<unsigned long long>(number);
    if (number < 0) {
        put('-');
        rest = 0 - rest;
    }
    for (; rest != 0 || count < digits; rest /= 10) {
        reversed[count++] = digitsOf16[rest % 10];
    }
    while (count > 0) {
        put(reversed[--count]);
    }
    return *this;
}

RawText& RawText::hex(std::uint64_t number) noexcept
{
    put('0');
    put('x');
    int shift = 60;
    while (shift > 0 && (number >> shift) == 0) {
        shift -= 4;
    }
    for (; shift >= 0; shift -= 4) {
        put(digitsOf16[number >> shift & 0xF]);
    }
    return *this;
}

RawText& RawText::hexBytes(const unsigned char* bytes, int count) noexcept
{
    for (int i = 0; i < count; ++i) {
        put(digitsOf16[bytes[i] >> 4]);
        put(digitsOf16[bytes[i] & 0xF]);
    }
    return *this;
}

RawText& RawText::json(const char* text) noexcept
{
    put('"');
    for (const auto* at = reinterpret_cast<const unsigned char*>(text); *at;) {
        const int length = sequenceLength(at);
        if (length == 0) {
            this->text("\\ufffd");
            ++at;
        } else if (*at < 0x20) {
            this->text("\\u00");
            hexBytes(at, 1);
            ++at;
        } else {
            if (*at == '"' || *at == '\\') {
                put('\\');
            }
            for (int i = 0; i < length; ++i) {
                put(static_cast<char>(*at++));
            }
        }
    }
    put('"');
    return *this;
}

} // namespace veltor::platform
