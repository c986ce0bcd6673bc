#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

class QDir;

namespace veltor::utils {

/// @defgroup paths Paths
/// Where a file lies, told from somewhere else. All functions are reentrant; those that look at files say so.
/// @{

/// How typedFilePath() tells a path.
enum class PathType
{
    Relative,             ///< to the folder
    Canonical,            ///< absolute, without links
    RelativeUnlessOutside ///< relative for what lies below the folder, else canonical
};

/// The path of a file as it is to be stored: QDir::relativeFilePath(), QFileInfo::canonicalFilePath(), or the
/// first unless it contains "..", in which case the second.
/// @param folder  that the file is seen from
/// @param path  best absolute: a relative one is relative to @p folder for the first, to the process's folder
///              for the second. The canonical path is asked of the system, and is empty for a file that
///              does not
///              exist
/// @param type  a value of none of these counts as PathType::RelativeUnlessOutside. A name with two dots in
///              it, like `a..b`, is told canonically by that one
[[nodiscard]] VELTOR_UTILS_EXPORT QString typedFilePath(const QDir& folder, const QString& path,
                                                        PathType type);

/// The message for a file that cannot be opened.
/// @param text   translated, with %0 for the path and %1 for the reason
/// @param path   as it is to be shown; a placeholder in it is left alone
/// @param error  what the device says; put behind a colon unless it is empty
[[nodiscard]] VELTOR_UTILS_EXPORT QString pathOpenError(const QString& text, const QString& path,
                                                        const QString& error);

/// The absolute path without links and dots, of something that need not exist: what there is of the way to it
/// is asked of the system, the rest is taken as it stands. A link that leads to nothing is followed, one that
/// leads to itself is not.
[[nodiscard]] VELTOR_UTILS_EXPORT QString resolvedPath(const QString& path);

/// The way from a folder to a file, which the system, starting in that folder, goes to the same file. Both
/// may be behind links: ".." leads out of where a link leads to, not of where it lies, so that the way is
/// found between resolved paths; a link at the end of @p path itself stays, as its name does. Neither needs
/// to exist.
/// @return "." for the folder itself; nothing when there is no such way, between drives
[[nodiscard]] VELTOR_UTILS_EXPORT std::optional<QString> relativePath(const QString& folder,
                                                                      const QString& path);

/// The deepest folder in or below which all paths lie, resolved as by resolvedPath(); of a single one itself.
/// @return empty when there is none: of no paths, or over drives
[[nodiscard]] VELTOR_UTILS_EXPORT QString commonPath(const QStringList& paths);

/// @}

} // namespace veltor::utils
