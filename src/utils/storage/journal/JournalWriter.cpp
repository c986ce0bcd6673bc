// Writing a journal. What holds at every instant, for whoever finds it after a kill:
//
//   1. The end lies behind every record. Nothing leads to it or beyond, not even a link that is being torn:
//      new low bytes and old high ones are no more than the new link. What lies there is room, or an append
//      that was not linked.
//   2. A record is whole before a link leads to it, and the end has moved behind it: it is never written
//   over.
//   3. First the link that makes a record reachable, then the end of its chain: the entry's last change, the
//      header's last file. Where a chain begins both stand together and are one write. Blocks of one file
//      that are appended at once are linked with each other before.
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

constexpr quint64 BlockHeadSize = changeHeadSize(Layout::Checksummed);

} // namespace

JournalWriter::JournalWriter(QIODevice& journal, io::Barriers& barriers)
    : m_io(journal)
    , m_barriers(barriers)
    , m_room(journal)
{}

bool JournalWriter::create()
{
    if (!m_room.isReused() && !writeBytes(0, encodeHeader(freshHeader()))) {
        return false;
    }
    const std::optional<quint64> size = m_io.size();
    if (!size) {
        m_fault = {message::journalSizeUnknown(), m_io.reason()};
        return false;
    }
    m_lastEntry = 0;
    if (m_room.reuse(*size)) {
        m_end = HeaderSize;
        return true;
    }
    // A device that is no file cannot be cut: what it held stays behind the header, where nothing leads.
    const bool cuts = *size > HeaderSize && m_io.canResize();
    if (cuts && !m_io.resize(HeaderSize)) {
        m_fault = {message::journalResizeFailed(HeaderSize), m_io.reason()};
        return false;
    }
    m_end = cuts ? HeaderSize : *size;
    m_room.begin(m_end, m_end);
    return pass(m_barriers.afterCreation(m_io, *size > HeaderSize));
}

bool JournalWriter::resume(quint64 lastEntry, quint64 end)
{
    const std::optional<quint64> size = m_io.size();
    if (!size) {
        m_fault = {message::journalSizeUnknown(), m_io.reason()};
        return false;
    }
    m_end = m_room.begin(*size, end);
    m_resumed = true;
    m_lastEntry = lastEntry;
    return true;
}

