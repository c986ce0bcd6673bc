#pragma once

#include <QtCore/QString>
#include <QtCore/QUuid>

/// What the storage says when something is wrong: each text once, translated in one context. Offsets and
/// sizes print unsigned, in decimal.
namespace veltor::utils::message {

// Reading any record.
QString seekFailed(quint64 offset, quint64 journalSize, bool journalOpen);
QString readFailed(quint64 offset, quint64 expected, quint64 got);

// Header.
QString unknownVersion(const QUuid& version);
QString firstFileWithoutLast(quint64 firstFile);
QString lastFileWithoutFirst(quint64 lastFile);
QString firstFreeWithoutLast(quint64 firstFree);
QString lastFreeWithoutFirst(quint64 lastFree);
QString badFirstFile(quint64 offset);
QString badLastFile(quint64 offset);
QString badFirstFree(quint64 offset);
QString badLastFree(quint64 offset);

// File entries.
QString firstChangeWithoutLast(quint64 firstChange, quint64 fileSize);
QString lastChangeWithoutFirst(quint64 lastChange, quint64 fileSize);
QString badFirstChange(quint64 offset, quint64 fileSize);
QString badLastChange(quint64 offset, quint64 fileSize);
QString badNextFile(quint64 offset, quint64 fileSizeBefore);
QString lastChangeMismatch(quint64 stored, quint64 walked);
QString nameSeekFailed(quint64 nameOffset, quint64 entryOffset);
QString nameReadFailed(quint64 nameOffset, quint64 got, quint64 expected);
QString badName();
QString openFailed(const QString& name);
QString lastFileMismatch(quint64 walked, quint64 stored);

// Change blocks.
QString blockOutOfFile(quint64 length, quint64 position, quint64 sizeBound);
QString badNextChange(quint64 offset);
QString badPreviousChange(quint64 offset);
QString previousChangeMismatch(quint64 stored, quint64 walked);
QString checksumMismatch(quint64 dataOffset);

// Free records.
QString emptyFreeBlock();
QString badNextFree(quint64 offset);
QString badPreviousFree(quint64 offset);
QString badFreeRegion(quint64 offset);
QString previousFreeMismatch(quint64 stored, quint64 walked);

// Writing and restoring.
QString journalNotUsable();
QString journalNotAppendable();
QString journalNotChecked();
QString journalWriteFailed(quint64 offset, quint64 expected, quint64 written);
QString journalSizeUnknown();
QString journalResizeFailed(quint64 size);
QString journalNotRemoved(const QString& name);
QString journalStillEffective(const QString& name);
QString journalInUse(const QString& name, const QString& holder, qint64 ownerPid); // empty, 0: unknown
QString journalNotLocked(const QString& name);
QString journalNeedsRecovery(const QString& name);
QString journalIsForeign(const QString& name);
QString journalIsNone(const QString& name);
QString journalShowsSecrets(const QString& name);
QString nameTooLong(const QString& name);
QString fileIsJournal(const QString& name);
QString fileClosed(const QString& name);
QString fileReplaced(const QString& name);
QString fileSizeUnknown(const QString& name);
QString fileReadFailed(const QString& name, quint64 offset, quint64 expected, quint64 got);
QString fileWriteFailed(const QString& name, quint64 offset);
QString fileResizeFailed(const QString& name, quint64 size);
QString fileFlushFailed(const QString& name);
QString fileNotSynced(const QString& name);
QString folderNotSynced(const QString& path);
QString journalNotSynced();
QString fileLengthUnexplained(const QString& name, quint64 size);
QString keyOutdated();
QString savepointGone();

// Why a file may not be opened.
QString notRegular();
QString isLink();
QString leadsOutside();
QString isInterface();
QString isNotAccepted();

} // namespace veltor::utils::message

namespace veltor::utils {

/// The storage's log: one line, always from the same call site.
class LogInfo
{
public:
    /// At level 4.
    static void error(const QString& text);
    /// At level 2: more about the error before it, whose own words are fixed.
    static void detail(const QString& text);
};

} // namespace veltor::utils
