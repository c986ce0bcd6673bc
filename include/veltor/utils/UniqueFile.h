#pragma once

#include <veltor/Export.h>

#include <QtCore/QFile>
#include <QtCore/QString>

#include <memory>

namespace veltor::utils {

/// @defgroup uniquefiles Unique names
/// Files and folders under names that nobody else has. A name that is taken gets a number, as in `map
/// (2).tar.gz`, before its suffix; one that becomes too long is cut. Whether a name is free is not looked up
/// but tried: of any number of processes that want the same name at the same time, each gets one of its own,
/// and nothing that exists is touched, whatever the file system takes for the same name. All functions are
/// reentrant.
/// @{

/// Makes a new file and opens it for reading and writing.
/// @param path   the wanted one; its folder must exist. The name must be one that the system takes, see
///               safeFileName()
/// @param error  receives why not, for the user
/// @return the file, whose fileName() is the path that it got; null on failure
[[nodiscard]] VELTOR_UTILS_EXPORT std::unique_ptr<QFile> createUniqueFile(const QString& path,
                                                                          QString* error = nullptr);

/// Makes a new folder.
/// @param path   the wanted one; a slash at its end does not count
/// @param error  receives why not, for the user
/// @return its path; empty on failure. Else as createUniqueFile()
[[nodiscard]] VELTOR_UTILS_EXPORT QString createUniqueFolder(const QString& path, QString* error = nullptr);

/// Gives a finished file or folder its name: who finds it there finds all of it. Written in a TemporaryDir of
/// the same file system, a file appears as a whole or not at all.
/// @param source  what to move; a link is moved itself
/// @param path    the wanted one
/// @param error   receives why not, for the user
/// @return the path that it got; empty on failure, with @p source where it was. Else as createUniqueFile()
[[nodiscard]] VELTOR_UTILS_EXPORT QString moveToUniqueName(const QString& source, const QString& path,
                                                           QString* error = nullptr);

/// @}

} // namespace veltor::utils
