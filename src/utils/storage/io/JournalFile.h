#pragma once

#include "utils/storage/io/StorageFile.h"

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QString>

#include <memory>

namespace veltor::utils::io {

/// How a journal is to be opened for work.
struct JournalOpening
{
    bool create = false;  ///< where there is none
    bool write = true;    ///< else it may be opened for reading alone
    bool ownOnly = false; ///< only if it belongs to the user who runs
};

/// A journal opened for work and locked, or why not.
struct OpenedJournal
{
    enum class Answer
    {
        Opened,
        Absent,
        InUse,
        Refused, ///< it cannot be opened, is a link or no file, or somebody else's
    };

    std::unique_ptr<StorageFile> file; ///< null unless opened
    Answer answer = Answer::Refused;
    bool created = false;
    bool isNew = false;  ///< not opened, since somebody removed it at this moment
    qint64 ownerPid = 0; ///< of the program that has it; 0 when unknown
    QString reason;      ///< in words; empty when opened
};

/// Opens the journal at @p path and takes its lock, such that the name still leads to it when it has the
/// lock.
[[nodiscard]] OpenedJournal openJournal(const QString& path, JournalOpening opening);

/// Removes a journal's name if it is the only one of its open device's file. Where there are others, or it
/// cannot be removed, the file is emptied through the device, which gets closed where the system asks for
/// that; then its name is removed, or it is left with the bytes @p empty.
/// @param sync  what lasts of its file is to be on the disk; the name is the caller's business
JournalRemoval removeJournal(const QString& path, QIODevice* device, const QByteArray& empty, bool sync);

/// Takes from others what they may do with the journal and not with a file that it protects. False when they
/// could still read the file's bytes in the journal.
[[nodiscard]] bool hideFromOthers(QIODevice& journal, QIODevice& file);

} // namespace veltor::utils::io
