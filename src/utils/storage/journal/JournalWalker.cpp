// The one reader of a journal.

#include "utils/storage/journal/JournalWalker.h"

#include "utils/storage/StorageMessages.h"

#include <QtCore/QIODevice>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace veltor::utils::journal {
namespace {

/// The last byte of a region; the largest offset there is when the sum would wrap.
quint64 lastByte(quint64 offset, quint64 size)
{
    const quint64 last = size - 1;
    return offset > std::numeric_limits<quint64>::max() - last ? std::numeric_limits<quint64>::max()
                                                               : offset + last;
}

/// Whether a link has bytes in two sectors, of which the disk may have one.
bool isSplit(quint64 link)
{
    constexpr quint64 sector = 512;
    return link % sector > sector - sizeof(quint64);
}

} // namespace

JournalWalker::JournalWalker(QIODevice& journal, Mode mode, Rules rules)
    : m_journal(journal)
    , m_mode(mode)
    , m_rules(rules)
    , m_input(journal)
    , m_budget(m_input.size())
{}

bool JournalWalker::salvagesPowerLoss() const
{
    return m_mode == Mode::Salvage && m_rules == Rules::PowerLoss;
}

/// A first link that a kill tore may lead anywhere, zeros included, which would pass as a block of an
/// empty file. The first block saved has the size that the file had when it was added.
bool JournalWalker::isStrayFirstChange(const FileChain& chain, quint64 previous, const ChangeHead& head) const
{
    return previous == 0 && (chain.lastChange == 0 || m_rules == Rules::PowerLoss) &&
           head.sizeBound != chain.fileSize;
}

bool JournalWalker::walk(const FileVisitor& visitor)
{
    if (!walkHeader()) {
        return false;
    }
    if (m_mode == Mode::Salvage && isFirstEntryUnlinked()) {
        return true;
    }
    return checkHeader() && walkFiles(visitor) && (m_mode == Mode::Salvage || walkFree());
}

/// Of the header's two ends, one was written when the process died: then the only entry has no changes yet.
bool JournalWalker::isFirstEntryUnlinked()
{
    const quint64 only = m_header.firstFile;
    if (only == 0 || m_header.lastFile != 0 || pointsIntoHeader(only)) {
        return false;
    }
    const char* const bytes = readRecord(only, EntryHeadSize);
    if (!bytes) {
        return false;
    }
    const FileEntry entry = decodeEntryHead(bytes);
    return entry.nextFile == 0 && entry.firstChange == 0 && entry.lastChange == 0;
}

bool JournalWalker::walkHeader()
{
    const char* const bytes = readRecord(0, HeaderSize);
    if (!bytes) {
        return false;
    }
    m_header = decodeHeader(bytes);
    m_layout = layoutOf(m_header.version);
    if (!m_layout) {
        return fail(message::unknownVersion(m_header.version));
    }
    return m_budget.take(HeaderSize);
}

bool JournalWalker::checkHeader()
{
    const auto& [version, firstFile, lastFile, firstFree, lastFree] = m_header;
    if ((firstFile == 0) != (lastFile == 0)) {
        return fail(firstFile != 0 ? message::firstFileWithoutLast(firstFile)
                                   : message::lastFileWithoutFirst(lastFile));
    }
    if ((firstFree == 0) != (lastFree == 0)) {
        return fail(firstFree != 0 ? message::firstFreeWithoutLast(firstFree)
                                   : message::lastFreeWithoutFirst(lastFree));
    }
    if (pointsIntoHeader(firstFile)) {
        return fail(message::badFirstFile(firstFile));
    }
    if (pointsIntoHeader(lastFile)) {
        return fail(message::badLastFile(lastFile));
    }
    if (pointsIntoHeader(firstFree)) {
        return fail(message::badFirstFree(firstFree));
    }
    return !pointsIntoHeader(lastFree) || fail(message::badLastFree(lastFree));
}

