#include "ChecksumTask.h"

#include <veltor/concurrent/SignalingTaskNestedScope.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

using veltor::concurrent::NestedScope;

namespace {

constexpr qint64 blockBytes = 0x10000;

/// Knows nothing of tasks: it reports into the scope, and stops when the scope says so.
QByteArray checksum(const QString& path, NestedScope& scope)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw veltor::err::CouldNotInitializeObject(path, file.errorString());
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    scope.setRange(0, double(std::max<qint64>(file.size(), 1)));
    while (!file.atEnd() && !scope.isFinished()) {
        const QByteArray block = file.read(blockBytes);
        hash.addData(block);
        scope.addProgress(block.size());
    }
    return hash.result().toHex();
}

} // namespace

/// Lets the work pause wherever it asks whether it may go on.
class ChecksumTask::Scope : public veltor::concurrent::SignalingTaskNestedScope
{
public:
    explicit Scope(ChecksumTask& task)
        : SignalingTaskNestedScope(task)
        , m_task(task)
    {}
    [[nodiscard]] bool canWork() const override { return m_task.waitWhilePaused(); }

private:
    ChecksumTask& m_task;
};

ChecksumTask::ChecksumTask(QStringList paths)
    : m_paths(std::move(paths))
{}

void ChecksumTask::onStart()
{
    Scope scope(*this);
    scope.setRange(0, m_paths.size());
    for (const QString& path : m_paths) {
        scope.setOperation(QFileInfo(path).fileName());
        scope.setInnerRange(1, 0, 1);
        const QByteArray sum = checksum(path, scope);
        scope.removeInnerRange();
        if (scope.isFinished()) {
            enterCancelledState();
            return;
        }
        Q_EMIT checksumReady(path, sum);
    }
}
