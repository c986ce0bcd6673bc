// Names that nobody else has: tried by calls that fail for what exists.
#include <veltor/utils/UniqueFile.h>

#include "base/QtDifferences.h"
#include "platform/FolderLock.h"
#include "utils/files/NativeText.h"

#include <veltor/utils/FileNames.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>

#include <functional>

namespace veltor::utils {
namespace {

constexpr int NumbersInTurn = 100;
constexpr int LongestAttempts = 1000;

/// The wanted path with a number before the suffix.
QString numbered(const QString& path, quint32 number)
{
    const QFileInfo info(path);
    const QString suffix = dottedFileSuffix(info.fileName());
    const QString mark = QStringLiteral(" (%1)").arg(number) + suffix;
    SafeNameRules rules;
    rules.keepSuffix = false;
    rules.longestBytes -= static_cast<int>(mark.toUtf8().size());
    const QString stem = withoutFileSuffix(info.fileName());
    // A name that fits stays as the caller wants it, even if another system would not take it.
    const QString shortened = stem.toUtf8().size() > rules.longestBytes ? safeFileName(stem, rules) : stem;
    const base::Length folder = path.size() - info.fileName().size();
    return path.left(folder) + shortened + mark;
}

/// A folder's path, behind whose last slash a number would be a name within it.
QString withoutLastSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    return path;
}

enum class Attempt
{
    Done,
    Taken,
    Failed,
};

/// The first path at which @p attempt succeeds; empty when it fails for another reason than the name.
QString firstFree(const QString& path, const std::function<Attempt(const QString&, QString&)>& attempt,
                  QString* error)
{
    QString reason;
    for (int i = 1; i <= LongestAttempts; ++i) {
        // Beside many of the kind the next free number would be far: then any will do.
        const quint32 number =
            i <= NumbersInTurn ? static_cast<quint32>(i) : QRandomGenerator::global()->bounded(1000000u);
        QString name = i == 1 ? path : numbered(path, number);
        const Attempt result = attempt(name, reason);
        if (result == Attempt::Done) {
            return name;
        }
        if (result == Attempt::Failed) {
            break;
        }
    }
    if (error) {
        *error = QCoreApplication::translate("UniqueFile", "Не удалось создать '%1': %2").arg(path, reason);
    }
    return {};
}

Attempt attemptOf(const std::error_code& error, QString& reason)
{
    reason = reasonText(error);
    return !error ? Attempt::Done : platform::isTaken(error) ? Attempt::Taken : Attempt::Failed;
}

} // namespace

std::unique_ptr<QFile> createUniqueFile(const QString& path, QString* error)
{
    std::unique_ptr<QFile> file;
    const auto create = [&file](const QString& name, QString& reason) {
        file = std::make_unique<QFile>(name);
        // QFile does not say that the name was taken; one that went meanwhile may be had now.
        for (int attempt = 0; attempt < 3; ++attempt) {
            if (file->open(QIODevice::ReadWrite | QIODevice::NewOnly)) {
                return Attempt::Done;
            }
            reason = file->errorString();
            const QFileInfo there(name);
            if (there.exists() || there.isSymLink()) {
                return Attempt::Taken;
            }
        }
        return Attempt::Failed;
    };
    return firstFree(path, create, error).isEmpty() ? nullptr : std::move(file);
}

QString createUniqueFolder(const QString& path, QString* error)
{
    const auto make = [](const QString& name, QString& reason) {
        return attemptOf(platform::makeFolder(toNative(name)), reason);
    };
    return firstFree(withoutLastSlash(path), make, error);
}

QString moveToUniqueName(const QString& source, const QString& path, QString* error)
{
    const platform::NativeString from = toNative(source);
    const auto move = [&from](const QString& name, QString& reason) {
        return attemptOf(platform::renameToNew(from, toNative(name)), reason);
    };
    return firstFree(QFileInfo(source).isDir() ? withoutLastSlash(path) : path, move, error);
}

} // namespace veltor::utils
