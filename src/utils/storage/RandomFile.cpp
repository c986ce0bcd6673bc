// A file as a bounded set of mapped blocks.

#include <veltor/utils/RandomFile.h>

#ifndef Q_OS_WIN
#include "platform/FileSpace.h"
#endif

#include <algorithm>
#include <cstring>
#include <deque>
#include <limits>
#include <list>
#include <utility>
#include <vector>

namespace veltor::utils {
namespace {

/// On Windows all mappings of a file share one section, which has the size that the file had: a new size
/// needs a new section, and a file cannot be cut while it has one.
#ifdef Q_OS_WIN
constexpr bool SizeBelongsToAllBlocks = true;
#else
constexpr bool SizeBelongsToAllBlocks = false;
#endif

/// The first block that a change of the file's size makes stale: the shorter end lies in it or before it.
unsigned long long firstStale(qint64 oldSize, qint64 newSize)
{
    const qint64 common = std::max<qint64>(std::min(oldSize, newSize), 0);
    return SizeBelongsToAllBlocks ? 0 : static_cast<unsigned long long>(common / RandomFile::BlockSize);
}

/// Whether positions live in the map alone. Otherwise QFile writes, and wants to be positioned.
bool writesThroughMap(QIODevice::OpenMode mode)
{
    return mode.testFlag(QIODevice::ReadOnly) && !mode.testFlag(QIODevice::Append);
}

} // namespace

/// The map: which blocks are mapped, in the order of their use, and what the file's size was then.
class RandomFile::Private
{
public:
    Private(RandomFile& file, RandomFileSetup limits)
        : setup(limits)
        , m_file(file)
    {
        if (setup.curLimit() == 0) {
            setup.setCurLimit(1); // the block just asked for has to stay
        }
    }

    unsigned char* block(unsigned long long index);
    void clear();
    void removeOverflow();
    /// Unmaps what a change to @p newSize makes stale.
    void forgetFor(qint64 newSize) { forgetFrom(firstStale(m_mappedSize, newSize)); }
    bool extend(qint64 position, qint64 end);

    RandomFileSetup setup;
    std::function<unsigned long long()> sizeEstimator;
    qint64 knownSize = 0;
    bool sizeKnown = false;

private:
    struct Block
    {
        unsigned long long index;
        unsigned char* bytes;
    };
    using History = std::list<Block>;
    using Entry = std::pair<unsigned long long, History::iterator>;

    [[nodiscard]] std::vector<Entry>::iterator lowerBound(unsigned long long index);
    unsigned char* mapBlock(unsigned long long index);
    void checkRecentlyRemoved(unsigned long long index);
    void forgetOverdue();
    void fixRemoveHistorySize();
    void forgetStale();
    void forgetFrom(unsigned long long index);
    bool grow(qint64 begin, qint64 end);

