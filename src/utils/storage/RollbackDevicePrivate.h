#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/ProtectedFiles.h"
#include "utils/storage/io/Barriers.h"
#include "utils/storage/journal/JournalWalker.h"
#include "utils/storage/journal/JournalWriter.h"

#include <veltor/utils/RollbackDevice.h>

#include <algorithm>
#include <atomic>
#include <optional>

namespace veltor::utils {

/// Cuts a range to what a file of @p size bytes has of it, and into pieces that one block can save: one at
/// least, since beyond the end there is still the length, which a block records. Ends when @p visit says
/// false. @return whether it never did
template <typename Visitor>
bool forEachPiece(quint64 size, quint64 position, quint64 length, const Visitor& visit)
{
    quint64 from = std::min(position, size);
    const quint64 end = from + std::min(length, size - from);
    bool go = true;
    do {
        const auto piece = static_cast<quint32>(std::min(end - from, journal::JournalWriter::MaxAppend));
        go = visit(from, piece);
        from += piece;
    } while (go && from < end);
    return go;
}

/// What a rollback device holds, and the steps that its operations share.
class RollbackDevice::Private
{
public:
    /// What the journal held may be used for.
    enum class State
    {
        Appendable,   ///< checked or new, with checksums, writable
        RollbackOnly, ///< any other that was checked or salvaged; or partly rolled back
        Refused,      ///< not a journal, or failed the check and was not repaired
    };

    explicit Private(RollbackDevice& device)
        : m_device(device)
    {}

    bool release() noexcept;
    bool create();
    bool load();
    void salvage();

    Key addFile(const QString& name);
    [[nodiscard]] StoredFile* openFile(Key key);
    bool save(StoredFile& file, quint64 position, quint64 length);
    bool write(StoredFile& file, const QByteArray& data);
    [[nodiscard]] bool canAppend() const;
    [[nodiscard]] std::optional<quint64> sizeOf(const StoredFile& file, const io::DeviceIo& io) const;
    bool failSaving(const QString& name) const;
    bool passBarrier();
    bool resize(StoredFile& file, quint64 size);
    [[nodiscard]] quint64 end() const;
    bool writeJournal(quint64 offset, const QByteArray& bytes);
    JournalRemoval commit();
    JournalRemoval dispose();
    bool rollBack();
    bool rollBackTo(const Savepoint& savepoint);

    /// Logs a failure and keeps it as the last one. @return false
    bool fail(const Fault& fault) const;
    /// The same for what went wrong with the journal itself, whose name is added.
    bool failJournal(const Fault& fault) const;
    /// The same for what the check of a journal found.
    bool failCheck(const Fault& fault) const;

    IOPtr journal = nullIOPtr();
    io::Barriers barriers;
    std::optional<journal::JournalWriter> writer;
    ProtectedFiles files;
    State state = State::Refused;
    bool repairedWhole = false;
    QUuid version;
    quint64 freeBlockCount = 0;
    quint64 generation = 0;
    quint64 lastSavepoint = 0;       // their numbers are never used again
    std::vector<quint64> savepoints; // that can be come back to, in their order
    RollbackProgress progress;
    RollbackReport report;
    JournalRemoval removal;
    std::atomic<bool> cancel{false};
    mutable QString lastError;

private:
    [[nodiscard]] QString aboutJournal(const Fault& fault) const;
    [[nodiscard]] journal::JournalWalker::Rules rules() const noexcept;
    bool reopen(StoredFile& file);
    Key append(const QString& name, const QByteArray& storedName, quint64 size, IOPtr device);
    bool saveRange(StoredFile& file, const io::DeviceIo& io, quint64 size, quint64 position, quint64 length);
    void readSalvageable();
    bool take(const journal::WalkedFile& walked, IOPtr device, bool once);
    bool restore(StoredFile& file, journal::JournalInput& input, const std::function<bool()>& observer);

    RollbackDevice& m_device;
};

} // namespace veltor::utils
