#pragma once

#include <QtCore/QFlags>
#include <QtCore/Qt>
#include <QtCore/QtGlobal>

namespace veltor::utils {

/// Which mouse buttons are expected, and whether the expectation is active, in one word of 32 bits: the
/// active flag takes the place of the button 0x4000000, which can therefore never be expected.
///
/// Initially no button is expected and it is not active. Threads: a plain value, reentrant.
class ActiveMouseStatus
{
public:
    /// Replaces the expected buttons; the button 0x4000000 is left out.
    void setExpectedButtons(QFlags<Qt::MouseButton> buttons) noexcept
    {
        m_word = (m_word & activeBit) | (static_cast<quint32>(buttons) & ~activeBit);
    }
    /// The expected buttons.
    [[nodiscard]] Qt::MouseButtons expectedButtons() const noexcept
    {
        return Qt::MouseButtons(QFlag(m_word & ~activeBit));
    }

    /// True when every bit of @p button is expected; for Qt::NoButton, when nothing is.
    [[nodiscard]] bool expects(Qt::MouseButton button) const noexcept
    {
        return expectedButtons().testFlag(button);
    }

    /// Switches the expectation on or off; the buttons stay.
    void setActiveStatus(bool active) noexcept { m_word = active ? m_word | activeBit : m_word & ~activeBit; }
    /// Whether the expectation is on.
    [[nodiscard]] bool isActive() const noexcept { return (m_word & activeBit) != 0; }

private:
    static constexpr quint32 activeBit = 0x4000000;

    quint32 m_word = 0;
};

} // namespace veltor::utils
