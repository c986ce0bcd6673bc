#pragma once

#include <veltor/concurrent/GroupTask.h>

#include <QtCore/QStringList>

#include <functional>

/// A group that computes the SHA-256 sums of files, a part for each, which may be paused and cancelled after
/// every block. Files that cannot be read do not keep the others from their sums.
/// @param ready  called once for each file, in a worker's thread
veltor::concurrent::GroupTask*
makeChecksums(const QStringList& paths,
              const std::function<void(const QString& path, const QByteArray& sha256Hex)>& ready);