bool JournalWalker::walkFiles(const FileVisitor& visitor)
{
    quint64 beforeLast = 0;
    quint64 lastSize = 0;
    CircleWatch circle(m_header.firstFile);
    for (quint64 offset = m_header.firstFile; offset != 0;) {
        if (m_lastEntry != 0 && circle.meets(offset)) {
            return fail(message::badNextFile(offset, lastSize));
        }
        WalkedFile file;
        file.chain.entry = offset;
        const Outcome outcome = walkFile(file);
        if (outcome == Outcome::Unreadable) {
            return m_mode == Mode::Salvage && endFiles(visitor, beforeLast, true);
        }
        if (!visitor(file)) {
            return fail(message::openFailed(file.name));
        }
        if (outcome == Outcome::Broken) {
            return false;
        }
        beforeLast = std::exchange(m_lastEntry, offset);
        m_metLastFile = m_metLastFile || offset == m_header.lastFile;
        lastSize = file.chain.fileSize;
        offset = file.chain.nextFile;
    }
    return endFiles(visitor, beforeLast, false);
}

/// @param broken  a link leads beyond the last entry, to none
bool JournalWalker::endFiles(const FileVisitor& visitor, quint64 beforeLast, bool broken)
{
    if (m_lastEntry == m_header.lastFile) {
        return m_lastEntry != 0 || !broken;
    }
    if (salvagesPowerLoss() && m_lastEntry != 0) {
        return m_metLastFile || takeLastFile(visitor);
    }
    if (m_mode == Mode::Salvage) {
        return !broken && isUnfinishedLink(beforeLast, m_lastEntry, m_header.lastFile);
    }
    return fail(message::lastFileMismatch(m_lastEntry, m_header.lastFile));
}

/// The entry that the header names as the last one, if it is whole: the way to it is not on the disk.
bool JournalWalker::takeLastFile(const FileVisitor& visitor)
{
    WalkedFile file;
    file.chain.entry = m_header.lastFile;
    if (walkFile(file) != Outcome::Whole || file.chain.nextFile != 0 || !visitor(file)) {
        return false;
    }
    m_lastEntry = m_header.lastFile;
    return true;
}

JournalWalker::Outcome JournalWalker::walkFile(WalkedFile& file)
{
    const char* const bytes = readRecord(file.chain.entry, EntryHeadSize);
    if (!bytes) {
        return Outcome::Unreadable;
    }
    const FileEntry entry = decodeEntryHead(bytes);
    if (!checkEntry(entry)) {
        return Outcome::Unreadable;
    }
    if (!m_budget.take(EntryHeadSize)) {
        fail(message::badNextFile(entry.nextFile, entry.fileSize));
        return Outcome::Unreadable;
    }
    file.chain.nextFile = entry.nextFile;
    file.chain.firstChange = entry.firstChange;
    file.chain.lastChange = entry.lastChange;
    file.chain.fileSize = entry.fileSize;
    file.nameLength = entry.nameLength;
    const Outcome outcome = walkChanges(file.chain);
    return outcome != Outcome::Unreadable && readName(file) ? outcome : Outcome::Unreadable;
}

bool JournalWalker::checkEntry(const FileEntry& entry)
{
    const auto& [nextFile, firstChange, lastChange, fileSize, nameLength] = entry;
    const bool unfinishedFirst = m_mode == Mode::Salvage && lastChange == 0;
    if (firstChange != 0 && lastChange == 0 && !unfinishedFirst) {
        return fail(message::firstChangeWithoutLast(firstChange, fileSize));
    }
    if (salvagesPowerLoss()) {
        return true; // each link is judged by what it leads to
    }
    if (firstChange == 0 && lastChange != 0) {
        return fail(message::lastChangeWithoutFirst(lastChange, fileSize));
    }
    if (pointsIntoHeader(firstChange) && !unfinishedFirst) {
        return fail(message::badFirstChange(firstChange, fileSize));
    }
    if (pointsIntoHeader(lastChange)) {
        return fail(message::badLastChange(lastChange, fileSize));
    }
    return !pointsIntoHeader(nextFile) || fail(message::badNextFile(nextFile, fileSize));
}

