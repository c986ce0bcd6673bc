// The face of the rollback device.

#include <veltor/utils/RollbackDevice.h>

#include "utils/storage/RollbackDevicePrivate.h"
#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/DeviceIo.h"

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
    : m_p(std::make_unique<Private>(*this))
{}

RollbackDevice::~RollbackDevice()
{
    m_p->release();
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
    m_p->journal = std::move(journal);
    ++m_p->generation;
    if (!isDeviceCorrect(m_p->journal)) {
        reportFailure(message::journalNotUsable());
        close();
        return false;
    }
    try {
        if (!(mode == QIODevice::WriteOnly ? m_p->create() : m_p->load())) {
            return false;
        }
    } catch (...) { // out of a subclass
        close();
        throw;
    }
    QStringList names;
    for (const auto& [key, file] : m_p->files.all()) {
        names << file.name();
    }
    openLog().write(QStringLiteral("Rollback files: ") + names.join(QStringLiteral(", ")));
    return true;
}

bool RollbackDevice::isOpen() const noexcept
{
    return m_p->journal != nullptr;
}

void RollbackDevice::close() noexcept
{
    if (m_p->release()) {
        resetDevice();
    }
}

unsigned long long RollbackDevice::generation() const noexcept
{
    return m_p->generation;
}

QString RollbackDevice::errorString() const
{
    return m_p->lastError;
}

RollbackDevice::Key RollbackDevice::fileLookup(const QString& name) const
{
    return m_p->files.keyOf(name);
}

const RollbackFileInfo* RollbackDevice::existingFile(const QString& name) const
{
    const StoredFile* const found = m_p->files.find(fileLookup(name));
    return found ? &found->info : nullptr;
}

const RollbackFileInfo& RollbackDevice::file(const QString& name) const
{
    if (const RollbackFileInfo* const found = existingFile(name)) {
        return *found;
    }
    throw err::UnexpectedValue(QStringLiteral("name"), name);
}

QString RollbackDevice::fileName(Key key) const
{
    const StoredFile* const found = m_p->files.find(key);
    if (!found) {
        return {};
    }
    const auto* const file = qobject_cast<const QFileDevice*>(found->device().get());
    return file ? file->fileName() : found->name();
}

qint64 RollbackDevice::filePos(Key key) const
{
    const StoredFile* const found = m_p->files.find(key);
    return found && found->device() ? found->device()->pos() : 0;
}

qint64 RollbackDevice::fileSize(Key key) const
{
    if (!m_p->files.find(key)) {
        return 0;
    }
    const StoredFile* const found = m_p->openFile(key);
    if (!found) {
        return -1;
    }
    const io::DeviceIo io(*found->device());
    const std::optional<quint64> size = io.size();
    if (!size) {
        m_p->lastError = Fault{message::fileSizeUnknown(found->name()), io.reason()}.whole();
        return -1;
    }
    return static_cast<qint64>(*size);
}

bool RollbackDevice::fileSeek(Key key, qint64 position)
{
    const StoredFile* const found = position >= 0 ? m_p->openFile(key) : nullptr;
    return found && io::DeviceIo(*found->device()).seek(position);
}

bool RollbackDevice::fileResize(Key key, qint64 size)
{
    StoredFile* const file = size >= 0 ? m_p->openFile(key) : nullptr;
    return file && m_p->resize(*file, static_cast<quint64>(size));
}

qint64 RollbackDevice::readFromFile(Key key, char* buffer, qint64 length)
{
    if (!buffer || length <= 0) {
        return 0;
    }
    const StoredFile* const found = m_p->openFile(key);
    if (!found) {
        return -1;
    }
    const io::DeviceIo io(*found->device());
    const qint64 position = io.pos();
    const qint64 got = io.readAt(static_cast<quint64>(position), buffer, length);
    if (got < 0 || (got == 0 && !io.reason().isEmpty())) {
        m_p->fail({message::fileReadFailed(found->name(), static_cast<quint64>(position),
                                           static_cast<quint64>(length), 0),
                   io.reason()});
        return -1;
    }
    return io.seek(position + got) ? got : -1;
}

