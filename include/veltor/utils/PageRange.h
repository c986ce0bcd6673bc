#pragma once

#include <QtCore/QtGlobal>

namespace veltor::utils {

/// A run of pages. Threads: a plain value, reentrant.
struct PageRange
{
    quint32 start = 0; ///< first page, the first of all being 0
    quint32 count = 0; ///< number of pages

    /// Cuts off what lies beyond @p size pages; a range that begins beyond them becomes {0, 0}, one that
    /// begins right at their end keeps its start.
    constexpr void cropToSize(quint32 size) noexcept
    {
        if (start > size) {
            *this = {};
        } else if (count > size - start) {
            count = size - start;
        }
    }

    /// As cropToSize(), on a copy.
    [[nodiscard]] constexpr PageRange croppedToSize(quint32 size) const noexcept
    {
        PageRange cropped = *this;
        cropped.cropToSize(size);
        return cropped;
    }

    /// Whether start and count are the same; empty ranges with different starts are not equal.
    [[nodiscard]] constexpr bool isEqual(const PageRange& other) const noexcept
    {
        return start == other.start && count == other.count;
    }
    friend constexpr bool operator==(const PageRange& a, const PageRange& b) noexcept { return a.isEqual(b); }
    friend constexpr bool operator!=(const PageRange& a, const PageRange& b) noexcept
    {
        return !a.isEqual(b);
    }
};

} // namespace veltor::utils
