#pragma once

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QFileInfo>

namespace veltor::utils {

/// The rollback device of the file system: its journal is a file, and the protected files are named
/// relative to it, so that a journal and its files can be moved together.
///
///     RollbackFile journal;
///     journal.openByName(QFileInfo("project.rollback"), QIODevice::WriteOnly);
///     SecuredFile map, index;
///     map.open("project.map", journal);
///     index.open("project.idx", journal);
///     ... write through both ...
///     journal.commit();                       // or journal.rollback()
///
/// Threads: owner thread only.
class VELTOR_UTILS_EXPORT RollbackFile : public RollbackDevice
{
public:
    /// Holds no journal.
    RollbackFile();

    /// Tells whether a journal is somebody's unfinished transaction, to be rolled back (or discarded)
    /// before a new one may start there. False for a journal that does not exist, that protects no
    /// saved bytes, or whose creation was cut short; true for every other content, readable or not.
    /// Changes nothing and opens no protected file.
    [[nodiscard]] static bool needsRecovery(const QFileInfo& journal);

    /// Opens a journal by its name.
    ///
    /// @param journal  its path; its directory is where relative names begin
    /// @param mode  exactly QIODevice::WriteOnly: a new journal, created if it is not there, otherwise cut
    ///     to an empty one. CAUTION: this forgets what it held; see needsRecovery(). Any other mode:
    ///     an existing journal, never created; without write permission it can still be rolled back.
    ///
    /// Only regular files are journals; a directory, a pipe or a device is refused and not waited for.
    /// @return as RollbackDevice::open()
    bool openByName(const QFileInfo& journal, QIODevice::OpenMode mode);

    /// A stored name as a path: a relative one lies in the journal's directory.
    [[nodiscard]] QString canonical(const QString& name) const;

    /// Opens an existing regular file for reading and writing, unbuffered.
    [[nodiscard]] IOPtr openFile(const QString& name) const override;

    /// Puts a file under protection. The stored name is relative to the journal when the file lies beneath
    /// the journal's directory, else the canonical path; all spellings of one path, and all hard links of one
    /// file, give one key. The journal itself is refused.
    Key addFile(const QFileInfo& file) override;

protected:
    /// Deletes the journal file. When that is not possible the journal is emptied instead, so that a
    /// finished transaction can never be rolled back later.
    void remove(const IOPtr& device) override;

    /// The journal's file, as given to openByName(). A subclass that makes the journal's device itself
    /// sets it before it calls open().
    [[nodiscard]] const QFileInfo& journalInfo() const noexcept { return m_journalInfo; }
    /// Sets journalInfo().
    void setJournalInfo(const QFileInfo& journal);

private:
    [[nodiscard]] QString storedName(const QString& canonicalPath) const;

    QFileInfo m_journalInfo;
    QString m_directory;   // of the journal, canonical; empty until the first file is added
    QString m_journalPath; // canonical, likewise
};

} // namespace veltor::utils
