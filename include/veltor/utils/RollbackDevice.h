#pragma once

#include <veltor/Export.h>
#include <veltor/IOPtr.h>

#include <QtCore/QByteArray>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QUuid>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace veltor::utils {

/// One protected file: its entry in the journal, and the open file. All offsets are byte positions in
/// the journal, 0 for "none".
struct RollbackFileInfo
{
    unsigned long long nextFile = 0;    ///< entry of the next file
    unsigned long long firstChange = 0; ///< the file's first change block
    unsigned long long lastChange = 0;  ///< the file's last change block
    unsigned long long fileSize = 0;    ///< bytes the file had when it was put under protection
    QString name;                       ///< as stored in the journal
    IOPtr device = nullIOPtr();         ///< the file, open for reading and writing; empty while a journal
                                        ///< of many files that was read back has it closed
    unsigned long long blockCount = 0;  ///< change blocks saved so far
    unsigned long long savedBytes = 0;  ///< bytes in these blocks
};

/// What became of a journal that was to be disposed of.
struct JournalRemoval
{
    bool removed = true;    ///< its name is gone
    bool effective = false; ///< it still holds what it held: the next recovery would restore the old bytes
    QString reason; ///< why it is not removed or not synced, with its name and the system's words; else empty
    bool synced = true; ///< false: a loss of power was to be survived and the disk has not confirmed the end:
                        ///< final for all programs, but a loss of power now may bring the journal back

    /// True when the new contents are final.
    explicit operator bool() const noexcept { return !effective && synced; }
};

/// What a rollback did.
struct RollbackReport
{
    /// A file that was not restored, and why.
    struct Failure
    {
        QString name;   ///< as stored in the journal
        QString reason; ///< as told in the log, with the system's words
    };

    unsigned long long restored = 0; ///< files put back
    std::vector<Failure> failures;   ///< files not put back; the journal keeps them
    bool canceled = false;           ///< it ended at cancelRollback(); files not reached are no failures
    JournalRemoval journal;          ///< what became of the journal when all files were put back
};

/// A rollback journal and the files it protects: several files are changed as one unit.
///
/// Every write to a protected file goes through this class. Before bytes are overwritten, the bytes that
/// stand there are appended to the journal; only then are the new ones written. commit() makes the new
/// contents final and removes the journal; rollback() puts every file back, byte for byte, to the
/// contents and the length it had when it was added, and removes the journal. A journal that a killed
/// process left behind is opened again and rolled back; one that open() refuses is salvaged first, and
/// rolled back only when nothing had to be left out, since a rollback that succeeds removes the journal:
///
///     bool whole = journal.open(std::move(device), QIODevice::ReadWrite);
///     if (!whole && journal.isOpen()) {
///         journal.repair();
///         whole = journal.repairedWhole();
///     }
///     if (!whole || !journal.rollback()) {
///         tell(journal.errorString()); // the journal is still there: keep a copy, then decide
///     }
///
/// Promise. At every instant the journal, as the operating system sees it, holds the old bytes of every
/// range whose new bytes it may also see; nothing waits in a buffer of the process. So the files survive
/// the death of the process at any point, recovery included. They do not survive the death of the
/// operating system: nothing is forced to the disk, unless RollbackFile::setDurability() asks for it.
///
/// Where the journal and the files live is a subclass's business; RollbackFile is the one for the file
/// system. Failures are reported by the results, by errorString() and by a line in the log, level Error.
///
/// Threads: owner thread only, except cancelRollback(). Two devices must never work on one journal or
/// share a protected file; RollbackFile sees to the former.
class VELTOR_UTILS_EXPORT RollbackDevice
{
public:
    /// Names a protected file: the offset of its entry in the journal. 0 is no file's key.
    using Key = unsigned long long;

    /// What a reader wants to know of a protected file.
    struct ProtectedFile
    {
        QString name;                  ///< as stored in the journal
        unsigned long long size;       ///< bytes when it was put under protection
        unsigned long long blocks;     ///< change blocks
        unsigned long long savedBytes; ///< bytes in these blocks
        bool whole = true;             ///< false when a repair had to leave blocks of it out
    };

    /// A moment of a transaction; see savepoint().
    class Savepoint
    {
        friend class RollbackDevice;
        unsigned long long m_number = 0; // 0: no moment
        std::vector<std::pair<Key, unsigned long long>> m_lastChanges;
    };

    /// Called during rollback() after each restored block. It may call cancelRollback() and nothing else
    /// of the device; what it throws ends the rollback as a failure does, and comes out of it.
    using RollbackProgress = std::function<void(unsigned long long restored, unsigned long long total)>;

