#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

namespace veltor::utils {

/// A set of platforms as the bits of a number, to and from which it converts; bits without a platform
/// are kept. Threads: a plain value, reentrant.
class PlatformMask
{
public:
    /// A platform's bit.
    enum Platform : unsigned
    {
        Linux = 1,                               ///< and other Unix systems
        Windows = 2,                             ///< of any kind
        Apple = 4,                               ///< of any kind
        Android = 8,                             ///< not counted as Linux
        All = Linux | Windows | Apple | Android, ///< the four of them
    };

    /// The set of these bits.
    constexpr PlatformMask(unsigned bits = 0) noexcept // NOLINT: meant to convert
        : m_bits(bits)
    {}
    /// The bits.
    constexpr operator unsigned() const noexcept { return m_bits; } // NOLINT: meant to convert

private:
    unsigned m_bits;
};

/// The platforms' names, joined with ";" in the order "mac", "win", "linux", "android"; "none" when there
/// is none of these. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT QString fromPlatformMask(PlatformMask mask);

/// The platforms that a text names: its words, parted by anything but ASCII letters, digits and "_", are
/// looked at in any case by how they begin: "mac" and "apple", "win", "linux" and "unix", "android". Other
/// words count for nothing. An empty text, null included, means all four platforms. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT PlatformMask toPlatformMask(const QString& text);

} // namespace veltor::utils