bool RollbackDevice::addBlock(Key key, unsigned long long position, unsigned int length)
{
    StoredFile* const file = m_p->openFile(key);
    return file && m_p->save(*file, position, length);
}

bool RollbackDevice::writeBlock(Key key, const QByteArray& data)
{
    StoredFile* const file = m_p->openFile(key);
    return file && (data.isEmpty() || m_p->write(*file, data));
}

unsigned long long RollbackDevice::findBlock(unsigned int) const
{
    return m_p->end();
}

bool RollbackDevice::flushList(const std::vector<std::pair<unsigned long long, QByteArray>>& writes)
{
    return std::all_of(writes.begin(), writes.end(),
                       [this](const auto& write) { return m_p->writeJournal(write.first, write.second); });
}

JournalRemoval RollbackDevice::commit()
{
    return isOpen() ? m_p->commit() : JournalRemoval{false, false, message::journalNotUsable()};
}

bool RollbackDevice::rollback()
{
    m_p->report = {};
    if (!isOpen() || !isRecognized()) {
        return reportFailure(isOpen() ? message::journalNotChecked() : message::journalNotUsable());
    }
    if (!m_p->rollBack()) {
        return false;
    }
    m_p->report.journal = m_p->dispose();
    return static_cast<bool>(m_p->report.journal);
}

const RollbackReport& RollbackDevice::rollbackReport() const noexcept
{
    return m_p->report;
}

void RollbackDevice::cancelRollback() noexcept
{
    m_p->cancel = true;
}

RollbackDevice::Savepoint RollbackDevice::savepoint() const
{
    Savepoint savepoint;
    savepoint.m_number = ++m_p->lastSavepoint;
    m_p->savepoints.push_back(savepoint.m_number);
    for (const auto& [key, file] : m_p->files.all()) {
        savepoint.m_lastChanges.emplace_back(key, file.chain.lastChange);
    }
    return savepoint;
}

bool RollbackDevice::rollbackTo(const Savepoint& savepoint)
{
    auto& known = m_p->savepoints;
    const auto found = std::find(known.begin(), known.end(), savepoint.m_number);
    if (found == known.end()) {
        return reportFailure(message::savepointGone());
    }
    known.erase(found + 1, known.end());
    return m_p->rollBackTo(savepoint);
}

void RollbackDevice::repair()
{
    m_p->salvage();
}

bool RollbackDevice::repairedWhole() const noexcept
{
    return m_p->repairedWhole;
}

bool RollbackDevice::isRecognized() const noexcept
{
    return m_p->state != Private::State::Refused;
}

std::vector<RollbackDevice::ProtectedFile> RollbackDevice::protectedFiles() const
{
    std::vector<ProtectedFile> files;
    files.reserve(m_p->files.all().size());
    for (const auto& [key, file] : m_p->files.all()) {
        const auto& chain = file.chain;
        files.push_back({file.name(), chain.fileSize, chain.blockCount, chain.savedBytes, chain.whole});
    }
    return files;
}

QUuid RollbackDevice::journalVersion() const
{
    return m_p->version;
}

unsigned long long RollbackDevice::freeBlockCount() const noexcept
{
    return m_p->freeBlockCount;
}

void RollbackDevice::setRollbackProgress(RollbackProgress progress)
{
    m_p->progress = std::move(progress);
}

RollbackDevice::Key RollbackDevice::addFileImpl(const QString& name)
{
    return m_p->addFile(name);
}

const IOPtr& RollbackDevice::journalDevice() const noexcept
{
    return m_p->journal;
}

void RollbackDevice::reportRemoval(const JournalRemoval& removal)
{
    m_p->removal = removal;
}

bool RollbackDevice::reportFailure(const QString& text) const
{
    return m_p->fail({text, {}});
}

} // namespace veltor::utils