JournalWalker::Outcome JournalWalker::walkChanges(FileChain& chain)
{
    quint64 before = 0;
    quint64 last = 0;
    bool met = chain.lastChange == 0; // the stored end
    bool broken = false;
    for (quint64 offset = chain.firstChange; offset != 0 && !broken;) {
        ChangeHead head;
        broken = !readChange(offset, last, head) ||
                 (isStrayFirstChange(chain, last, head) && !fail(message::badFirstChange(offset, chain.fileSize)));
        if (!broken) {
            chain.take(offset, head.sizeBound, head.length);
            met = met || offset == chain.lastChange;
            before = last;
            last = offset;
            offset = head.next;
        }
    }
    const quint64 stored = std::exchange(chain.lastChange, last);
    if (m_mode == Mode::Validate) {
        const bool whole = !broken && (stored == last || fail(message::lastChangeMismatch(stored, last)));
        return whole ? Outcome::Whole : Outcome::Unreadable;
    }
    chain.whole = isEndOfChanges(chain, before, stored, met, broken);
    return chain.whole ? Outcome::Whole : Outcome::Broken;
}

/// Whether nothing behind the last block that was found could be needed. The last change is linked, and
/// synced if at all, before any byte of the file is overwritten.
bool JournalWalker::isEndOfChanges(FileChain& chain, quint64 before, quint64 stored, bool met, bool broken)
{
    if (stored == chain.lastChange) {
        return true;
    }
    if (m_rules == Rules::Format) {
        return !broken && isUnfinishedLink(before, chain.lastChange, stored);
    }
    return met || takeTail(chain, stored) || (!broken && isSplit(chain.entry + EntryLastChangeAt));
}

/// Blocks from the stored end back to the last one that was found: the way to them is not on the disk.
bool JournalWalker::takeTail(FileChain& chain, quint64 stored)
{
    struct Block
    {
        quint64 offset;
        ChangeHead head;
    };
    constexpr std::size_t longest = 8192; // of one append, and the memory that a strange journal may ask for
    std::vector<Block> tail;
    for (quint64 offset = stored; offset != chain.lastChange;) {
        const char* const bytes = readRecord(offset, changeHeadSize(*m_layout));
        Block block{offset, bytes ? decodeChangeHead(bytes, *m_layout) : ChangeHead()};
        const quint64 previous = block.head.previous;
        const bool whole = bytes && tail.size() < longest && previous < offset && previous >= chain.lastChange &&
                           readChange(offset, previous, block.head) &&
                           !isStrayFirstChange(chain, previous, block.head);
        if (!whole) {
            return false;
        }
        tail.push_back(block);
        offset = previous;
    }
    for (auto block = tail.rbegin(); block != tail.rend(); ++block) {
        chain.take(block->offset, block->head.sizeBound, block->head.length);
    }
    chain.lastChange = stored;
    return true;
}

bool JournalWalker::readChange(quint64 offset, quint64 previous, ChangeHead& head)
{
    if (pointsIntoHeader(offset)) {
        return fail(message::badNextChange(offset));
    }
    const quint64 headSize = changeHeadSize(*m_layout);
    const char* const bytes = readRecord(offset, headSize);
    if (!bytes) {
        return false;
    }
    head = decodeChangeHead(bytes, *m_layout);
    if (head.length > head.sizeBound || head.position > head.sizeBound - head.length) {
        return fail(message::blockOutOfFile(head.length, head.position, head.sizeBound));
    }
    if (pointsIntoHeader(head.next)) {
        return fail(message::badNextChange(head.next));
    }
    if (pointsIntoHeader(head.previous)) {
        return fail(message::badPreviousChange(head.previous));
    }
    if (head.previous != previous) {
        return fail(message::previousChangeMismatch(head.previous, previous));
    }
    return checkChangeData(offset + headSize, head);
}

bool JournalWalker::checkChangeData(quint64 offset, const ChangeHead& head)
{
    if (!m_budget.take(changeHeadSize(*m_layout))) {
        return fail(message::badNextChange(offset - changeHeadSize(*m_layout)));
    }
    const quint64 available = m_input.size() - qMin(offset, m_input.size());
    if (head.length > available) {
        return fail(message::readFailed(offset, head.length, available));
    }
    if (!m_budget.take(head.length)) {
        return fail(message::badNextChange(offset - changeHeadSize(*m_layout)));
    }
    quint32 checksum = 0;
    quint64 readable = 0;
    if (!m_input.checksum(offset, head.length, checksum, readable)) {
        return fail(message::readFailed(offset, head.length, readable));
    }
    if (*m_layout == Layout::Checksummed && checksum != head.checksum) {
        return fail(message::checksumMismatch(offset));
    }
    return true;
}

