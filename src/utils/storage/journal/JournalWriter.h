#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/io/Barriers.h"
#include "utils/storage/io/DeviceIo.h"
#include "utils/storage/journal/FileChain.h"
#include "utils/storage/journal/JournalFormat.h"
#include "utils/storage/journal/JournalRoom.h"

namespace veltor::utils::journal {

/// The one writer of a journal: it owns the journal's end. Knows bytes and order, not whose files they are.
class JournalWriter
{
public:
    /// Bytes of a protected file that are to be saved.
    struct Range
    {
        quint64 fileSize; ///< at this moment; what the block is bound by
        quint64 position; ///< not beyond fileSize
        quint32 length;   ///< not beyond it either
    };

    /// Both outlive the writer.
    JournalWriter(QIODevice& journal, io::Barriers& barriers);

    /// Starts a new journal on whatever the device holds.
    bool create();
    /// Goes on with a journal that was checked whole. @param lastEntry  the last of its chain of files, 0 for
    ///     none: not the one that lies furthest back. @param end  behind all its records
    bool resume(quint64 lastEntry, quint64 end);
    /// Leaves a journal that stays, cut to its end.
    void close() { m_room.close(m_end); }

    /// Where the next record goes.
    [[nodiscard]] quint64 end() const noexcept { return m_end; }

    /// Puts a file's entry at the end of the chain. @return its chain; nothing on failure
    std::optional<FileChain> appendEntry(quint64 fileSize, const QByteArray& name, FileChain* lastFile);

    /// A range to be saved as a block of its file's chain.
    struct Save
    {
        FileChain* chain;
        const io::DeviceIo* file;
        Range range;
    };

    /// Saves ranges with one append, then adds them to their chains. Those of one chain stand together;
    /// together they are hardly longer than MaxAppend.
    bool appendBlocks(const Save* begin, const Save* end);
    /// What bounds the memory of a save.
    static constexpr quint64 MaxAppend = 8 * 1024 * 1024;
    /// What a range takes in the journal.
    [[nodiscard]] static constexpr quint64 sizeOf(const Range& range)
    {
        return changeHeadSize(Layout::Checksummed) + range.length;
    }

    /// Writes bytes anywhere.
    bool write(quint64 offset, const char* data, qint64 size);

    /// Why the last call failed. A failure to read the protected file has no text.
    [[nodiscard]] const Fault& fault() const noexcept { return m_fault; }
    /// Of a failure to read the protected file: the range, and the bytes that were read.
    [[nodiscard]] const Save& unreadable() const noexcept { return m_unreadable; }
    [[nodiscard]] quint64 readable() const noexcept { return m_readable; }
    /// The chain's last entry.
    [[nodiscard]] quint64 lastEntry() const noexcept { return m_lastEntry; }

private:
    template <typename Bytes>
    bool writeBytes(quint64 offset, const Bytes& bytes)
    {
        return write(offset, bytes.data(), static_cast<qint64>(bytes.size()));
    }
    bool append(const QByteArray& record);
    bool pass(bool barrier);
    [[nodiscard]] bool mayDeceive(const Save* begin, const Save* end) const;
    bool readBlocks(const Save* begin, const Save* end);
    bool linkBlocks(const Save* begin, const Save* end);
    bool writeLinks(FileChain& chain, quint64 first, quint64 last);
    bool writeLink(quint64 at, quint64 target);
    void check(const FileChain& chain) const;

    io::DeviceIo m_io;
    io::Barriers& m_barriers;
    JournalRoom m_room;
    quint64 m_end = 0;
    quint64 m_lastEntry = 0;
    bool m_resumed = false; // nothing was appended yet to a journal that was found
    QByteArray m_blocks;    // those being saved; kept for its capacity
    Save m_unreadable{};
    quint64 m_readable = 0;
    Fault m_fault;
};

} // namespace veltor::utils::journal
