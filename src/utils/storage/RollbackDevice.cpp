// Opening, closing and looking up; see RollbackWriter.cpp for saving and RollbackRecovery.cpp for putting
// back.

#include <veltor/utils/RollbackDevice.h>

#include "utils/storage/DeviceIo.h"
#include "utils/storage/JournalMessages.h"
#include "utils/storage/JournalWalker.h"

#include <veltor/err/Exceptions.h>
#include <veltor/logging/Logger.h>

#include <algorithm>

namespace veltor::utils {
namespace {

const logging::LoggerMessager& openLog()
{
    static const logging::LoggerMessager log(
        logging::LogLevel::Detail, "SecuredFile.cpp", 745,
        "bool veltor::utils::RollbackDevice::open(veltor::IOPtr, QIODevice::OpenMode)");
    return log;
}

} // namespace

RollbackDevice::RollbackDevice()
    : m_journal(nullIOPtr())
{}

RollbackDevice::~RollbackDevice()
{
    release();
}

RollbackDevice::Key RollbackDevice::addFile(const QFileInfo& file)
{
    return addFileImpl(file.filePath());
}

bool RollbackDevice::isDeviceCorrect(const IOPtr& journal)
{
    return journal && journal->isOpen() && !journal->isSequential();
}

void RollbackDevice::resetDevice() {}

bool RollbackDevice::open(IOPtr journal, QIODevice::OpenMode mode)
{
    close();
    m_journal = std::move(journal);
    if (!isDeviceCorrect(m_journal)) {
        LogInfo::error(journal::message::journalNotUsable());
        close();
        return false;
    }
    if (!(mode == QIODevice::WriteOnly ? createJournal() : loadJournal())) {
        return false;
    }
    QStringList names;
    for (const auto& [key, file] : m_files) {
        names << file.name;
    }
    openLog().write(QStringLiteral("Rollback files: ") + names.join(QStringLiteral(", ")));
    return true;
}

bool RollbackDevice::isOpen() const noexcept
{
    return m_journal != nullptr;
}

void RollbackDevice::close() noexcept
{
    if (release()) {
        resetDevice();
    }
}

/// Forgets everything; true when a journal device was held.
bool RollbackDevice::release() noexcept
{
    forgetFiles();
    const bool held = isOpen();
    m_journal = nullIOPtr();
    m_state = State::Refused;
    m_version = QUuid();
    m_repairedWhole = false;
    return held;
}

bool RollbackDevice::createJournal()
{
    const DeviceIo io(*m_journal);
    const journal::Header header = journal::freshHeader();
    const QByteArray bytes = encodeHeader(header);
    const qint64 written = io.writeAt(0, bytes.constData(), bytes.size());
    if (written != bytes.size()) {
        LogInfo::error(
            journal::message::journalWriteFailed(0, journal::HeaderSize, static_cast<quint64>(written)));
        return false;
    }
    // A device that is no file cannot be cut: what it held stays behind the header, where nothing leads.
    const auto* const file = qobject_cast<const QFileDevice*>(m_journal.get());
    if (file && io.size() > journal::HeaderSize && !io.resize(journal::HeaderSize)) {
        LogInfo::error(journal::message::fileResizeFailed(file->fileName(), journal::HeaderSize));
        return false;
    }
    m_version = header.version;
    m_state = State::Appendable;
    return true;
}

bool RollbackDevice::loadJournal()
{
    journal::JournalWalker walker(*m_journal, journal::JournalWalker::Mode::Validate);
    const bool whole = walker.walk([this](const journal::WalkedFile& file) { return openWalked(file); });
    m_version = walker.header().version;
    m_freeBlockCount = walker.freeBlockCount();
    if (!whole) {
        LogInfo::error(walker.fault());
        forgetFiles();
        return false;
    }
    const bool appendable = walker.layout() == journal::Layout::Checksummed && m_journal->isWritable();
    m_state = appendable ? State::Appendable : State::RollbackOnly;
    return true;
}

bool RollbackDevice::openWalked(const journal::WalkedFile& walked)
{
    IOPtr device = openFile(walked.name);
    return device && device->isOpen() && takeFile(walked, std::move(device));
}

bool RollbackDevice::takeFile(const journal::WalkedFile& walked, IOPtr device)
{
    RollbackFileInfo info;
    info.nextFile = walked.entry.nextFile;
    info.firstChange = walked.entry.firstChange;
    info.lastChange = walked.entry.lastChange;
    info.fileSize = walked.entry.fileSize;
    info.name = walked.name;
    info.device = std::move(device);
    info.blockCount = walked.blockCount;
    info.savedBytes = walked.savedBytes;
    remember(walked.offset, std::move(info));
    return true;
}

void RollbackDevice::remember(Key key, RollbackFileInfo info)
{
    m_keys.insert(info.name, key);
    if (info.device) {
        if (const auto identity = DeviceIo(*info.device).identity()) {
            m_identities.emplace(*identity, key);
        }
    }
    m_files.insert_or_assign(key, std::move(info));
}

/// Called only when no more files are added, so that the identities need no care.
RollbackDevice::FileMap::iterator RollbackDevice::forget(FileMap::iterator file)
{
    m_keys.remove(file->second.name);
    return m_files.erase(file);
}

void RollbackDevice::forgetFiles() noexcept
{
    m_files.clear();
    m_keys.clear();
    m_identities.clear();
    m_freeBlockCount = 0;
}

RollbackDevice::Key RollbackDevice::sameFile(QIODevice& device) const
{
    const auto identity = DeviceIo(device).identity();
    const auto found = identity ? m_identities.find(*identity) : m_identities.end();
    return found != m_identities.end() ? found->second : 0;
}

void RollbackDevice::commit()
{
    if (isOpen()) {
        dispose();
    }
}

void RollbackDevice::dispose()
{
    remove(m_journal);
    close();
}

RollbackDevice::Key RollbackDevice::fileLookup(const QString& name) const
{
    return m_keys.value(name, 0);
}

const RollbackFileInfo* RollbackDevice::existingFile(const QString& name) const
{
    const FileItem* const found = item(fileLookup(name));
    return found ? &found->second : nullptr;
}

const RollbackFileInfo& RollbackDevice::file(const QString& name) const
{
    if (const RollbackFileInfo* const found = existingFile(name)) {
        return *found;
    }
    throw err::UnexpectedValue(QStringLiteral("name"), name);
}

const RollbackDevice::FileItem* RollbackDevice::item(Key key) const
{
    const auto found = m_files.find(key);
    return found != m_files.end() ? &*found : nullptr;
}

RollbackDevice::FileItem* RollbackDevice::openItem(Key key)
{
    const auto found = m_files.find(key);
    if (found == m_files.end() || !found->second.device || !found->second.device->isOpen()) {
        return nullptr;
    }
    return &*found;
}

QString RollbackDevice::fileName(Key key) const
{
    const FileItem* const found = item(key);
    if (!found) {
        return {};
    }
    const auto* const file = qobject_cast<const QFileDevice*>(found->second.device.get());
    return file ? file->fileName() : found->second.name;
}

qint64 RollbackDevice::filePos(Key key) const
{
    const FileItem* const found = item(key);
    return found && found->second.device ? found->second.device->pos() : 0;
}

qint64 RollbackDevice::fileSize(Key key) const
{
    const FileItem* const found = item(key);
    return found && found->second.device ? static_cast<qint64>(DeviceIo(*found->second.device).size()) : 0;
}

bool RollbackDevice::fileSeek(Key key, qint64 position)
{
    const FileItem* const found = openItem(key);
    return found && position >= 0 && DeviceIo(*found->second.device).seek(position);
}

qint64 RollbackDevice::readFromFile(Key key, char* buffer, qint64 length)
{
    if (!buffer || length <= 0) {
        return 0;
    }
    const FileItem* const found = openItem(key);
    if (!found) {
        return -1;
    }
    const DeviceIo io(*found->second.device);
    const qint64 position = io.pos();
    const qint64 got = io.readAt(static_cast<quint64>(position), buffer, length);
    return io.seek(position + qMax<qint64>(got, 0)) ? got : -1;
}

std::vector<RollbackDevice::ProtectedFile> RollbackDevice::protectedFiles() const
{
    std::vector<ProtectedFile> files;
    files.reserve(m_files.size());
    for (const auto& [key, file] : m_files) {
        files.push_back({file.name, file.fileSize, file.blockCount, file.savedBytes});
    }
    return files;
}

void RollbackDevice::setRollbackProgress(RollbackProgress progress)
{
    m_progress = std::move(progress);
}

} // namespace veltor::utils
