// Writing a journal. What holds at every instant, for whoever finds it after a kill:
//
//   1. The end lies behind every record. Nothing leads to it or beyond, but for a link that is being torn.
//   2. A record is whole before a link leads to it, and the end has moved behind it: it is never written
//   over.
//   3. First the link that makes a record reachable (of the first file both ends of the header, in one
//      write), then the end of its chain: the entry's last change, the header's last file.
//   4. Only when 3 is done may the protected file's own bytes change. That is the caller's next step.
//   5. The chains in memory are what the journal says: what was linked counts, what was not does not.
//   6. A new file is linked to the last of the chain, wherever in the journal that lies.
//
// Where the disk is to know this order too, io::Barriers wait: on demand between 2 and 3, always before 4.
//
// Death between two steps leaves an unfinished append, which JournalWalker knows.

#include "utils/storage/journal/JournalWriter.h"

#include "utils/storage/StorageMessages.h"
#include "utils/storage/journal/Crc32c.h"

namespace veltor::utils::journal {
namespace {

/// Capacity that the block buffer keeps between two saves.
constexpr int KeptCapacity = 1024 * 1024;

/// Of a file's first block nothing tells that the disk has zeros in the place of its position, if the sector
/// with these bytes is the only one missing. Later ones name the block before them.
bool mayDeceive(quint64 firstBlock)
{
    constexpr quint64 sector = 512;
    constexpr quint64 positionAt = 16;
    constexpr quint64 positionEnd = positionAt + sizeof(quint64);
    const quint64 before = sector - firstBlock % sector; // bytes of the head in its first sector
    return before > positionAt && before <= positionEnd;
}

constexpr auto BlockHeadSize = static_cast<int>(changeHeadSize(Layout::Checksummed));

} // namespace

JournalWriter::JournalWriter(QIODevice& journal, io::Barriers& barriers)
    : m_io(journal)
    , m_barriers(barriers)
{}

bool JournalWriter::create()
{
    const QByteArray header = encodeHeader(freshHeader());
    if (!write(0, header.constData(), header.size())) {
        return false;
    }
    const std::optional<quint64> size = m_io.size();
    if (!size) {
        m_fault = {message::journalSizeUnknown(), m_io.reason()};
        return false;
    }
    // A device that is no file cannot be cut: what it held stays behind the header, where nothing leads.
    const bool cuts = *size > HeaderSize && m_io.canResize();
    if (cuts && !m_io.resize(HeaderSize)) {
        m_fault = {message::journalResizeFailed(HeaderSize), m_io.reason()};
        return false;
    }
    m_end = cuts ? HeaderSize : *size;
    m_lastEntry = 0;
    return pass(m_barriers.afterCreation(m_io, *size > HeaderSize));
}

bool JournalWriter::resume(quint64 lastEntry)
{
    const std::optional<quint64> size = m_io.size();
    if (!size) {
        m_fault = {message::journalSizeUnknown(), m_io.reason()};
        return false;
    }
    m_end = *size;
    m_lastEntry = lastEntry;
    return true;
}

std::optional<FileChain> JournalWriter::appendEntry(quint64 fileSize, const QByteArray& name,
                                                    FileChain* lastFile)
{
    Q_ASSERT_X((lastFile ? lastFile->entry : 0) == m_lastEntry, "JournalWriter", "invariant 6");
    FileChain chain;
    chain.entry = m_end;
    chain.fileSize = fileSize;
    FileEntry entry;
    entry.fileSize = fileSize;
    if (!append(encodeEntry(entry, name)) || !pass(m_barriers.beforeLinks(m_io, false))) {
        return std::nullopt;
    }
    if (!lastFile) {
        const QByteArray ends = encodeLinks(chain.entry, chain.entry);
        if (!write(HeaderFirstFileAt, ends.constData(), ends.size())) {
            return std::nullopt;
        }
    } else {
        if (!writeLink(lastFile->entry + EntryNextFileAt, chain.entry)) {
            return std::nullopt;
        }
        lastFile->nextFile = chain.entry;
        if (!writeLink(HeaderLastFileAt, chain.entry)) {
            return std::nullopt;
        }
    }
    m_lastEntry = chain.entry;
    return chain;
}

bool JournalWriter::appendBlock(FileChain& chain, const io::DeviceIo& file, const Range& range)
{
    Q_ASSERT(range.position <= range.fileSize && range.length <= range.fileSize - range.position);
    check(chain);
    ChangeHead head;
    head.previous = chain.lastChange;
    head.position = range.position;
    head.sizeBound = range.fileSize;
    head.length = range.length;
    m_block.resize(BlockHeadSize + static_cast<int>(head.length));
    char* const data = m_block.data() + BlockHeadSize;
    const qint64 got = head.length != 0 ? file.readAt(head.position, data, head.length) : 0;
    if (got != head.length) {
        m_readable = static_cast<quint64>(qMax<qint64>(got, 0));
        m_fault = {QString(), file.reason()};
        return false;
    }
    head.checksum = crc32c(0, data, head.length);
    encodeChangeHead(head, m_block.data());

    const quint64 block = m_end;
    const bool first = chain.lastChange == 0;
    bool done = append(m_block) && pass(m_barriers.beforeLinks(m_io, first && mayDeceive(block)));
    if (done) {
        done = writeLink(first ? chain.entry + EntryFirstChangeAt : chain.lastChange + ChangeNextAt, block);
        if (done && first) {
            chain.firstChange = block;
        }
        done = done && writeLink(chain.entry + EntryLastChangeAt, block);
    }
    if (done) {
        chain.lastChange = block;
        chain.take(block, head.sizeBound, head.length);
        check(chain);
    }
    if (m_block.capacity() > KeptCapacity) {
        m_block = QByteArray();
    }
    return done;
}

/// Notes why a barrier was not passed.
bool JournalWriter::pass(bool barrier)
{
    if (!barrier) {
        m_fault = m_barriers.fault();
    }
    return barrier;
}

bool JournalWriter::append(const QByteArray& record)
{
    return write(m_end, record.constData(), record.size());
}

bool JournalWriter::writeLink(quint64 at, quint64 target)
{
    Q_ASSERT_X(target >= HeaderSize && target < m_end, "JournalWriter", "invariant 2");
    const QByteArray link = encodeLink(target);
    return write(at, link.constData(), link.size());
}

bool JournalWriter::write(quint64 offset, const char* data, qint64 size)
{
    m_barriers.journalChanged();
    const qint64 written = m_io.writeAt(offset, data, size);
    if (written == size) {
        m_end = qMax(m_end, offset + static_cast<quint64>(size));
        return true;
    }
    m_fault = {message::journalWriteFailed(offset, static_cast<quint64>(size), static_cast<quint64>(written)),
               m_io.reason()};
    return false;
}

void JournalWriter::check([[maybe_unused]] const FileChain& chain) const
{
    Q_ASSERT_X(chain.entry >= HeaderSize && chain.entry < m_end && chain.firstChange < m_end &&
                   chain.lastChange < m_end && m_lastEntry < m_end,
               "JournalWriter", "invariant 1");
    Q_ASSERT_X(chain.lastChange == 0 || chain.firstChange != 0, "JournalWriter", "invariant 5");
}

} // namespace veltor::utils::journal