    RandomFile& m_file;
    std::vector<Entry> m_blocks;                    // the mapped blocks, by index
    History m_history;                              // the same, the least recently used first
    std::deque<unsigned long long> m_recentRemoved; // evicted below the maximum limit, oldest first
    qint64 m_mappedSize = 0;                        // the file's size for which the blocks were mapped
};

RandomFile::RandomFile(QObject* parent)
    : QFile(parent)
    , m_p(std::make_unique<Private>(*this, DefaultBlockCount))
{}

RandomFile::RandomFile(const QString& name, RandomFileSetup setup, QObject* parent)
    : QFile(name, parent)
    , m_p(std::make_unique<Private>(*this, setup))
{}

RandomFile::RandomFile(const QFileInfo& file, RandomFileSetup setup, QObject* parent)
    : RandomFile(file.filePath(), setup, parent)
{}

RandomFile::~RandomFile()
{
    RandomFile::close();
}

bool RandomFile::open(OpenMode mode)
{
    refresh();
    clear();
    return QFile::open(mode | Unbuffered);
}

void RandomFile::close()
{
    clear();
    refresh();
    QFile::close();
}

qint64 RandomFile::size() const
{
    if (!m_p->sizeKnown) {
        constexpr auto largest = static_cast<unsigned long long>(std::numeric_limits<qint64>::max());
        m_p->knownSize =
            m_p->sizeEstimator ? static_cast<qint64>(std::min(m_p->sizeEstimator(), largest)) : QFile::size();
        m_p->sizeKnown = isOpen(); // a closed file may get another name
    }
    return m_p->knownSize;
}

void RandomFile::refresh() noexcept
{
    m_p->sizeKnown = false;
}

bool RandomFile::resize(qint64 size)
{
    refresh();
    m_p->forgetFor(size);
    if (!QFile::resize(size)) {
        return false;
    }
    return !isOpen() || pos() <= size || seek(size);
}

bool RandomFile::seek(qint64 position)
{
    if (!writesThroughMap(openMode())) {
        return QFile::seek(position);
    }
    // Past QFile, which would position a descriptor that nobody reads: one system call a seek.
    return QIODevice::seek(position); // NOLINT(bugprone-parent-virtual-call)
}

unsigned RandomFile::blockCount() const noexcept
{
    return m_p->setup.curLimit();
}

void RandomFile::setBlockCount(unsigned blocks)
{
    m_p->setup.setCurLimit(blocks);
    m_p->removeOverflow();
}

const RandomFileSetup& RandomFile::setup() const noexcept
{
    return m_p->setup;
}

unsigned RandomFile::blockSize(unsigned long long index) const
{
    const auto size = static_cast<unsigned long long>(RandomFile::size());
    if (index > size / BlockSize) {
        return 0;
    }
    return static_cast<unsigned>(std::min<unsigned long long>(BlockSize, size - index * BlockSize));
}

unsigned char* RandomFile::block(unsigned long long index)
{
    return m_p->block(index);
}

bool RandomFile::readFromBlock(unsigned long long index, unsigned offset, char* data, long long& remaining)
{
    const unsigned size = blockSize(index);
    if (offset >= size || remaining <= 0) {
        return false;
    }
    const unsigned char* const bytes = m_p->block(index);
    if (!bytes) {
        return false;
    }
    const long long length = std::min<long long>(size - offset, remaining);
    std::memcpy(data, bytes + offset, static_cast<std::size_t>(length));
    remaining -= length;
    return true;
}

bool RandomFile::writeToBlock(unsigned long long index, unsigned offset, const char* data,
                              long long& remaining)
{
    const unsigned size = blockSize(index);
    if (offset >= size || remaining <= 0 || !(openMode() & WriteOnly)) {
        return false;
    }
    unsigned char* const bytes = m_p->block(index);
    if (!bytes) {
        return false;
    }
    const long long length = std::min<long long>(size - offset, remaining);
    std::memcpy(bytes + offset, data, static_cast<std::size_t>(length));
    remaining -= length;
    return true;
}

void RandomFile::clear()
{
    m_p->clear();
}

void RandomFile::setSizeEstimator(std::function<unsigned long long()> sizeEstimator)
{
    m_p->sizeEstimator = std::move(sizeEstimator);
    refresh();
}

qint64 RandomFile::readData(char* data, qint64 length)
{
    const qint64 begin = pos();
    const qint64 total = std::min(length, RandomFile::size() - begin);
    if (total <= 0) {
        return 0;
    }
    qint64 remaining = total;
    while (remaining > 0) {
        const qint64 done = total - remaining;
        const auto at = static_cast<unsigned long long>(begin + done);
        if (!readFromBlock(at / BlockSize, static_cast<unsigned>(at % BlockSize), data + done, remaining)) {
            return done > 0 ? done : -1;
        }
    }
    return total;
}

qint64 RandomFile::writeData(const char* data, qint64 length)
{
    if (!writesThroughMap(openMode())) {
        refresh();
        return QFile::writeData(data, length);
    }
    const qint64 begin = pos();
    if (length <= 0) {
        return 0;
    }
    const qint64 room = std::numeric_limits<qint64>::max() - begin;
    const bool extended = length <= room && m_p->extend(begin, begin + length);
    const qint64 total = extended ? length : std::min(length, RandomFile::size() - begin);
    qint64 remaining = std::max<qint64>(total, 0);
    while (remaining > 0) {
        const qint64 done = total - remaining;
        const auto at = static_cast<unsigned long long>(begin + done);
        if (!writeToBlock(at / BlockSize, static_cast<unsigned>(at % BlockSize), data + done, remaining)) {
            break;
        }
    }
    return remaining < total ? total - remaining : -1;
}

unsigned char* RandomFile::Private::block(unsigned long long index)
{
    forgetStale();
    if (!m_history.empty() && m_history.back().index == index) {
        return m_history.back().bytes;
    }
    const auto place = lowerBound(index);
    if (place == m_blocks.end() || place->first != index) {
        return mapBlock(index);
    }
    m_history.splice(m_history.end(), m_history, place->second);
    return m_history.back().bytes;
}

void RandomFile::Private::clear()
{
    for (const Block& block : m_history) {
        m_file.unmap(block.bytes);
    }
    m_blocks.clear();
    m_history.clear();
    m_recentRemoved.clear();
}

std::vector<RandomFile::Private::Entry>::iterator RandomFile::Private::lowerBound(unsigned long long index)
{
    return std::lower_bound(m_blocks.begin(), m_blocks.end(), index,
                            [](const Entry& entry, unsigned long long i) { return entry.first < i; });
}

unsigned char* RandomFile::Private::mapBlock(unsigned long long index)
{
    const unsigned size = m_file.blockSize(index);
    if (size == 0) {
        return nullptr;
    }
    unsigned char* bytes = m_file.map(static_cast<qint64>(index * BlockSize), size);
    // The limit may be higher than what the process has addresses for, above all one of 32 bits.
    while (!bytes && !m_history.empty()) {
        forgetOverdue();
        bytes = m_file.map(static_cast<qint64>(index * BlockSize), size);
    }
    if (!bytes) {
        return nullptr;
    }
    checkRecentlyRemoved(index);
    m_blocks.insert(lowerBound(index), {index, m_history.insert(m_history.end(), {index, bytes})});
    if (m_history.size() > setup.curLimit()) {
        removeOverflow();
    }
    return bytes;
}

/// A block that comes back so soon would have stayed under a higher limit.
void RandomFile::Private::checkRecentlyRemoved(unsigned long long index)
{
    if (!setup.canIncrease() || m_history.size() < setup.curLimit()) {
        return;
    }
    const auto found = std::find(m_recentRemoved.rbegin(), m_recentRemoved.rend(), index);
    if (found != m_recentRemoved.rend()) {
        m_recentRemoved.erase(std::next(found).base());
        setup.setCurLimit(setup.curLimit() + 1);
    }
}

void RandomFile::Private::removeOverflow()
{
    while (m_history.size() > setup.curLimit()) {
        forgetOverdue();
    }
    fixRemoveHistorySize();
}

void RandomFile::Private::forgetOverdue()
{
    const Block overdue = m_history.front();
    m_history.pop_front();
    if (setup.canIncrease()) {
        m_recentRemoved.push_back(overdue.index);
    }
    m_blocks.erase(lowerBound(overdue.index));
    m_file.unmap(overdue.bytes);
}

/// More evictions than the limit can still grow by need not be remembered.
void RandomFile::Private::fixRemoveHistorySize()
{
    while (m_recentRemoved.size() > setup.increaseLimit()) {
        m_recentRemoved.pop_front();
    }
}

/// Unmaps what was mapped for another size of the file than it has now.
void RandomFile::Private::forgetStale()
{
    const qint64 size = m_file.RandomFile::size();
    if (size != m_mappedSize) {
        forgetFrom(firstStale(m_mappedSize, size));
        m_mappedSize = size;
    }
}

void RandomFile::Private::forgetFrom(unsigned long long index)
{
    const auto first = lowerBound(index);
    for (auto entry = first; entry != m_blocks.end(); ++entry) {
        m_file.unmap(entry->second->bytes);
        m_history.erase(entry->second);
    }
    m_blocks.erase(first, m_blocks.end());
}

/// Grows the file, the new bytes from @p begin on backed by disk space.
bool RandomFile::Private::grow([[maybe_unused]] qint64 begin, qint64 end)
{
#ifdef Q_OS_WIN
    // A longer file has its space: only files made sparse on purpose have holes. And handle() would take
    // a descriptor from the C runtime that nobody gives back.
    return m_file.QFile::resize(end);
#else
    return platform::extendFile(m_file.handle(), begin, end);
#endif
}

/// Makes the file at least @p end bytes long, the space from @p position on reserved.
bool RandomFile::Private::extend(qint64 position, qint64 end)
{
    const qint64 size = m_file.RandomFile::size();
    if (end <= size) {
        return true;
    }
    sizeKnown = false;
    forgetFrom(firstStale(size, end));
    if (!m_file.openMode().testFlag(WriteOnly) || !grow(std::max(position, size), end)) {
        m_file.setErrorString(qt_error_string());
        return false;
    }
    return true;
}

} // namespace veltor::utils