    /// Holds no journal.
    RollbackDevice();
    /// Closes; a journal stays where it is and can be opened again.
    virtual ~RollbackDevice();

    RollbackDevice(const RollbackDevice&) = delete;
    RollbackDevice& operator=(const RollbackDevice&) = delete;

    /// Puts one more file under protection and opens it. A file that is protected already keeps its key.
    /// @return the file's key; 0, with a line in the log, when it cannot be opened, its name cannot be
    ///         stored (above 65,535 bytes of UTF-8, zero bytes), or the journal takes no changes (see
    ///         open() and repair())
    virtual Key addFile(const QFileInfo& file);

protected:
    /// Opens a stored name for reading and writing, unbuffered; never creates a file. An empty pointer or
    /// a closed device when that fails; a closed device's errorString() is taken as the reason.
    [[nodiscard]] virtual IOPtr openFile(const QString& name) const = 0;

    /// Disposes of the journal's backing store; called by commit() and by a rollback() that succeeded.
    /// One that does not succeed says so by reportRemoval().
    virtual void remove(const IOPtr& journal) = 0;

    /// True when @p journal can hold a journal: present, open, not sequential.
    [[nodiscard]] virtual bool isDeviceCorrect(const IOPtr& journal);

    /// Called after the journal device was released, but not by the destructor; does nothing here.
    virtual void resetDevice();

public:
    /// Takes over an open journal device, releasing the one held.
    ///
    /// @param journal  must be readable, writable and random-access; opened unbuffered it is at its best
    /// @param mode  exactly QIODevice::WriteOnly starts a new journal; any other mode reads an existing
    ///     one, checks it from end to end and opens every file it lists
    ///
    /// CAUTION: starting a new journal destroys what the device held. A journal that still holds change
    /// blocks is somebody's unfinished transaction, and the only copy of those bytes: ask
    /// RollbackFile::needsRecovery() first, and recover; or use RollbackFile::startNew().
    ///
    /// A journal whose change blocks have no checksums is read, rolled back and repaired, but takes no
    /// further changes: the two layouts are never mixed.
    ///
    /// @return false when the device is not usable (it is released then), or when the journal is refused:
    ///     the first fault is in the log, the files are forgotten, the device is kept for repair()
    bool open(IOPtr journal, QIODevice::OpenMode mode);

    /// True while a journal device is held.
    [[nodiscard]] bool isOpen() const noexcept;

    /// Forgets all files and releases the journal device; the journal stays where it is.
    void close() noexcept;

    /// Counts the journals held: another one, or none, gives another number. A key is good only for the
    /// generation in which it was given; SecuredFile refuses one that is older.
    [[nodiscard]] unsigned long long generation() const noexcept;

    /// What the last failure was, with the file's name and the system's words where it has any; empty
    /// before the first one. The log has the same text, or for a journal's own faults its first part.
    [[nodiscard]] QString errorString() const;

    /// The key of a protected file by its stored name, 0 when unknown.
    [[nodiscard]] Key fileLookup(const QString& name) const;

    /// The protected file's own path, its stored name when it is no file; empty for an unknown key.
    [[nodiscard]] QString fileName(Key key) const;
    /// The protected file's position in bytes, 0 for an unknown key.
    [[nodiscard]] qint64 filePos(Key key) const;
    /// The protected file's present size in bytes, 0 for an unknown key; -1 when it cannot be told.
    [[nodiscard]] qint64 fileSize(Key key) const;

    /// Moves the file's position; beyond the end is allowed. False for an unknown key, a closed file or a
    /// negative position.
    bool fileSeek(Key key, qint64 position);

    /// Sets the file's length after saving what that destroys; the memory needed does not depend on how
    /// much it is. A position beyond the new end moves to it. False, with the file unchanged, when the
    /// bytes cannot be saved; false also when the length itself cannot be set.
    bool fileResize(Key key, qint64 size);

    /// Reads from the file's position, which moves. @return bytes read, 0 at the end, for a null buffer or
    /// a length of 0 or less; -1 for an unknown key, a closed file, or when nothing could be read
    qint64 readFromFile(Key key, char* buffer, qint64 length);

    /// Saves the bytes that stand in a range of a file; those beyond its end do not exist. A range that
    /// begins at or beyond the end records the file's length, so that growth can be undone. Ranges longer
    /// than 8 MiB are saved as several blocks.
    /// @return false, with nothing linked into the journal, for an unknown key, a closed file, or when
    ///         the bytes cannot be read or saved
    bool addBlock(Key key, unsigned long long position, unsigned int length);

