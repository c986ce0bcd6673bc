#pragma once

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QFileInfo>

#include <functional>
#include <memory>
#include <vector>

namespace veltor::utils {

/// What stands under a journal's name.
enum class JournalState
{
    Nothing,       ///< no file, or one that protects no saved bytes: a new transaction may start there
    InUse,         ///< a living program has it open for work
    NeedsRecovery, ///< somebody's unfinished transaction: roll it back, repair it or discard it
    Unreadable,    ///< it cannot be asked or read, is a link or no file, or never was a journal
};

/// A look at a journal that opens none of its files and changes nothing.
struct JournalView
{
    JournalState state = JournalState::Nothing; ///< what stands there
    qint64 ownerPid = 0;                        ///< of the program that has it open; 0 when none, or unknown
    bool belongsToUser = true; ///< it is the file of the user who runs, and nobody else may write it
    bool valid = false;        ///< whole; of one in use, whole at this moment
    QString reason;            ///< why not, or why it cannot be read or is in use; with the system's words
    QUuid version;             ///< null when there is none that could be read
    std::vector<RollbackDevice::ProtectedFile> files; ///< what a rollback, or a repair, would restore
    unsigned long long freeBlocks = 0;                ///< free records in it
};

/// Whether files and journal also survive the death of the operating system: a loss of power.
///
/// The journal's bytes are the same in all three. Who recovers has to say how it was written: the rules of
/// Durable take a journal for what a loss of power may have left of one that was synced, and refuse others'
/// damage as ever.
///
/// What is promised with Durable and Careful, by a disk that does what it confirms and loses or tears nothing
/// smaller than 512 bytes: after a loss of power at any point, recovery included, the next recovery puts
/// every file back, or finds the transaction's end, or refuses; it never makes a mixture. A commit that has
/// succeeded stays. Files that were not made by the transaction must have been on the disk before.
///
/// A disk, a controller or a virtual machine that confirms what it only holds in memory breaks this. On
/// Windows files are flushed by FlushFileBuffers() and renamed with write-through; whether the names in a
/// folder are on the disk is up to its file system (NTFS logs them in order), and not promised. Network
/// file systems promise what their server does.
///
/// A sync that fails fails the operation. Nothing can be saved, changed or committed after that: what the
/// system holds of the file may differ from the disk for good. Left is rollback(), whose own syncs decide.
enum class Durability
{
    None,    ///< the death of the process alone; nothing is waited for
    Durable, ///< saved bytes are on the disk before a file changes, files before the journal goes. A loss of
             ///< power while bytes are being saved may leave a journal that is refused
    Careful, ///< also each record before what leads to it: next to nothing is refused, at twice the syncs
};

/// The rollback device of the file system: its journal is a file, and the protected files are named
/// relative to it, so that a journal and its files can be moved together. Transaction does with it what most
/// callers want, recovery and names included; this class is for who needs the steps.
///
///     RollbackFile journal;
///     if (!journal.startNew(QFileInfo("project.rollback"))) {
///         return tell(journal.errorString()); // in use, or to be recovered first: journal.state()
///     }
///     SecuredFile map, index;
///     if (!map.open("project.map", journal) || !index.open("project.idx", journal)) { ... }
///     ... write through both ...
///     journal.commit();                       // or journal.rollback()
///
/// One owner. Opening a journal takes an exclusive lock, which ends with close() or with the process; a
/// second opener, in this process or in another, is told "in use" and changes nothing. The lock is
/// advisory: it holds among users of this class. A process forked while the journal is open shares it.
///
/// Secrets. A new journal may be read and written by its user alone, and a journal never grants more than
/// each file it protects. On Windows it has the rights of its folder.
///
/// What may be a journal: a regular file that is no link. Another name given to it (a hard link) is emptied
/// with it.
///
/// Threads: owner thread only.
class VELTOR_UTILS_EXPORT RollbackFile : public RollbackDevice
{
public:
    /// Where the files may lie that a journal names. Files of systems like proc and sys, the journal itself
    /// and what is no regular file are never accepted.
    enum class NameRule
    {
        Anywhere, ///< the base rule: wherever the names lead, links followed
        Beneath,  ///< in the journal's folder or beneath, no links on the way, on the same file system
    };

    /// Says whether a file may be accessed, by the path that it has itself, links resolved.
    using NamePredicate = std::function<bool(const QString& path)>;

    /// Holds no journal.
    RollbackFile();
    /// Closes; a journal stays where it is, free for the next owner.
    ~RollbackFile() override;

