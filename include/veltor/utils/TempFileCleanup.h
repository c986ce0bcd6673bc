#pragma once

#include <veltor/Export.h>
#include <veltor/utils/TreeRemoval.h>

#include <QtCore/QString>

#include <vector>

namespace veltor::utils {

/// What a cleanup found. A plain value.
struct TempCleanupReport
{
    qint64 removed = 0; ///< folders that are gone, of this kind
    qint64 inUse = 0;   ///< folders whose process lives
    qint64 waiting = 0; ///< folders of ended processes that are still used by others (Windows): next time
    /// Names that look like such folders and are not to be trusted: another user's, links, files, folders
    /// without the mark. They stay. The first 100 of them.
    std::vector<RemovalFailure> refused;
    RemovalReport contents; ///< of all folders together, what was in them included
    QString error;          ///< why the place could not be looked through, for the user; empty when it was
};

/// Removes the temporary folders that killed processes left; see TemporaryDir. To be run when a program
/// starts, in a thread of its own where much may have been left.
///
/// A folder is removed only when its lock is free, its owner is the own user, it is a folder and no link, it
/// has the mark inside, and its name holds this machine's mark. It is locked and moved aside first. Several
/// cleanups may run at once; each folder is removed by one of them. One that was stopped or killed is
/// continued by the next. Reentrant; an object is for one thread at a time.
class VELTOR_UTILS_EXPORT TempFileCleanup
{
public:
    /// Folders of this program in the system's place for temporary files.
    TempFileCleanup() = default;
    /// Folders of @p program below @p base, with the meaning that TemporaryDir gives to them.
    explicit TempFileCleanup(const QString& base, const QString& program = {});

    /// Of every program that makes such folders, not of one.
    void setAllPrograms(bool all);
    /// See RemovalProgress; the report is that of the contents.
    void setProgress(RemovalProgress progress);

    /// Looks for such folders and removes them. What could not be removed stays under its new name, and
    /// is tried again by the next cleanup.
    TempCleanupReport run();

private:
    QString m_base;
    QString m_program;
    bool m_allPrograms = false;
    RemovalProgress m_progress;
};

} // namespace veltor::utils