    /// Saves the range that @p data will overwrite at the file's position, then writes it there.
    /// @return false when saving fails (no byte of the file has changed then) or when not all was written
    bool writeBlock(Key key, const QByteArray& data);

    /// Where a new record goes: the journal's end, whatever its @p size.
    [[nodiscard]] unsigned long long findBlock(unsigned int size) const;

    /// Makes the new contents final: removes the journal, forgets all files.
    /// @return false, converted, when the journal could be neither removed nor emptied and so still holds
    ///     the old bytes: the next recovery would restore them. Its reason says why.
    JournalRemoval commit();

    /// Puts the files back, in the order in which they were added, newest saved bytes first, and removes
    /// the journal. A file that fails is kept, with the journal, for another try; the others are restored
    /// and forgotten. With no protected files it just removes the journal. One file is open at a time when
    /// the journal was read back.
    ///
    /// A file is not restored, and not changed, when its length as it was cannot be had from the saved
    /// bytes: it was cut by somebody else meanwhile, or the journal is not right.
    ///
    /// @return true when all files are as they were and the journal no longer holds anything; false, with
    ///     the journal kept, when one failed, when it was cancelled, when there is no journal, or when the
    ///     journal was refused (and not repaired since) or is none
    bool rollback();

    /// What the last rollback() did, file by file.
    [[nodiscard]] const RollbackReport& rollbackReport() const noexcept;

    /// Ends the rollback() that is running after its present block: it returns false, the journal stays,
    /// and a later rollback() begins anew. Thread-safe.
    void cancelRollback() noexcept;

    /// The present moment, to come back to by rollbackTo() while this journal is held.
    [[nodiscard]] Savepoint savepoint() const;

    /// Puts the files back to what they were at @p savepoint; those added since, to what they were when
    /// added. They all stay protected, and the transaction goes on. The journal does not shrink. Savepoints
    /// made after @p savepoint are gone; it itself stays.
    /// @return false for a savepoint that is gone or another journal's, with nothing changed; false also when
    ///     a file could not be put back: then only rollback() makes sense
    bool rollbackTo(const Savepoint& savepoint);

    /// Salvages what a damaged journal still holds: its files, each with the change blocks that are whole
    /// from the first on. Changes nothing on disk; rollback() restores what was salvaged. An append that
    /// a kill left unfinished is no damage. A broken chain of blocks keeps its file with the blocks before
    /// the break and ends the search; a file that cannot be opened, or is listed twice, is left out.
    ///
    /// The journal takes no further changes after this. A rollback() that succeeds removes it even when
    /// repairedWhole() is false: keep a copy first if what could not be salvaged matters.
    void repair();

    /// False when the last repair() had to leave something out.
    [[nodiscard]] bool repairedWhole() const noexcept;

    /// True for a device that holds a journal, whole, salvaged or cut short while it was created; false
    /// after open() refused one (until repair() has looked at it) and for what never was a journal.
    [[nodiscard]] bool isRecognized() const noexcept;

    /// The protected files in the order in which they were added.
    [[nodiscard]] std::vector<ProtectedFile> protectedFiles() const;
    /// The journal's version; null when there is none that could be read.
    [[nodiscard]] QUuid journalVersion() const;
    /// Free records that open() found in the journal.
    [[nodiscard]] unsigned long long freeBlockCount() const noexcept;

    /// Watches rollback(); an empty function ends that.
    void setRollbackProgress(RollbackProgress progress);

protected:
    /// As addFile(), for a name as it is to be stored.
    Key addFileImpl(const QString& name);

    /// The entry of a protected file, null when unknown.
    [[nodiscard]] const RollbackFileInfo* existingFile(const QString& name) const;
    /// The entry of a protected file. @throws err::UnexpectedValue when unknown
    [[nodiscard]] const RollbackFileInfo& file(const QString& name) const;

    /// Writes each pair's bytes to its offset in the journal, in order; ends at the first failure.
    bool flushList(const std::vector<std::pair<unsigned long long, QByteArray>>& writes);

    /// The journal device; empty while isOpen() is false.
    [[nodiscard]] const IOPtr& journalDevice() const noexcept;

    /// Says in remove() what became of the journal, where that is not its plain removal.
    void reportRemoval(const JournalRemoval& removal);

    /// Logs @p text at level Error and makes it errorString(). @return false
    bool reportFailure(const QString& text) const;

private:
    friend class RollbackFile;
    class Private;
    std::unique_ptr<Private> m_p;
};

} // namespace veltor::utils
