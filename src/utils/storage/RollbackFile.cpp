#include <veltor/utils/RollbackFile.h>

#include "utils/storage/DeviceIo.h"
#include "utils/storage/JournalMessages.h"
#include "utils/storage/JournalWalker.h"
#include "utils/storage/StorageFile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace veltor::utils {
namespace {

namespace message = journal::message;

/// Opens a regular file; an open of a pipe or a device could wait for ever.
IOPtr openRegular(const QString& path, QIODevice::OpenMode mode)
{
    return makeIOPtr(QFileInfo(path).isFile()
                         ? openStorageFile(path, mode | QIODevice::ExistingOnly).release()
                         : new QFile(path));
}

IOPtr openJournal(const QString& path, QIODevice::OpenMode mode)
{
    if (mode == QIODevice::WriteOnly) {
        // For reading too: this run may have to roll back. Never truncated here: what an old journal
        // holds goes only after the new header stands.
        if (QFileInfo::exists(path)) {
            return openRegular(path, QIODevice::ReadWrite);
        }
        return makeIOPtr(openStorageFile(path, QIODevice::ReadWrite | QIODevice::NewOnly).release());
    }
    IOPtr device =
        openRegular(path, mode & QIODevice::WriteOnly ? QIODevice::ReadWrite : QIODevice::ReadOnly);
    return device->isOpen() ? std::move(device) : openRegular(path, QIODevice::ReadOnly);
}

} // namespace

RollbackFile::RollbackFile() = default;

bool RollbackFile::needsRecovery(const QFileInfo& journal)
{
    const QString path = journal.absoluteFilePath();
    if (!QFileInfo::exists(path)) {
        return false;
    }
    const IOPtr device = openRegular(path, QIODevice::ReadOnly);
    if (!device->isOpen()) {
        return true;
    }
    if (journal::isUnfinishedCreation(*device)) {
        return false;
    }
    bool blocks = false;
    journal::JournalWalker walker(*device, journal::JournalWalker::Mode::Validate);
    const bool whole = walker.walk([&](const journal::WalkedFile& file) {
        blocks = file.blockCount != 0;
        return !blocks;
    });
    return blocks || !whole;
}

bool RollbackFile::openByName(const QFileInfo& journal, QIODevice::OpenMode mode)
{
    close();
    setJournalInfo(journal);
    IOPtr device = openJournal(journal.absoluteFilePath(), mode);
    if (!device->isOpen()) {
        LogInfo::error(message::openFailed(journal.absoluteFilePath()));
        return false;
    }
    return open(std::move(device), mode);
}

void RollbackFile::setJournalInfo(const QFileInfo& journal)
{
    // Absolute from now on: the process may change its directory.
    m_journalInfo = QFileInfo(journal.absoluteFilePath());
    m_directory.clear();
}

QString RollbackFile::canonical(const QString& name) const
{
    return m_journalInfo.absoluteDir().absoluteFilePath(name);
}

IOPtr RollbackFile::openFile(const QString& name) const
{
    return openRegular(canonical(name), QIODevice::ReadWrite);
}

RollbackDevice::Key RollbackFile::addFile(const QFileInfo& file)
{
    // Every directory on the way is a system call: once a journal, not once a file.
    if (m_directory.isEmpty()) {
        m_directory = m_journalInfo.absoluteDir().canonicalPath();
        m_journalPath = QFileInfo(m_journalInfo.absoluteFilePath()).canonicalFilePath();
    }
    const QString path = file.canonicalFilePath();
    if (path.isEmpty()) {
        LogInfo::error(message::openFailed(file.filePath()));
        return 0;
    }
    if (path == m_journalPath) {
        LogInfo::error(message::fileIsJournal(path));
        return 0;
    }
    return addFileImpl(storedName(path));
}

/// Relative when the file lies beneath the journal's directory, however that is spelled.
QString RollbackFile::storedName(const QString& canonicalPath) const
{
    const QString relative = QDir(m_directory).relativeFilePath(canonicalPath);
    const bool outside = relative == QLatin1String("..") || relative.startsWith(QLatin1String("../")) ||
                         QDir::isAbsolutePath(relative);
    return outside ? canonicalPath : relative;
}

void RollbackFile::remove(const IOPtr& device)
{
    if (device) {
        device->close(); // some systems keep a file that is open
    }
    const QString path = m_journalInfo.absoluteFilePath();
    if (QFile::remove(path) || !QFileInfo::exists(path)) {
        return;
    }
    LogInfo::error(message::journalNotRemoved(path));
    const IOPtr left = openRegular(path, QIODevice::ReadWrite);
    if (left->isOpen()) {
        const QByteArray header = encodeHeader(journal::freshHeader());
        const DeviceIo io(*left);
        if (io.writeAt(0, header.constData(), header.size()) != header.size() ||
            !io.resize(journal::HeaderSize)) {
            LogInfo::error(message::fileWriteFailed(path, 0));
        }
    }
}

} // namespace veltor::utils
