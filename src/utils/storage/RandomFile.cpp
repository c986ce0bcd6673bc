// A file as a bounded set of mapped blocks.

#include <veltor/utils/RandomFile.h>

#include "utils/storage/MappedBlocks.h"

#ifndef Q_OS_WIN
#include "platform/FileSpace.h"
#endif

#include <algorithm>
#include <cstring>
#include <limits>

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

struct RandomFile::Private
{
    Private(RandomFile& file, const RandomFileSetup& setup)
        : blocks(file, setup)
    {}

    /// Unmaps what a change from a size to another makes stale.
    void forgetStale(qint64 oldSize, qint64 newSize)
    {
        blocks.forgetRange(firstStale(oldSize, newSize),
                           static_cast<unsigned long long>(mappedSize) / BlockSize + 1);
    }

    MappedBlocks blocks;
    qint64 mappedSize = 0; // the file's size for which the blocks were mapped
    std::function<unsigned long long()> sizeEstimator;
    qint64 size = 0;
    bool sizeKnown = false;
};

RandomFile::RandomFile(QObject* parent)
    : QFile(parent)
    , m_d(std::make_unique<Private>(*this, DefaultBlockCount))
{}

RandomFile::RandomFile(const QString& name, RandomFileSetup setup, QObject* parent)
    : QFile(name, parent)
    , m_d(std::make_unique<Private>(*this, setup))
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
    if (!m_d->sizeKnown) {
        constexpr auto largest = static_cast<unsigned long long>(std::numeric_limits<qint64>::max());
        m_d->size = m_d->sizeEstimator ? static_cast<qint64>(std::min(m_d->sizeEstimator(), largest)) : QFile::size();
        m_d->sizeKnown = isOpen(); // a closed file may get another name
    }
    return m_d->size;
}

void RandomFile::refresh() noexcept
{
    m_d->sizeKnown = false;
}

bool RandomFile::resize(qint64 size)
{
    refresh();
    m_d->forgetStale(m_d->mappedSize, size);
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
    return m_d->blocks.setup().curLimit();
}

void RandomFile::setBlockCount(unsigned blocks)
{
    m_d->blocks.setLimit(blocks);
}

const RandomFileSetup& RandomFile::setup() const noexcept
{
    return m_d->blocks.setup();
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
    forgetStale();
    if (unsigned char* const bytes = m_d->blocks.find(index)) {
        return bytes;
    }
    const unsigned size = blockSize(index);
    return size > 0 ? m_d->blocks.map(index, size) : nullptr;
}

bool RandomFile::readFromBlock(unsigned long long index, unsigned offset, char* data, long long& remaining)
{
    const unsigned size = blockSize(index);
    if (offset >= size || remaining <= 0) {
        return false;
    }
    const unsigned char* const bytes = block(index);
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
    unsigned char* const bytes = block(index);
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
    m_d->blocks.clear();
}

void RandomFile::setSizeEstimator(std::function<unsigned long long()> sizeEstimator)
{
    m_d->sizeEstimator = std::move(sizeEstimator);
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
    const bool extended = length <= room && extend(begin, begin + length);
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

/// Unmaps what was mapped for another size of the file than it has now.
void RandomFile::forgetStale()
{
    const qint64 size = RandomFile::size();
    if (size != m_d->mappedSize) {
        m_d->forgetStale(m_d->mappedSize, size);
        m_d->mappedSize = size;
    }
}

/// Grows the file, the new bytes from @p begin on backed by disk space.
bool RandomFile::grow([[maybe_unused]] qint64 begin, qint64 end)
{
#ifdef Q_OS_WIN
    // A longer file has its space: only files made sparse on purpose have holes. And handle() would take
    // a descriptor from the C runtime that nobody gives back.
    return QFile::resize(end);
#else
    return platform::extendFile(handle(), begin, end);
#endif
}

/// Makes the file at least @p end bytes long, the space from @p position on reserved.
bool RandomFile::extend(qint64 position, qint64 end)
{
    const qint64 size = RandomFile::size();
    if (end <= size) {
        return true;
    }
    refresh();
    m_d->forgetStale(size, end);
    if (!openMode().testFlag(WriteOnly) || !grow(std::max(position, size), end)) {
        setErrorString(qt_error_string());
        return false;
    }
    return true;
}

} // namespace veltor::utils
