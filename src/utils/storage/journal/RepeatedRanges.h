#pragma once

#include "utils/storage/journal/JournalFormat.h"

#include <map>
#include <utility>

namespace veltor::utils::journal {

/// Ranges of a file that were saved more than once. Restored from the newest block to the oldest, only the
/// oldest of exactly the same range needs to be written. Bounded: what is not known is written each time.
class RepeatedRanges
{
public:
    /// Notes a block, in any order.
    void note(const ChangeHead& head)
    {
        const Range range(head.position, head.length);
        if (head.length != 0 && (m_left.size() < MaxRanges || m_left.count(range) != 0)) {
            ++m_left[range];
        }
    }

    /// Takes a block that was noted. @return whether another of its range is still to come
    [[nodiscard]] bool comesAgain(const ChangeHead& head)
    {
        const auto found = m_left.find({head.position, head.length});
        return found != m_left.end() && --found->second != 0;
    }

private:
    using Range = std::pair<quint64, quint32>;
    static constexpr std::size_t MaxRanges = 16384;

    std::map<Range, quint64> m_left;
};

} // namespace veltor::utils::journal
