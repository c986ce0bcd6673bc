#pragma once

#include <veltor/concurrent/Task.h>

#include <QtCore/QStringList>

/// Computes the SHA-256 sum of files; can be paused and cancelled after every block.
class ChecksumTask : public veltor::concurrent::Task
{
    Q_OBJECT

public:
    explicit ChecksumTask(QStringList paths);

    [[nodiscard]] bool canCancel() const override { return true; }
    [[nodiscard]] bool canPause() const override { return true; }

Q_SIGNALS:
    /// Emitted once per file, in the task's thread.
    void checksumReady(const QString& path, const QByteArray& sha256Hex);

protected:
    void onStart() override;

private:
    class Scope;

    const QStringList m_paths;
};
