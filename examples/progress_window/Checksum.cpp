#include "Checksum.h"

#include <veltor/concurrent/FunctionTask.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>

using veltor::concurrent::FunctionTask;
using veltor::concurrent::GroupTask;
using veltor::concurrent::NestedScope;

namespace {

constexpr qint64 blockBytes = 0x10000;

/// In the user's language, for what users meet; the system's own words otherwise.
QString reasonOf(const QFile& file)
{
    if (!file.exists()) {
        return QCoreApplication::translate("Checksum", "Такого файла нет.");
    }
    if (file.error() == QFileDevice::PermissionsError || !QFileInfo(file).isReadable()) {
        return QCoreApplication::translate("Checksum", "Нет права читать этот файл.");
    }
    return file.errorString();
}

/// Knows nothing of tasks: it reports into the scope, and stops when the scope says so.
QByteArray checksum(const QString& path, NestedScope& scope)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw veltor::err::CouldNotInitializeObject(path, reasonOf(file));
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    scope.setRange(0, double(std::max<qint64>(file.size(), 1)));
    while (!file.atEnd() && !scope.isFinished()) {
        const QByteArray block = file.read(blockBytes);
        if (block.isEmpty()) {
            throw veltor::err::CouldNotInitializeObject(path, reasonOf(file));
        }
        hash.addData(block);
        scope.addProgress(double(block.size()));
    }
    return hash.result().toHex();
}

} // namespace

GroupTask* makeChecksums(const QStringList& paths,
                         const std::function<void(const QString&, const QByteArray&)>& ready)
{
    auto* group = new GroupTask;
    group->setPolicy(GroupTask::Policy::CollectErrors);
    for (const QString& path : paths) {
        auto* part = new FunctionTask([path, ready](NestedScope& scope) {
            const QByteArray sum = checksum(path, scope);
            if (!scope.isFinished()) { // else it is the sum of a part of the file
                ready(path, sum);
            }
        });
        const QFileInfo file(path);
        group->add(part, double(file.size()), file.fileName());
    }
    return group;
}
