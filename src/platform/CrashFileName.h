#pragma once

#include "platform/CrashState.h"
#include "platform/UtcTime.h"

#include <cstddef>

namespace veltor::platform {

/// Text of at most so many characters with a null behind it, in memory of its own.
template <typename Character, std::size_t Capacity>
class FixedText
{
public:
    void add(Character character) noexcept
    {
        if (m_size < Capacity) {
            m_text[m_size++] = character;
            m_text[m_size] = 0;
        } else {
            m_whole = false;
        }
    }
    void add(const Character* text) noexcept
    {
        while (*text) {
            add(*text++);
        }
    }
    void addDecimal(long long number, int digits) noexcept
    {
        if (number >= 10 || digits > 1) {
            addDecimal(number / 10, digits - 1);
        }
        add(static_cast<Character>('0' + number % 10));
    }
    void cut(std::size_t size) noexcept
    {
        m_size = size;
        m_text[m_size] = 0;
    }
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    [[nodiscard]] const Character* data() const noexcept { return m_text; }
    /// False when something found no room.
    [[nodiscard]] bool isWhole() const noexcept { return m_whole; }

private:
    std::size_t m_size = 0;
    bool m_whole = true;
    Character m_text[Capacity + 1] = {};
};

/// Adds a crash file's name; its template is known to be right.
template <typename Character, std::size_t Capacity>
void addCrashFileName(FixedText<Character, Capacity>& name, const Character* nameTemplate,
                      const CrashState& crash) noexcept
{
    for (const Character* at = nameTemplate; *at; ++at) {
        if (*at != '%') {
            name.add(*at);
            continue;
        }
        ++at;
        if (*at == 'p') {
            name.addDecimal(crash.process, 1);
        } else if (*at == 't') {
            const UtcTime time = utcTime(crash.seconds);
            name.addDecimal(time.year, 4);
            name.addDecimal(time.month, 2);
            name.addDecimal(time.day, 2);
            name.add(static_cast<Character>('T'));
            name.addDecimal(time.hour, 2);
            name.addDecimal(time.minute, 2);
            name.addDecimal(time.second, 2);
            name.add(static_cast<Character>('Z'));
        } else {
            name.add(*at);
        }
    }
}

} // namespace veltor::platform
