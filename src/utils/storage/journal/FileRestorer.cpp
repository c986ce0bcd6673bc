// Putting one file back.

#include "utils/storage/journal/FileRestorer.h"

#include "utils/storage/StorageMessages.h"
#include "utils/storage/journal/LengthProof.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace veltor::utils::journal {
namespace {

bool isZero(const char* data, qint64 length)
{
    return length > 0 && *data == 0 && std::memcmp(data, data + 1, static_cast<std::size_t>(length - 1)) == 0;
}

} // namespace

FileRestorer::FileRestorer(JournalInput& journal, const FileChain& chain, QIODevice& file, QString name)
    : m_input(journal)
    , m_chain(chain)
    , m_io(file)
    , m_name(std::move(name))
{}

FileRestorer::Outcome FileRestorer::restore(const Observer& observer)
{
    bool stopped = false;
    const bool done = readLayout() && isLengthExplained() && walk(0, [&](const Block& block) {
                          if (!cut(block.head.sizeBound) || !restoreBlock(block)) {
                              return false;
                          }
                          stopped = !observer();
                          return !stopped;
                      });
    if (stopped) {
        return Outcome::Stopped;
    }
    return done && cut(m_chain.fileSize) && finish() ? Outcome::Restored : Outcome::Failed;
}

FileRestorer::Outcome FileRestorer::restoreTo(quint64 lastChange)
{
    if (m_chain.lastChange == lastChange) {
        return Outcome::Restored;
    }
    // The first size that was saved after that moment is the size at that moment.
    quint64 sizeThen = m_chain.fileSize;
    const bool done = readLayout() && walk(lastChange, [&](const Block& block) {
                          sizeThen = block.head.sizeBound;
                          Block whole = block;
                          whole.limit = sizeThen;
                          return cut(sizeThen) && restoreBlock(whole);
                      });
    if (!done) {
        return Outcome::Failed;
    }
    if (m_size != sizeThen) {
        fail(message::fileLengthUnexplained(m_name, sizeThen));
        return Outcome::Failed;
    }
    return finish() ? Outcome::Restored : Outcome::Failed;
}

bool FileRestorer::readLayout()
{
    const JournalInput::Piece piece = m_input.fetch(0, VersionSize);
    if (piece.length != VersionSize) {
        return fail(message::readFailed(0, VersionSize, static_cast<quint64>(qMax<qint64>(piece.length, 0))),
                    m_input.reason());
    }
    m_layout = layoutOf(decodeVersion(piece.data)).value_or(Layout::Plain);
    const std::optional<quint64> size = m_io.size();
    m_size = size.value_or(0);
    return size || fail(message::fileSizeUnknown(m_name), m_io.reason());
}

/// Visits the blocks from the newest on, down to @p until, which is not visited.
bool FileRestorer::walk(quint64 until, const Step& step)
{
    RecordBudget budget(m_input.size());
    std::size_t floors = m_chain.floors.size();
    Block block;
    quint64 newer = m_input.size();
    for (block.offset = m_chain.lastChange; block.offset != 0 && block.offset != until;) {
        if (!readHead(newer, block)) {
            return false;
        }
        if (!budget.take(changeHeadSize(m_layout) + block.head.length)) {
            return fail(message::badPreviousChange(block.offset));
        }
        if (floors > 0 && m_chain.floors[floors - 1].block == block.offset) {
            --floors;
        }
        block.limit = floors > 0 ? m_chain.floors[floors - 1].bound : m_chain.fileSize;
        if (!step(block)) {
            return false;
        }
        newer = block.offset;
        block.offset = block.head.previous;
    }
    return true;
}

bool FileRestorer::readHead(quint64 newer, Block& block)
{
    const quint64 size = changeHeadSize(m_layout);
    const auto piece = m_input.fetch(block.offset, static_cast<qint64>(size), newer);
    const auto got = static_cast<quint64>(qMax<qint64>(piece.length, 0));
    if (got != size) {
        return fail(message::readFailed(block.offset, size, got), m_input.reason());
    }
    ChangeHead& head = block.head;
    head = decodeChangeHead(piece.data, m_layout);
    block.dataAt = block.offset + size;
    if (head.length > head.sizeBound || head.position > head.sizeBound - head.length) {
        return fail(message::blockOutOfFile(head.length, head.position, head.sizeBound));
    }
    return true;
}

