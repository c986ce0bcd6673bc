// Opening a journal as its one owner.

#include "utils/storage/io/JournalFile.h"

#include "utils/files/LockHolders.h"
#include "utils/storage/Fault.h"
#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/DeviceIo.h"

#include <QtCore/QThread>

namespace veltor::utils::io {
namespace {

using Answer = OpenedJournal::Answer;

OpenedJournal refused(Answer answer, const QString& reason)
{
    OpenedJournal opened;
    opened.answer = answer;
    opened.reason = reason;
    return opened;
}

/// Whoever merely looks at a journal has its lock for an instant, and no name in the system's list.
platform::LockAnswer lock(StorageFile& file)
{
    constexpr int patience = 20;
    platform::LockAnswer answer = file.lock();
    for (int again = 0; again < patience && answer.state == platform::LockState::Busy && answer.owner == 0;
         ++again) {
        QThread::msleep(1);
        answer = file.lock();
    }
    return answer;
}

std::unique_ptr<StorageFile> makeFile(const QString& path, platform::FileOpening opening,
                                      platform::OpenedFile& opened)
{
    opening.refuseLink = true;
    opened = platform::openFile(nativePath(path), opening);
    return opened.fd >= 0 ? std::make_unique<StorageFile>(path, opened, opening.write) : nullptr;
}

/// Opens without a lock; the answer is Opened, Absent or Refused.
OpenedJournal openUnlocked(const QString& path, const JournalOpening& opening)
{
    using platform::OpenFault;
    OpenedJournal journal;
    platform::OpenedFile opened;
    if (opening.create) { // mostly there is none
        journal.file = makeFile(path, {true, true, true}, opened);
        journal.created = journal.file != nullptr;
    }
    if (!opening.create || opened.fault == OpenFault::Exists) {
        journal.file = makeFile(path, {opening.write || opening.create, false, true}, opened);
        // Somebody removed it in between.
        journal.isNew = opening.create && opened.fault == OpenFault::Absent;
    }
    if (opened.fault == OpenFault::System && opening.write && !opening.create) {
        const platform::OpenedFile first = opened;
        journal.file = makeFile(path, {false, false, true}, opened);
        opened = journal.file ? opened : first;
    }
    journal.answer = journal.file                        ? Answer::Opened
                     : opened.fault == OpenFault::Absent ? Answer::Absent
                                                         : Answer::Refused;
    if (!journal.file) {
        journal.reason = Fault{message::openFailed(path), reasonOf(opened)}.whole();
    }
    return journal;
}

/// What the system says of a journal's file now; after a fork the descriptor leads to nothing.
bool askStatus(QIODevice& device, platform::FileStatus& status)
{
    const int descriptor = nativeDescriptor(device);
    return descriptor >= 0 && platform::fileIo().status(descriptor, status);
}

/// Removes the journal's name if it is the file's only one: a single step after which there is no journal,
/// whatever it holds. False when there may still be one, under this name or another.
bool removeOnlyName(const platform::NativePath& path, QIODevice& device)
{
    platform::FileStatus status;
    return platform::RemovesOpenFiles && askStatus(device, status) && status.names == 1 &&
           platform::names(path, status.identity) && platform::fileIo().removeName(path) == 0 &&
           askStatus(device, status) && status.names == 0; // nobody gave it a second one meanwhile
}

} // namespace

OpenedJournal openJournal(const QString& path, JournalOpening opening)
{
    constexpr int attempts = 100; // at names that others keep changing
    for (int attempt = 0; attempt < attempts; ++attempt) {
        OpenedJournal journal = openUnlocked(path, opening);
        if (journal.isNew) {
            continue;
        }
        if (!journal.file) {
            return journal;
        }
        const platform::LockAnswer answer = lock(*journal.file);
        if (answer.state == platform::LockState::Failed) {
            return refused(Answer::Refused,
                           Fault{message::journalNotLocked(path), qt_error_string()}.whole());
        }
        if (answer.state == platform::LockState::Busy) {
            OpenedJournal busy = refused(
                Answer::InUse,
                message::journalInUse(path, lockHolderNames(journal.file->descriptor()), answer.owner));
            busy.ownerPid = answer.owner;
            return busy;
        }
        // Its owner may have removed the name before the lock came to us.
        if (!platform::names(nativePath(path), journal.file->status().identity)) {
            continue;
        }
        if (opening.ownOnly && !journal.created && !platform::belongsToUser(journal.file->descriptor())) {
            return refused(Answer::Refused, message::journalIsForeign(path));
        }
        return journal;
    }
    return refused(Answer::Refused, message::fileReplaced(path));
}

JournalRemoval removeJournal(const QString& path, QIODevice* device, const QByteArray& empty, bool sync)
{
    const platform::NativePath native = nativePath(path);
    if (device && device->isOpen() && removeOnlyName(native, *device)) {
        return {true, false, {}};
    }
    bool emptied = false;
    bool ours = true;
    bool otherNames = false;
    bool synced = true;
    QString reason;
    if (device && device->isOpen()) {
        const DeviceIo io(*device);
        emptied = device->isWritable() && io.resize(0);
        reason = io.reason();
        platform::FileStatus status;
        if (askStatus(*device, status)) {
            ours = platform::names(native, status.identity);
            otherNames = status.names > (ours ? 1U : 0U);
        }
        if (sync && emptied && otherNames) {
            synced = io.sync();
            reason = io.reason();
        }
        if (!platform::RemovesOpenFiles) {
            device->close();
        }
    }
    const int error = ours ? platform::fileIo().removeName(native) : 0;
    const bool removed = error == 0 || platform::presenceOf(native) == platform::Presence::Absent;
    if (!removed) {
        const auto left = StorageFile::open(path, {true, false, true});
        emptied = (left->isOpen() && DeviceIo(*left).resize(0)) || emptied;
        if (emptied && left->isOpen()) {
            const DeviceIo io(*left);
            static_cast<void>(io.writeAt(0, empty.constData(), empty.size()));
            synced = !sync || io.sync();
        }
        reason = qt_error_string(error);
    }
    JournalRemoval removal;
    removal.removed = removed;
    removal.synced = synced;
    removal.effective = !emptied && (!removed || otherNames);
    if (removal.effective) {
        removal.reason = Fault{message::journalStillEffective(path), reason}.whole();
    } else if (!synced) {
        removal.reason = Fault{message::fileNotSynced(path), reason}.whole();
    } else if (!removed) {
        removal.reason = Fault{message::journalNotRemoved(path), reason}.whole();
    }
    return removal;
}

bool hideFromOthers(QIODevice& journal, QIODevice& file)
{
    const auto grants = DeviceIo(journal).status();
    const auto allows = DeviceIo(file).status();
    if (!grants || !allows) {
        return true;
    }
    // Whoever owns the journal may always read it.
    const bool strangeOwner = grants->owner != allows->owner && grants->owner != platform::currentUser();
    constexpr unsigned others = 0077;
    constexpr unsigned othersRead = 0004;
    if (strangeOwner && (allows->access & othersRead) == 0) {
        return false;
    }
    if ((grants->access & ~allows->access & others) == 0) {
        return true;
    }
    auto* const journalFile = dynamic_cast<StorageFile*>(&journal);
    return journalFile && journalFile->restrictAccess(grants->access & (allows->access | ~others));
}

} // namespace veltor::utils::io