bool JournalWalker::readName(WalkedFile& file)
{
    const quint64 offset = file.chain.entry + EntryHeadSize;
    const quint64 length = file.nameLength;
    const JournalInput::Piece piece = m_input.fetch(offset, static_cast<qint64>(length));
    if (piece.length < 0) {
        return fail(message::nameSeekFailed(offset, file.chain.entry));
    }
    if (static_cast<quint64>(piece.length) < length) {
        return fail(message::nameReadFailed(offset, static_cast<quint64>(piece.length), length));
    }
    const std::optional<QString> name = decodeName(QByteArray(piece.data, static_cast<int>(length)));
    if (!name) {
        return fail(message::badName());
    }
    file.name = *name;
    return m_budget.take(length) || fail(message::badNextFile(file.chain.entry, file.chain.fileSize));
}

bool JournalWalker::walkFree()
{
    quint64 last = 0;
    for (quint64 offset = m_header.firstFree; offset != 0;) {
        const char* const bytes = readRecord(offset, FreeRecordSize);
        if (!bytes) {
            return false;
        }
        const FreeRecord record = decodeFreeRecord(bytes);
        if (!checkFree(record)) {
            return false;
        }
        if (record.previous != last) {
            return fail(message::previousFreeMismatch(record.previous, last));
        }
        if (!m_budget.take(FreeRecordSize)) {
            return fail(message::badNextFree(offset));
        }
        ++m_freeBlockCount;
        last = offset;
        offset = record.next;
    }
    return true;
}

bool JournalWalker::checkFree(const FreeRecord& record)
{
    if (record.regionSize == 0) {
        return fail(message::emptyFreeBlock());
    }
    if (pointsIntoHeader(record.next)) {
        return fail(message::badNextFree(record.next));
    }
    if (pointsIntoHeader(record.previous)) {
        return fail(message::badPreviousFree(record.previous));
    }
    if (record.regionOffset < HeaderSize) {
        return fail(message::badFreeRegion(record.regionOffset));
    }
    return readRecord(lastByte(record.regionOffset, record.regionSize), 1) != nullptr;
}

const char* JournalWalker::readRecord(quint64 offset, quint64 size)
{
    const JournalInput::Piece piece = m_input.fetch(offset, static_cast<qint64>(size));
    if (piece.length < 0) {
        fail(message::seekFailed(offset, m_input.size(), m_journal.isOpen()));
        return nullptr;
    }
    if (static_cast<quint64>(piece.length) < size) {
        fail(message::readFailed(offset, size, static_cast<quint64>(piece.length)));
        return nullptr;
    }
    return piece.data;
}

bool JournalWalker::fail(const QString& message)
{
    m_fault = {message, m_input.reason()};
    return false;
}

bool isBlank(QIODevice& journal)
{
    JournalInput input(journal);
    for (quint64 at = 0; at < input.size();) {
        const JournalInput::Piece piece = input.fetch(at, JournalInput::MaxPiece);
        const char* const end = piece.data + qMax<qint64>(piece.length, 0);
        if (piece.length <= 0 || std::any_of(piece.data, end, [](char byte) { return byte != 0; })) {
            return false;
        }
        at += static_cast<quint64>(piece.length);
    }
    return input.isReadable();
}

bool isUnfinishedCreation(QIODevice& journal)
{
    JournalInput input(journal);
    if (!input.isReadable() || input.size() >= HeaderSize) {
        return false;
    }
    const auto size = static_cast<qint64>(input.size());
    const JournalInput::Piece piece = input.fetch(0, size);
    return qMax<qint64>(piece.length, 0) == size &&
           encodeHeader(freshHeader()).startsWith(QByteArray(piece.data, static_cast<int>(size)));
}

} // namespace veltor::utils::journal