/// Goes over the heads first where the file is, or once was, shorter than it is to be.
bool FileRestorer::isLengthExplained()
{
    if (m_chain.floors.empty() && m_size >= m_chain.fileSize) {
        return true;
    }
    LengthProof proof(m_chain.fileSize, m_size);
    const bool followed = walk(0, [&](const Block& block) {
        const auto& head = block.head;
        proof.cut(head.sizeBound);
        return proof.fill(head.position, std::min(head.position + head.length, block.limit)) ||
               fail(message::fileLengthUnexplained(m_name, m_chain.fileSize));
    });
    if (!followed) {
        return false;
    }
    proof.cut(m_chain.fileSize);
    return proof.holds() || fail(message::fileLengthUnexplained(m_name, m_chain.fileSize));
}

bool FileRestorer::restoreBlock(const Block& block)
{
    const auto& head = block.head;
    if (!checkData(block)) {
        return false;
    }
    const quint64 end = std::min(head.position + head.length, block.limit);
    for (quint64 at = head.position; at < end;) {
        const quint64 wanted = std::min<quint64>(end - at, JournalInput::MaxPiece);
        const quint64 from = block.dataAt + (at - head.position);
        const auto piece = m_input.fetch(from, static_cast<qint64>(wanted));
        if (piece.length != static_cast<qint64>(wanted)) {
            return fail(message::readFailed(block.dataAt, head.length, from - block.dataAt),
                        m_input.reason());
        }
        if (!restorePiece(at, piece.data, piece.length)) {
            return false;
        }
        at += wanted;
    }
    return true;
}

bool FileRestorer::checkData(const Block& block)
{
    if (m_layout != Layout::Checksummed) {
        return true;
    }
    quint32 checksum = 0;
    quint64 readable = 0;
    if (!m_input.checksum(block.dataAt, block.head.length, checksum, readable)) {
        return fail(message::readFailed(block.dataAt, block.head.length, readable), m_input.reason());
    }
    return checksum == block.head.checksum || fail(message::checksumMismatch(block.dataAt));
}

bool FileRestorer::restorePiece(quint64 position, const char* data, qint64 length)
{
    const quint64 end = position + static_cast<quint64>(length);
    if (isZero(data, length)) {
        if (position >= m_size && m_io.resize(end)) { // a hole will do
            m_size = end;
            return true;
        }
        if (!m_rewrites && standsThere(position, data, length)) {
            return true;
        }
    }
    if (m_io.writeAt(position, data, length) != length) {
        // A full disk refuses even what stands there already, where a write needs new space.
        const QString reason = m_io.reason();
        if (!standsThere(position, data, length)) {
            return fail(message::fileWriteFailed(m_name, position), reason);
        }
    }
    m_size = std::max(m_size, end);
    return true;
}

bool FileRestorer::standsThere(quint64 position, const char* data, qint64 length)
{
    m_standing.resize(static_cast<std::size_t>(length));
    return m_io.readAt(position, m_standing.data(), length) == length &&
           std::memcmp(m_standing.data(), data, static_cast<std::size_t>(length)) == 0;
}

bool FileRestorer::cut(quint64 size)
{
    if (m_size <= size) {
        return true;
    }
    if (!m_io.resize(size)) {
        return fail(message::fileResizeFailed(m_name, size), m_io.reason());
    }
    m_size = size;
    return true;
}

bool FileRestorer::finish()
{
    return m_io.flush() || fail(message::fileFlushFailed(m_name), m_io.reason());
}

bool FileRestorer::fail(const QString& text, const QString& reason)
{
    m_fault = {text, reason};
    return false;
}

} // namespace veltor::utils::journal
