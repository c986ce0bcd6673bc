#pragma once

#include <veltor/Export.h>
#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <QtCore/QString>

#include <functional>
#include <memory>
#include <vector>

namespace veltor::utils {

/// Several files are changed, made, removed and renamed as one unit: all of it happens, or nothing.
///
///     Transaction change = Transaction::begin("project.rollback");
///     if (!change.isActive()) {
///         return tell(change.beginning().reason); // in use, damaged, ...
///     }
///     const auto map = change.open("project.map");
///     const auto index = change.create("project.idx") ? change.open("project.idx") : nullptr;
///     if (map && index && write(*map) && write(*index)) {
///         const Transaction::Result done = change.commit();
///         return done || tell(done.reason);
///     }
///     // Not committed: everything is put back where the object ends.
///
/// begin() takes the journal for itself, first puts back what a program that died has left undone, and then
/// starts. Until the commit nothing of the new names is seen by others: files keep their names and places, a
/// new one lies hidden beside the journal. A commit is the end of the journal; after it the names are changed
/// in one go. A program that dies before leaves a journal, and everything is undone; one that dies after it
/// leaves the names, and they are finished: both by the next begin(), or by recover().
///
/// Beside the journal "NAME" a folder ".NAME.transaction" lies as long as names are being changed. It is this
/// class's own: nothing in it is to be touched. The journal is that of RollbackFile, which can read it and
/// roll it back; the next begin() then cleans up.
///
/// Promise and limits are those of RollbackDevice: the death of the process is survived at any point, that of
/// the operating system too if Options::durability asks for it. Other programs that write the same files without a transaction are not held
/// off. Failures are told by the results, with the file and the system's words, and by a line in the log.
///
/// Names are paths as QFile takes them, compared exactly. Files that are made, removed or renamed are regular
/// files in the journal's folder or beneath it, on its file system; folders must be there.
///
/// Threads: owner thread only, with all its files; another thread may only make the progress cancel.
class VELTOR_UTILS_EXPORT Transaction
{
public:
    /// How something ended, in a word.
    enum class Status
    {
        Done,         ///< as it was asked for
        InUse,        ///< a living program has the journal
        Damaged,      ///< the journal or the manifest is not whole: somebody must decide; nothing was changed
        Foreign,      ///< the journal or the manifest belongs to another user and is not trusted
        NamesPending, ///< committed, or put back, for good, but names or hidden files are left: see begin()
        Canceled,     ///< by the progress; what is left undone stays recoverable
        Failed,       ///< anything else
        Unsynced,     ///< committed, or put back, as all programs see it, but the disk has not confirmed it: a
                      ///< loss of power now may undo the one or the other, whole
    };

    /// How something ended.
    struct Result
    {
        Status status = Status::Done; ///< in a word
        QString reason;               ///< for a person: the file and the system's words; empty when done
        qint64 ownerPid = 0;          ///< of the program that has the journal, with InUse; 0 when not known

        /// Whether it was done.
        explicit operator bool() const noexcept { return status == Status::Done; }
    };

    /// Watches a rollback in blocks; false ends it after the present one.
    using Progress = std::function<bool(unsigned long long restored, unsigned long long total)>;

    /// What to do with a journal that is damaged beyond an unfinished write.
    enum class DamagedJournal
    {
        Refuse,  ///< leave it, and its files, as they are
        Salvage, ///< restore what is whole; the journal stays as NAME.damaged, or NAME.damaged-2, ...
    };

    /// What a caller may choose.
    struct Options
    {
        /// Where the files may lie whose contents are changed or restored.
        RollbackFile::NameRule nameRule = RollbackFile::NameRule::Beneath;
        /// Accept journals and manifests of other users. One may have been planted.
        bool trustForeign = false;
        /// Whether a loss of power is survived too; for a recovery, how the journal was written.
        Durability durability = Durability::None;
        DamagedJournal damaged = DamagedJournal::Refuse; ///< what becomes of such a journal
        Progress progress; ///< of every rollback, that of the destructor included
    };

