#pragma once

#include <veltor/Export.h>
#include <veltor/utils/TreeRemoval.h>

#include <QtCore/QString>

#include <memory>

namespace veltor::utils {

/// A folder for a program's temporary files, removed with all that is in it at the end of the object.
///
///     TempFileCleanup().run(); // what earlier runs left that were killed
///     TemporaryDir folder;
///     if (!folder.isValid()) {
///         ... folder.errorString() ...
///     }
///     QFile tiles(folder.filePath(QStringLiteral("tiles.bin")));
///
/// The folder is the own user's alone. Its name holds the program's and the process's mark, as in
/// `veltor-1f0c2a77-4711-0123456789abcdef.tmp`: program, machine, process, chance, for people to read.
/// Whether it is still in use is told by a lock instead, which ends with the process, however that ends: what
/// a killed process left is found and removed by TempFileCleanup. A hidden file in the folder,
/// `.veltor-temporary`, marks it as one of these; a folder without it is never cleaned up.
///
/// Removal first gives the folder another name, that no program uses, then deletes: nobody meets it
/// half-deleted. On Windows that must wait while anybody has a file in it open; the folder stays then, whole,
/// for a later cleanup.
///
/// After a fork the folder is the parent's: the child may use it, and neither removes nor keeps it.
///
/// On a network the lock may be unknown to other machines; they leave the folder alone because of the
/// machine's mark. What fails is written to the log too. One thread at a time.
class VELTOR_UTILS_EXPORT TemporaryDir
{
public:
    /// Makes a folder below the system's place for temporary files.
    TemporaryDir();
    /// Makes a folder below @p base, which must exist, and in which no stranger may replace others' files.
    /// @param base     empty for the system's place for temporary files
    /// @param program  what the name begins with, made a safe one; empty for
    ///                 `QCoreApplication::applicationName()`
    explicit TemporaryDir(const QString& base, const QString& program = {});
    /// As remove().
    ~TemporaryDir();

    /// @p other becomes invalid.
    TemporaryDir(TemporaryDir&& other) noexcept;
    /// Removes this one's folder first; @p other becomes invalid.
    TemporaryDir& operator=(TemporaryDir&& other) noexcept;
    TemporaryDir(const TemporaryDir&) = delete;
    TemporaryDir& operator=(const TemporaryDir&) = delete;

    /// The folder was made, and was neither removed nor kept since.
    [[nodiscard]] bool isValid() const;
    /// Why there is none, for the user; empty when it was made.
    [[nodiscard]] QString errorString() const;
    /// The folder's absolute path; empty when there is none.
    [[nodiscard]] QString path() const;
    /// The path of something in it; empty when there is none, and when @p name is absolute.
    [[nodiscard]] QString filePath(const QString& name) const;

    /// Removes the folder now.
    /// @return what was done; incomplete when something stays, which a later cleanup tries again. Nothing
    ///         when there is no folder
    RemovalReport remove(const RemovalProgress& progress = {});

    /// Makes the folder a usual one of the caller's choice: its mark and lock go, its contents stay.
    /// @param path  must not exist; of the same file system
    /// @return false, with the folder as it was and the reason in errorString(), when it cannot be renamed
    bool keepAs(const QString& path);

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};

} // namespace veltor::utils
