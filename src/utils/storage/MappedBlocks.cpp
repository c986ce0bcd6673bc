// Which blocks of a file are mapped, and which of them goes next.

#include "utils/storage/MappedBlocks.h"

#include <algorithm>

namespace veltor::utils {

MappedBlocks::MappedBlocks(QFileDevice& file, const RandomFileSetup& setup)
    : m_file(file)
    , m_setup(setup)
{
    if (m_setup.curLimit() == 0) {
        m_setup.setCurLimit(1); // the block just asked for has to stay
    }
}

void MappedBlocks::setLimit(unsigned blocks)
{
    m_setup.setCurLimit(blocks);
    removeOverflow();
}

unsigned char* MappedBlocks::find(unsigned long long index)
{
    if (!m_history.empty() && m_history.back().index == index) {
        return m_history.back().bytes;
    }
    const auto found = m_blocks.find(index);
    if (found == m_blocks.end()) {
        return nullptr;
    }
    m_history.splice(m_history.end(), m_history, found->second);
    return found->second->bytes;
}

unsigned char* MappedBlocks::map(unsigned long long index, unsigned size)
{
    // Where one has to go anyway it goes first: the system maps faster into the gap.
    if (!m_setup.canIncrease() && m_history.size() >= m_setup.curLimit()) {
        forgetOverdue();
    }
    const auto offset = static_cast<qint64>(index * RandomFile::BlockSize);
    unsigned char* bytes = m_file.map(offset, size);
    // The limit may be higher than what the process has addresses for, above all one of 32 bits.
    while (bytes == nullptr && !m_history.empty()) {
        forgetOverdue();
        bytes = m_file.map(offset, size);
    }
    if (bytes == nullptr) {
        return nullptr;
    }
    checkRecentlyRemoved(index);
    m_blocks.emplace(index, m_history.insert(m_history.end(), {index, bytes}));
    if (m_history.size() > m_setup.curLimit()) {
        removeOverflow();
    }
    return bytes;
}

void MappedBlocks::forgetRange(unsigned long long begin, unsigned long long end)
{
    if (begin < end && end - begin < m_history.size()) {
        // A file that grows by small writes has one stale block, however many are mapped.
        for (unsigned long long index = begin; index < end; ++index) {
            const auto found = m_blocks.find(index);
            if (found != m_blocks.end()) {
                forget(found->second);
            }
        }
        return;
    }
    for (auto block = m_history.begin(); block != m_history.end();) {
        const auto current = block++;
        if (current->index >= begin) {
            forget(current);
        }
    }
}

void MappedBlocks::clear()
{
    while (!m_history.empty()) {
        forget(m_history.begin());
    }
    m_recentRemoved.clear();
}

/// A block that comes back so soon would have stayed under a higher limit.
void MappedBlocks::checkRecentlyRemoved(unsigned long long index)
{
    if (!m_setup.canIncrease() || m_history.size() < m_setup.curLimit()) {
        return;
    }
    const auto found = std::find(m_recentRemoved.rbegin(), m_recentRemoved.rend(), index);
    if (found != m_recentRemoved.rend()) {
        m_recentRemoved.erase(std::next(found).base());
        m_setup.setCurLimit(m_setup.curLimit() + 1);
    }
}

void MappedBlocks::removeOverflow()
{
    while (m_history.size() > m_setup.curLimit()) {
        forgetOverdue();
    }
    fixRemoveHistorySize();
}

void MappedBlocks::forgetOverdue()
{
    if (m_setup.canIncrease()) {
        m_recentRemoved.push_back(m_history.front().index);
    }
    forget(m_history.begin());
}

/// More evictions than the limit can still grow by need not be remembered.
void MappedBlocks::fixRemoveHistorySize()
{
    while (m_recentRemoved.size() > m_setup.increaseLimit()) {
        m_recentRemoved.pop_front();
    }
}

void MappedBlocks::forget(History::iterator block)
{
    m_file.unmap(block->bytes);
    m_blocks.erase(block->index);
    m_history.erase(block);
}

} // namespace veltor::utils