    /// What was found at the beginning, and what became of it.
    struct Recovery
    {
        Result result;                   ///< how the recovery ended
        bool foundJournal = false;       ///< a dead program's journal, with something to put back
        unsigned long long restored = 0; ///< files put back
        std::vector<RollbackReport::Failure> failures; ///< files not put back: the journal keeps them
        QString keptAs;                                ///< the damaged journal's new name
        bool finishedNames = false;                    ///< a committed transaction's names were finished
    };

    /// A change of a name that waits for the commit.
    struct NameChange
    {
        /// What becomes of the name.
        enum class Kind
        {
            Create, ///< a new file gets it
            Remove, ///< its file goes
            Rename, ///< its file gets another
        };
        Kind kind;      ///< what becomes of it
        QString name;   ///< relative to the journal's folder
        QString target; ///< of a Rename
    };

    /// A moment to come back to.
    class Savepoint
    {
        friend class Transaction;
        RollbackDevice::Savepoint m_files;
        unsigned long long m_number = 0; // 0: no moment
    };

    /// Recovers what @p journal holds of a program that died, then starts.
    /// @return an active transaction, or one that says in beginning() why it is not, with every file left
    ///     as it was found or, as far as recovery() tells, restored
    /// @{
    [[nodiscard]] static Transaction begin(const QString& journal);
    [[nodiscard]] static Transaction begin(const QString& journal, const Options& options);
    /// @}

    /// Recovers alone. Done also when there is nothing to recover.
    static Recovery recover(const QString& journal, const Options& options);

    /// The other way to settle a dead program's journal: keeps the new contents, and changes the names, as
    /// far as it had come. Opens none of the files.
    static Result discard(const QString& journal, const Options& options);

    /// The changes of names that a journal's transaction, alive or dead, has noted so far; those that
    /// contradict or cannot be read are left out.
    [[nodiscard]] static std::vector<NameChange> nameChanges(const QString& journal);

    /// Rolls back, unless committed, and closes the files that were opened here.
    ~Transaction();
    /// Takes over; what is left behind is not active.
    Transaction(Transaction&& other) noexcept;
    /// Takes over; rolls back what stood here, unless committed.
    Transaction& operator=(Transaction&& other) noexcept;

    /// True between begin() and the commit or rollback that ended it.
    [[nodiscard]] bool isActive() const noexcept;
    /// How begin() ended.
    [[nodiscard]] const Result& beginning() const noexcept;
    /// What begin() found and did.
    [[nodiscard]] const Recovery& recovery() const noexcept;
    /// The last failure's reason.
    [[nodiscard]] QString errorString() const;

    /// Opens a file, under the name that it has by now in this transaction, for reading and writing. It is
    /// closed with the transaction at the latest. Several of one file share its position, which the first
    /// begins at 0.
    /// @return null, with errorString(), when there is none, or it cannot be protected
    [[nodiscard]] std::unique_ptr<SecuredFile> open(const QString& name);

    /// Whether the name means a regular file in this transaction.
    [[nodiscard]] bool exists(const QString& name) const;

    /// Makes an empty file; the name must be free.
    Result create(const QString& name);
    /// Removes a file: at the commit it is moved aside, then deleted.
    Result remove(const QString& name);
    /// Renames a file; one that has the name @p to is replaced.
    Result rename(const QString& from, const QString& to);

    /// The present moment; good until the end or a rollbackTo() an earlier one.
    [[nodiscard]] Savepoint savepoint();
    /// Puts contents, lengths and names back to that moment. The transaction goes on, and is still undone
    /// to its beginning by rollback() and recovery. Files opened since under names that are no more are
    /// closed. After a failure only rollback() is left; a moment that is gone is no such failure.
    Result rollbackTo(const Savepoint& savepoint);

    /// Makes everything final and ends the transaction; its files are closed.
    /// @return NamesPending, Unsynced: final all the same; the next begin() goes on with the names. Any other
    ///     failure: nothing is final; while isActive() is true it can be tried again, or rolled back; after a
    ///     failed sync only rolled back
    Result commit();

    /// Puts everything back and ends the transaction; its files are closed. After a failure, which names
    /// the files in recovery(), it can be tried again while isActive() is true; else the next begin() tries.
    Result rollback();

private:
    class Private;
    explicit Transaction(std::unique_ptr<Private> p) noexcept;

    std::unique_ptr<Private> m_p;
};

} // namespace veltor::utils
