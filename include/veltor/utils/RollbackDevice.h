#pragma once

#include <veltor/Export.h>
#include <veltor/IOPtr.h>

#include <QtCore/QByteArray>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QUuid>

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace veltor::utils {

namespace journal {
struct Header;
struct WalkedFile;
struct Write;
} // namespace journal

/// One protected file: its entry in the journal, and the open file. All offsets are byte positions in
/// the journal, 0 for "none".
struct RollbackFileInfo
{
    unsigned long long nextFile = 0;    ///< entry of the next file
    unsigned long long firstChange = 0; ///< the file's first change block
    unsigned long long lastChange = 0;  ///< the file's last change block
    unsigned long long fileSize = 0;    ///< bytes the file had when it was put under protection
    QString name;                       ///< as stored in the journal
    IOPtr device = nullIOPtr();         ///< the file, open for reading and writing
    unsigned long long blockCount = 0;  ///< change blocks saved so far
    unsigned long long savedBytes = 0;  ///< bytes in these blocks
};

/// A rollback journal and the files it protects: several files are changed as one unit.
///
/// Every write to a protected file goes through this class. Before bytes are overwritten, the bytes that
/// stand there are appended to the journal; only then are the new ones written. commit() makes the new
/// contents final and removes the journal; rollback() puts every file back, byte for byte, to the
/// contents and the length it had when it was added, and removes the journal. A journal that a killed
/// process left behind is opened again and rolled back; one that open() refuses is salvaged first:
///
///     if (!journal.open(std::move(device), QIODevice::ReadWrite)) {
///         journal.repair();
///     }
///     journal.rollback();
///
/// Promise. At every instant the journal, as the operating system sees it, holds the old bytes of every
/// range whose new bytes it may also see; nothing waits in a buffer of the process. So the files survive
/// the death of the process at any point, recovery included. They do not survive the death of the
/// operating system: nothing is forced to the disk.
///
/// Where the journal and the files live is a subclass's business; RollbackFile is the one for the file
/// system. Failures are reported by the results and by a line in the log, level Error.
///
/// Threads: owner thread only. Two devices must never work on one journal or share a protected file.
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
    };

    /// Called during rollback() after each restored block; must not touch the device.
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
    /// a closed device when that fails.
    [[nodiscard]] virtual IOPtr openFile(const QString& name) const = 0;

    /// Disposes of the journal's backing store; called by commit() and by a rollback() that succeeded.
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
    /// RollbackFile::needsRecovery() first, and recover.
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

    /// The key of a protected file by its stored name, 0 when unknown.
    [[nodiscard]] Key fileLookup(const QString& name) const;

    /// The protected file's own path, its stored name when it is no file; empty for an unknown key.
    [[nodiscard]] QString fileName(Key key) const;
    /// The protected file's position in bytes, 0 for an unknown key.
    [[nodiscard]] qint64 filePos(Key key) const;
    /// The protected file's present size in bytes, 0 for an unknown key.
    [[nodiscard]] qint64 fileSize(Key key) const;

    /// Moves the file's position; beyond the end is allowed. False for an unknown key, a closed file or a
    /// negative position.
    bool fileSeek(Key key, qint64 position);

    /// Sets the file's length after saving what that destroys; the memory needed does not depend on how
    /// much it is. A position beyond the new end moves to it. False, with the file unchanged, when the
    /// bytes cannot be saved; false also when the length itself cannot be set.
    bool fileResize(Key key, qint64 size);

    /// Reads from the file's position, which moves. @return bytes read, 0 at the end, for a null buffer or
    /// a length of 0 or less; -1 for an unknown key or a closed file
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
    void commit();

    /// Puts the files back, in the order in which they were added, newest saved bytes first, and removes
    /// the journal. A file that fails is kept, with the journal, for another try; the others are restored
    /// and forgotten. With no protected files it just removes the journal.
    /// @return true when all files are as they were; false, with the journal kept, when one failed, when
    ///         there is no journal, or when the journal was refused (and not repaired since) or is none
    bool rollback();

    /// Salvages what a damaged journal still holds: its files, each with the change blocks that are whole
    /// from the first on. Changes nothing on disk; rollback() restores what was salvaged. An append that
    /// a kill left unfinished is no damage. A broken chain of blocks keeps its file with the blocks before
    /// the break and ends the search; a file that cannot be opened is left out.
    ///
    /// The journal takes no further changes after this. A rollback() that succeeds removes it even when
    /// repairedWhole() is false: keep a copy first if what could not be salvaged matters.
    void repair();

    /// False when the last repair() had to leave something out.
    [[nodiscard]] bool repairedWhole() const noexcept { return m_repairedWhole; }

    /// True for a device that holds a journal, whole, salvaged or cut short while it was created; false
    /// after open() refused one (until repair() has looked at it) and for what never was a journal.
    [[nodiscard]] bool isRecognized() const noexcept { return m_state != State::Refused; }

    /// The protected files in the order in which they were added.
    [[nodiscard]] std::vector<ProtectedFile> protectedFiles() const;
    /// The journal's version; null when there is none that could be read.
    [[nodiscard]] QUuid journalVersion() const { return m_version; }
    /// Free records that open() found in the journal.
    [[nodiscard]] unsigned long long freeBlockCount() const noexcept { return m_freeBlockCount; }

    /// Watches rollback(); an empty function ends that.
    void setRollbackProgress(RollbackProgress progress);

