#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

#include <functional>
#include <vector>

namespace veltor::utils {

/// A name that could not be removed. A plain value.
struct RemovalFailure
{
    QString path;   ///< of the file or folder; bytes that are no text stand in it as \\xNN
    QString reason; ///< why, for the user
};

/// What a removal did, or has done so far. A plain value.
struct RemovalReport
{
    qint64 removed = 0; ///< files, links and folders that are gone by it
    qint64 failed = 0;  ///< names that stay; folders that only hold such do not count
    /// The first 100 of these; more are only counted.
    std::vector<RemovalFailure> failures;
    bool canceled = false; ///< the progress function wanted no more

    /// Nothing stays.
    [[nodiscard]] bool isComplete() const { return failed == 0 && !canceled; }
};

/// Called during a removal, every hundred names or so, in the thread of the removal.
/// @return false to stop; what is gone by then is gone. An exception stops it as well, and passes.
using RemovalProgress = std::function<bool(const RemovalReport& soFar)>;

/// Removes a file, or a folder with all that is in it.
///
/// No link is followed: one that lies in the tree, or is @p path itself, is removed, and what it leads to
/// stays. Folders on which another file system, or a folder of elsewhere, is mounted are left and reported.
/// Others may change the tree meanwhile: what they move out of it stays, what they add is removed too, unless
/// they never stop adding. Folders of the own user that forbid it are made writable first, read-only marks
/// (Windows) are taken off. Names need not be text. Memory and open descriptors are bounded, whatever the
/// tree's size and depth.
///
/// @param path      that nothing has this name is no failure
/// @param progress  may be empty
/// @return what was done; reasons are in the user's language. Reentrant.
VELTOR_UTILS_EXPORT RemovalReport removeTree(const QString& path, const RemovalProgress& progress = {});

} // namespace veltor::utils