std::optional<FileChain> JournalWriter::appendEntry(quint64 fileSize, const QByteArray& name,
                                                    FileChain* lastFile)
{
    Q_ASSERT_X((lastFile ? lastFile->entry : 0) == m_lastEntry, "JournalWriter", "invariant 6");
    m_end = m_room.prepare(m_end, EntryHeadSize + static_cast<quint64>(name.size()));
    FileChain chain;
    chain.entry = m_end;
    chain.fileSize = fileSize;
    FileEntry entry;
    entry.fileSize = fileSize;
    if (!append(encodeEntry(entry, name)) || !pass(m_barriers.beforeLinks(m_io, m_resumed))) {
        return std::nullopt;
    }
    if (!lastFile) {
        if (!writeBytes(HeaderFirstFileAt, encodeLinks(chain.entry, chain.entry))) {
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

bool JournalWriter::appendBlocks(const Save* begin, const Save* end)
{
    quint64 size = 0;
    for (const Save* save = begin; save != end; ++save) {
        size += sizeOf(save->range);
    }
    m_blocks.resize(static_cast<int>(size));
    m_end = m_room.prepare(m_end, size);
    const bool done = readBlocks(begin, end) && linkBlocks(begin, end);
    if (m_blocks.capacity() > KeptCapacity) {
        m_blocks = QByteArray();
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

/// Makes the blocks as they will stand at the end, linked with each other.
bool JournalWriter::readBlocks(const Save* begin, const Save* end)
{
    char* bytes = m_blocks.data();
    quint64 block = m_end;
    quint64 previous = 0;
    for (const Save* save = begin; save != end; ++save) {
        const Range& range = save->range;
        Q_ASSERT(range.position <= range.fileSize && range.length <= range.fileSize - range.position);
        check(*save->chain);
        const bool first = save == begin || save[-1].chain != save->chain;
        const bool last = save + 1 == end || save[1].chain != save->chain;
        ChangeHead head;
        head.previous = first ? save->chain->lastChange : previous;
        head.next = last ? 0 : block + sizeOf(save->range);
        head.position = range.position;
        head.sizeBound = range.fileSize;
        head.length = range.length;
        char* const data = bytes + BlockHeadSize;
        const qint64 got = head.length != 0 ? save->file->readAt(head.position, data, head.length) : 0;
        if (got != head.length) {
            m_unreadable = *save;
            m_readable = static_cast<quint64>(qMax<qint64>(got, 0));
            m_fault = {QString(), save->file->reason()};
            return false;
        }
        head.checksum = crc32c(0, data, head.length);
        encodeChangeHead(head, bytes);
        previous = block;
        block += sizeOf(save->range);
        bytes += sizeOf(save->range);
    }
    return true;
}

/// Of a file's first block nothing tells that the disk has zeros in the place of its position, if the sector
/// with these bytes is the only one missing. Later ones name the block before them. And where a journal goes
/// on, bytes that were cut off behind its end may come back.
bool JournalWriter::mayDeceive(const Save* begin, const Save* end) const
{
    constexpr quint64 sector = 512;
    constexpr quint64 positionAt = 16;
    constexpr quint64 positionEnd = positionAt + sizeof(quint64);
    bool deceives = m_resumed;
    quint64 block = m_end;
    for (const Save* save = begin; save != end; ++save) {
        const bool first = save->chain->lastChange == 0 && (save == begin || save[-1].chain != save->chain);
        const quint64 before = sector - block % sector; // bytes of the head in its first sector
        deceives = deceives || (first && before > positionAt && before <= positionEnd);
        block += sizeOf(save->range);
    }
    return deceives;
}

bool JournalWriter::linkBlocks(const Save* begin, const Save* end)
{
    quint64 block = m_end;
    const bool deceives = mayDeceive(begin, end);
    if (!append(m_blocks) || !pass(m_barriers.beforeLinks(m_io, deceives))) {
        return false;
    }
    m_resumed = false;
    while (begin != end) {
        FileChain& chain = *begin->chain;
        const quint64 first = block;
        quint64 last = block;
        const Save* const from = begin;
        for (; begin != end && begin->chain == &chain; ++begin) {
            last = block;
            block += sizeOf(begin->range);
        }
        if (!writeLinks(chain, first, last)) {
            return false;
        }
        chain.lastChange = last;
        quint64 at = first;
        for (const Save* save = from; save != begin; ++save) {
            chain.take(at, save->range.fileSize, save->range.length);
            at += sizeOf(save->range);
        }
        check(chain);
    }
    return true;
}

/// Links new blocks to a chain, the first first.
bool JournalWriter::writeLinks(FileChain& chain, quint64 first, quint64 last)
{
    if (chain.lastChange != 0) {
        return writeLink(chain.lastChange + ChangeNextAt, first) &&
               writeLink(chain.entry + EntryLastChangeAt, last);
    }
    if (!writeBytes(chain.entry + EntryFirstChangeAt, encodeLinks(first, last))) {
        return false;
    }
    chain.firstChange = first;
    return true;
}

bool JournalWriter::append(const QByteArray& record)
{
    return writeBytes(m_end, record);
}

bool JournalWriter::writeLink(quint64 at, quint64 target)
{
    Q_ASSERT_X(target >= HeaderSize && target < m_end, "JournalWriter", "invariant 2");
    return writeBytes(at, encodeLink(target));
}

bool JournalWriter::write(quint64 offset, const char* data, qint64 size)
{
    m_barriers.journalChanged();
    const qint64 written = m_io.writeAt(offset, data, size);
    if (written == size) {
        m_end = qMax(m_end, offset + static_cast<quint64>(size));
        m_room.written(m_end);
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