protected:
    /// The protected files, by key: so in the order in which they were added.
    using FileMap = std::map<Key, RollbackFileInfo>;
    /// A protected file with its key.
    using FileItem = FileMap::value_type;

    /// As addFile(), for a name as it is to be stored.
    Key addFileImpl(const QString& name);

    /// The entry of a protected file, null when unknown.
    [[nodiscard]] const RollbackFileInfo* existingFile(const QString& name) const;
    /// The entry of a protected file. @throws err::UnexpectedValue when unknown
    [[nodiscard]] const RollbackFileInfo& file(const QString& name) const;

    /// Saves one range as one change block.
    bool addBlockImpl(FileItem& file, unsigned long long position, unsigned int length);

    /// Writes each pair's bytes to its offset in the journal, in order; ends at the first failure.
    bool flushList(const std::vector<std::pair<unsigned long long, QByteArray>>& writes);

    /// The journal device; empty while isOpen() is false.
    [[nodiscard]] const IOPtr& journalDevice() const noexcept { return m_journal; }

private:
    /// What the journal held may be used for.
    enum class State
    {
        Appendable,   ///< checked or new, with checksums, writable
        RollbackOnly, ///< any other that was checked or salvaged; or partly rolled back
        Refused,      ///< not a journal, or failed the check and was not repaired
    };

    bool release() noexcept;
    bool createJournal();
    bool loadJournal();
    bool takeFile(const journal::WalkedFile& walked, IOPtr device);
    void salvage();
    bool openWalked(const journal::WalkedFile& walked);
    void remember(Key key, RollbackFileInfo info);
    FileMap::iterator forget(FileMap::iterator file);
    void forgetFiles() noexcept;
    [[nodiscard]] Key sameFile(QIODevice& device) const;
    void dispose();
    [[nodiscard]] bool canAppend() const;
    [[nodiscard]] FileItem* openItem(Key key);
    [[nodiscard]] const FileItem* item(Key key) const;
    std::size_t writeJournal(const journal::Write* writes, std::size_t count);
    Key appendEntry(const QString& name, const QByteArray& storedName, IOPtr device);
    bool appendBlock(FileItem& file, const char* block, qint64 size);
    bool saveRange(FileItem& file, unsigned long long position, unsigned long long length);
    bool rollbackFileImpl(FileItem& file);

    IOPtr m_journal;
    FileMap m_files;
    QHash<QString, Key> m_keys;                                                    // by stored name
    std::map<std::pair<unsigned long long, unsigned long long>, Key> m_identities; // by the file itself
    State m_state = State::Refused;
    bool m_repairedWhole = false;
    QUuid m_version;
    unsigned long long m_freeBlockCount = 0;
    QByteArray m_block; // the change block being saved; kept for its capacity
    RollbackProgress m_progress;
    unsigned long long m_restoredBlocks = 0;
    unsigned long long m_blocksToRestore = 0;
};

} // namespace veltor::utils