    /// Tells whether a journal holds somebody's unfinished transaction, to be rolled back (or discarded)
    /// before a new one may start there. False for a journal that does not exist, that protects no
    /// saved bytes, or whose creation was cut short; true for every other content, readable or not, and
    /// for what cannot be asked. Changes nothing and opens no protected file.
    [[nodiscard]] static bool needsRecovery(const QFileInfo& journal);

    /// Looks at a journal, also at one in use, without a line in the log.
    [[nodiscard]] static JournalView inspect(const QFileInfo& journal);

    /// Removes a journal; the files keep their new contents and are not opened. Refused for a journal in
    /// use and for what is no journal. @return as commit()
    static JournalRemoval discard(const QFileInfo& journal);

    /// Sets which files may be accessed, by addFile() as by recovery; for the journals opened from now on.
    void setNameRule(NameRule rule);
    /// Leaves it to the caller: a file is opened, then closed again when @p accepts says no.
    void setNameRule(NamePredicate accepts);

    /// Refuses journals that do not belong to the user who runs, or that others may write: one may have
    /// been planted. Off at first. For what recovers without being asked.
    void setOwnJournalsOnly(bool own);

    /// Asks for more than the death of the process to be survived; for the journals opened from now on.
    void setDurability(Durability durability);

    /// What becomes of the journal's file when a transaction has ended.
    enum class Spare
    {
        None, ///< it is deleted
        Held, ///< it is kept for this object's next transaction, and deleted with the object
        Left, ///< it is kept for whoever begins here next, and stays in the folder
    };

    /// Keeps the journal's file between transactions, under the hidden name ".NAME.spare" beside it: one of
    /// a hundred pages takes a quarter less time, one of a single page half. None at first. The end of a
    /// transaction is then that the file is renamed, instead of removed, and what it held, old contents of
    /// the files, stays in it until it is overwritten.
    ///
    /// A spare is no journal: nothing recovers from it. One that is a link, in use, not the user's own, or
    /// that others may write, is left alone; so is any other file of that name. A program that dies between
    /// transactions leaves its spare to the next one that keeps any. Above 4 MiB it is cut. None is kept on
    /// Windows, where the journal has other names (hard links), and with a durability.
    void setSpare(Spare spare);

    /// Opens a journal by its name.
    ///
    /// @param journal  its path; its directory is where relative names begin
    /// @param mode  exactly QIODevice::WriteOnly: a new journal, created if it is not there, otherwise cut
    ///     to an empty one. CAUTION: this forgets what it held; see startNew(). Any other mode:
    ///     an existing journal, never created; without write permission it can still be rolled back.
    ///
    /// Only regular files are journals; a link, a directory, a pipe or a device is refused and not waited
    /// for.
    /// @return as RollbackDevice::open(); false with state() InUse when another owner has it
    bool openByName(const QFileInfo& journal, QIODevice::OpenMode mode);

    /// Opens a new journal as openByName() does, but leaves one alone that needs recovery, under the same
    /// lock. @return false with state() InUse, NeedsRecovery or Unreadable; nothing is changed then
    bool startNew(const QFileInfo& journal);

    /// What the last openByName() or startNew() met: Nothing when it succeeded or found no journal.
    [[nodiscard]] JournalState state() const noexcept;
    /// The process that has the journal open when state() is InUse; 0 when the system does not tell.
    [[nodiscard]] qint64 ownerPid() const noexcept;

    /// A stored name as a path: a relative one lies in the journal's directory.
    [[nodiscard]] QString canonical(const QString& name) const;

    /// Opens an existing regular file for reading and writing, unbuffered, if the name rule accepts it.
    [[nodiscard]] IOPtr openFile(const QString& name) const override;

    /// Puts a file under protection. The stored name is relative to the journal when the file lies beneath
    /// the journal's directory, else the canonical path; all spellings of one path, and all hard links of one
    /// file, give one key. The journal itself is refused.
    Key addFile(const QFileInfo& file) override;

protected:
    /// Empties the journal, then deletes its file. From the first of the two on a finished transaction can
    /// never be rolled back later, whatever other names the journal has.
    void remove(const IOPtr& device) override;

    /// The journal's file, as given to openByName(). A subclass that makes the journal's device itself
    /// sets it before it calls open().
    [[nodiscard]] const QFileInfo& journalInfo() const noexcept;
    /// Sets journalInfo().
    void setJournalInfo(const QFileInfo& journal);

private:
    bool startOnSpare();
    bool discardStillborn();

    class Private;
    std::unique_ptr<Private> m_p;
};

} // namespace veltor::utils
