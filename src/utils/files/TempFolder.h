#pragma once

#include "platform/FolderLock.h"

#include <veltor/utils/TreeRemoval.h>

#include <QtCore/QString>

#include <optional>

namespace veltor::utils {

/// The parts of a temporary folder's name.
struct TempName
{
    QString program;
    QString machine;
    bool aside = false; ///< moved there to be deleted

    /// A name of this machine, of this process and of chance.
    [[nodiscard]] static QString make(const QString& program, bool aside);
    /// Nothing when it is not such a name.
    [[nodiscard]] static std::optional<TempName> read(const QString& name);
    [[nodiscard]] static QString machineMark();
    /// The mark of a program, that of the running one when it is empty.
    [[nodiscard]] static QString programMark(const QString& program);
};

/// The file that tells such folders from others, which somebody may have given such a name.
constexpr const char* TempMark = ".veltor-temporary";
constexpr const char* TempMarkText = "A program's temporary files: deleted when the program has ended.\n";

/// Opens the place for temporary files; why not, for the user, else empty.
QString openTempBase(const QString& base, platform::Directory& directory);

/// Moves a locked folder aside and deletes it. An error when it cannot be moved, and nothing is changed.
[[nodiscard]] std::error_code removeAside(platform::Directory& base, platform::FolderLock& lock,
                                          const QString& basePath, const QString& name, RemovalReport& report,
                                          const RemovalProgress& progress);

/// A line of the log's, from the place that readers of it know.
void logTemp(const QString& text);

} // namespace veltor::utils
