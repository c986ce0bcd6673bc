#pragma once

#include <veltor/utils/RandomFile.h>

#include <deque>
#include <list>
#include <unordered_map>

namespace veltor::utils {

/// The blocks of a file that are mapped, the least recently used first, and the limit of their number, which
/// grows when one returns soon after it was evicted. Finding one takes the same time whatever the limit.
class MappedBlocks
{
public:
    MappedBlocks(QFileDevice& file, const RandomFileSetup& setup);

    [[nodiscard]] const RandomFileSetup& setup() const noexcept { return m_setup; }
    /// Blocks above the new limit are unmapped.
    void setLimit(unsigned blocks);

    /// The block's bytes, and makes it the most recently used; null when it is not mapped.
    unsigned char* find(unsigned long long index);
    /// Maps a block that is not mapped yet. Null when the system cannot; then none is mapped any more.
    unsigned char* map(unsigned long long index, unsigned size);

    /// Unmaps the blocks from @p begin on.
    /// @param end  where the caller knows that none is mapped from here on
    void forgetRange(unsigned long long begin, unsigned long long end);
    /// Unmaps all and forgets what was evicted; the limit stays.
    void clear();

private:
    struct Block
    {
        unsigned long long index;
        unsigned char* bytes;
    };
    using History = std::list<Block>;

    void checkRecentlyRemoved(unsigned long long index);
    void removeOverflow();
    void forgetOverdue();
    void fixRemoveHistorySize();
    void forget(History::iterator block);

    QFileDevice& m_file;
    RandomFileSetup m_setup;
    History m_history; // the least recently used first
    std::unordered_map<unsigned long long, History::iterator> m_blocks;
    std::deque<unsigned long long> m_recentRemoved; // evicted below the maximum limit, oldest first
};

} // namespace veltor::utils
