// Saving and writing. The order of the writes is the promise of the whole class:
//
//   1. a record is written whole where nothing leads to it yet;
//   2. the link that makes it reachable;
//   3. the end of the chain in the entry (blocks) or the header (files);
//   4. only then the bytes of the protected file.
//
// Death between two of them leaves an unfinished append, which JournalWalker knows. A write that fails
// leaves the picture in memory equal to the journal: what was linked counts, what was not does not.

#include <veltor/utils/RollbackDevice.h>

#include "utils/storage/Crc32c.h"
#include "utils/storage/DeviceIo.h"
#include "utils/storage/JournalFormat.h"
#include "utils/storage/JournalMessages.h"
#include "utils/storage/JournalWrite.h"

#include <algorithm>
#include <array>

namespace veltor::utils {
namespace {

/// The longest range that one change block saves: what bounds the memory of a save.
constexpr quint64 MaxSavedLength = 8 * 1024 * 1024;

/// Capacity that the block buffer keeps between two saves.
constexpr int KeptCapacity = 1024 * 1024;

constexpr auto BlockHeadSize = static_cast<int>(journal::changeHeadSize(journal::Layout::Checksummed));

journal::Write writeOf(quint64 offset, const QByteArray& bytes)
{
    return {offset, bytes.constData(), bytes.size()};
}

} // namespace

bool RollbackDevice::canAppend() const
{
    if (m_state != State::Appendable) {
        LogInfo::error(journal::message::journalNotAppendable());
        return false;
    }
    return true;
}

unsigned long long RollbackDevice::findBlock(unsigned int) const
{
    return m_journal ? DeviceIo(*m_journal).size() : 0;
}

bool RollbackDevice::flushList(const std::vector<std::pair<unsigned long long, QByteArray>>& writes)
{
    return std::all_of(writes.begin(), writes.end(), [this](const auto& write) {
        const journal::Write one = writeOf(write.first, write.second);
        return writeJournal(&one, 1) == 1;
    });
}

/// Performs the writes in order and returns how many were done whole.
std::size_t RollbackDevice::writeJournal(const journal::Write* writes, std::size_t count)
{
    if (!m_journal) {
        return 0;
    }
    const DeviceIo io(*m_journal);
    for (std::size_t done = 0; done < count; ++done) {
        const auto& [offset, data, size] = writes[done];
        const qint64 written = io.writeAt(offset, data, size);
        if (written != size) {
            LogInfo::error(journal::message::journalWriteFailed(offset, static_cast<quint64>(size),
                                                                static_cast<quint64>(written)));
            return done;
        }
    }
    return count;
}

RollbackDevice::Key RollbackDevice::addFileImpl(const QString& name)
{
    if (const Key key = fileLookup(name)) {
        return key;
    }
    if (!canAppend()) {
        return 0;
    }
    const std::optional<QByteArray> storedName = journal::encodeName(name);
    if (!storedName) {
        const bool tooLong = static_cast<quint64>(name.toUtf8().size()) > journal::MaxNameLength;
        LogInfo::error(tooLong ? journal::message::nameTooLong(name) : journal::message::badName());
        return 0;
    }
    IOPtr device = openFile(name);
    if (!device || !device->isOpen()) {
        LogInfo::error(journal::message::openFailed(name));
        return 0;
    }
    const auto identity = DeviceIo(*device).identity();
    if (identity && identity == DeviceIo(*m_journal).identity()) {
        LogInfo::error(journal::message::fileIsJournal(name));
        return 0;
    }
    // Saved under two names (hard links, a file system that ignores case), a file would be put back to
    // what the other name had made of it.
    if (const Key key = sameFile(*device)) {
        return key;
    }
    return appendEntry(name, *storedName, std::move(device));
}

RollbackDevice::Key RollbackDevice::appendEntry(const QString& name, const QByteArray& storedName,
                                                IOPtr device)
{
    RollbackFileInfo info;
    info.name = name;
    info.fileSize = DeviceIo(*device).size();
    info.device = std::move(device);

    journal::FileEntry entry;
    entry.fileSize = info.fileSize;
    const QByteArray bytes = encodeEntry(entry, storedName);
    const Key key = findBlock(static_cast<unsigned int>(bytes.size()));
    const QByteArray link = journal::encodeLink(key);
    const QByteArray bothEnds = journal::encodeLinks(key, key);
    if (m_files.empty()) {
        // The header's two ends go in one write: there is no state in which only one of them is set.
        const std::array writes{writeOf(key, bytes), writeOf(journal::HeaderFirstFileAt, bothEnds)};
        if (writeJournal(writes.data(), writes.size()) < writes.size()) {
            return 0;
        }
    } else {
        auto& [lastKey, lastFile] = *m_files.rbegin();
        const std::array writes{writeOf(key, bytes), writeOf(lastKey + journal::EntryNextFileAt, link),
                                writeOf(journal::HeaderLastFileAt, link)};
        const std::size_t done = writeJournal(writes.data(), writes.size());
        if (done >= 2) {
            lastFile.nextFile = key;
        }
        if (done < writes.size()) {
            return 0;
        }
    }
    remember(key, std::move(info));
    return key;
}

bool RollbackDevice::addBlock(Key key, unsigned long long position, unsigned int length)
{
    FileItem* const file = openItem(key);
    return file && saveRange(*file, position, length);
}

/// Saves a range of any length as blocks of bounded size, one at least.
bool RollbackDevice::saveRange(FileItem& file, unsigned long long position, unsigned long long length)
{
    const quint64 size = DeviceIo(*file.second.device).size();
    const quint64 end = position < size ? position + std::min<quint64>(length, size - position) : position;
    quint64 from = position;
    do {
        const quint64 piece = std::min<quint64>(end - from, MaxSavedLength);
        if (!addBlockImpl(file, from, static_cast<unsigned int>(piece))) {
            return false;
        }
        from += piece;
    } while (from < end);
    return true;
}

bool RollbackDevice::addBlockImpl(FileItem& file, unsigned long long position, unsigned int length)
{
    if (!canAppend()) {
        return false;
    }
    RollbackFileInfo& info = file.second;
    const DeviceIo io(*info.device);
    journal::ChangeHead head;
    head.sizeBound = io.size();
    // Beyond the end there is nothing to save but the length itself, which the block records at the end.
    head.position = std::min<quint64>(position, head.sizeBound);
    head.length = static_cast<quint32>(std::min<quint64>(length, head.sizeBound - head.position));
    head.previous = info.lastChange;

    m_block.resize(BlockHeadSize + static_cast<int>(head.length));
    char* const data = m_block.data() + BlockHeadSize;
    const qint64 got = head.length != 0 ? io.readAt(head.position, data, head.length) : 0;
    if (got != head.length) {
        LogInfo::error(journal::message::fileReadFailed(info.name, head.position, head.length,
                                                        static_cast<quint64>(qMax<qint64>(got, 0))));
        return false;
    }
    head.checksum = crc32c(0, data, head.length);
    encodeChangeHead(head, m_block.data());
    const bool saved = appendBlock(file, m_block.constData(), m_block.size());
    if (saved) {
        ++info.blockCount;
        info.savedBytes += head.length;
    }
    if (m_block.capacity() > KeptCapacity) {
        m_block = QByteArray();
    }
    return saved;
}

bool RollbackDevice::appendBlock(FileItem& file, const char* block, qint64 size)
{
    auto& [key, info] = file;
    const quint64 offset = findBlock(static_cast<unsigned int>(size));
    const QByteArray link = journal::encodeLink(offset);
    const bool first = info.lastChange == 0;
    const quint64 linkAt =
        first ? key + journal::EntryFirstChangeAt : info.lastChange + journal::ChangeNextAt;
    const std::array writes{journal::Write{offset, block, size}, writeOf(linkAt, link),
                            writeOf(key + journal::EntryLastChangeAt, link)};
    const std::size_t done = writeJournal(writes.data(), writes.size());
    if (done >= 2 && first) {
        info.firstChange = offset;
    }
    if (done < writes.size()) {
        return false;
    }
    info.lastChange = offset;
    return true;
}

bool RollbackDevice::writeBlock(Key key, const QByteArray& data)
{
    FileItem* const file = openItem(key);
    if (!file) {
        return false;
    }
    if (data.isEmpty()) {
        return true;
    }
    const DeviceIo io(*file->second.device);
    const auto position = static_cast<quint64>(io.pos());
    if (!saveRange(*file, position, static_cast<quint64>(data.size()))) {
        static_cast<void>(io.seek(static_cast<qint64>(position)));
        return false;
    }
    const qint64 written = io.writeAt(position, data.constData(), data.size());
    const bool moved = io.seek(static_cast<qint64>(position) + written);
    if (written != data.size()) {
        LogInfo::error(journal::message::fileWriteFailed(file->second.name, position));
        return false;
    }
    return moved;
}

bool RollbackDevice::fileResize(Key key, qint64 size)
{
    FileItem* const file = openItem(key);
    if (!file || size < 0) {
        return false;
    }
    const DeviceIo io(*file->second.device);
    const quint64 oldSize = io.size();
    const auto newSize = static_cast<quint64>(size);
    if (newSize == oldSize) {
        return true;
    }
    const qint64 position = io.pos();
    const quint64 from = std::min(newSize, oldSize);
    if (!saveRange(*file, from, oldSize - from) || !io.resize(newSize)) {
        LogInfo::error(journal::message::fileResizeFailed(file->second.name, newSize));
        static_cast<void>(io.seek(position));
        return false;
    }
    return io.seek(std::min(position, newSize < oldSize ? size : position));
}

} // namespace veltor::utils
