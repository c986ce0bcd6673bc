#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/io/Barriers.h"
#include "utils/storage/io/DeviceIo.h"
#include "utils/storage/journal/FileChain.h"
#include "utils/storage/journal/JournalFormat.h"

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
    ///     none: not the one that lies furthest back
    bool resume(quint64 lastEntry);

    /// Where the next record goes.
    [[nodiscard]] quint64 end() const noexcept { return m_end; }

    /// Puts a file's entry at the end of the chain. @return its chain; nothing on failure
    std::optional<FileChain> appendEntry(quint64 fileSize, const QByteArray& name, FileChain* lastFile);

    /// Saves a range of @p file, and adds it to its chain.
    bool appendBlock(FileChain& chain, const io::DeviceIo& file, const Range& range);

    /// Writes bytes anywhere.
    bool write(quint64 offset, const char* data, qint64 size);

    /// Why the last call failed. A failure to read the protected file has no text.
    [[nodiscard]] const Fault& fault() const noexcept { return m_fault; }
    /// Of a failure to read the protected file: the bytes that were read.
    [[nodiscard]] quint64 readable() const noexcept { return m_readable; }
    /// The chain's last entry.
    [[nodiscard]] quint64 lastEntry() const noexcept { return m_lastEntry; }

private:
    bool append(const QByteArray& record);
    bool pass(bool barrier);
    bool writeLink(quint64 at, quint64 target);
    void check(const FileChain& chain) const;

    io::DeviceIo m_io;
    io::Barriers& m_barriers;
    quint64 m_end = 0;
    quint64 m_lastEntry = 0;
    QByteArray m_block; // the change block being saved; kept for its capacity
    quint64 m_readable = 0;
    Fault m_fault;
};

} // namespace veltor::utils::journal
