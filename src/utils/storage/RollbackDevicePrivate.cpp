// The steps behind a rollback device: taking a journal, saving, committing.

#include "utils/storage/RollbackDevicePrivate.h"

#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/JournalFile.h"

#include <veltor/logging/Logger.h>

#include <algorithm>

namespace veltor::utils {
namespace {

const logging::LoggerMessager& repairLog(int line)
{
    static constexpr const char* function = "void veltor::utils::RollbackDevice::repair()";
    static const logging::LoggerMessager file(logging::LogLevel::Info, "SecuredFile.cpp", 972, function);
    static const logging::LoggerMessager count(logging::LogLevel::Info, "SecuredFile.cpp", 980, function);
    return line == 972 ? file : count;
}

bool isUsable(const IOPtr& device)
{
    return device && device->isOpen();
}

/// Why a subclass could not open a file, where it says so.
QString openReason(const IOPtr& device)
{
    const auto* const file = dynamic_cast<const QFileDevice*>(device.get());
    return file ? file->errorString() : QString();
}

} // namespace

bool RollbackDevice::Private::fail(const Fault& fault) const
{
    lastError = fault.whole();
    LogInfo::error(lastError);
    return false;
}

bool RollbackDevice::Private::failJournal(const Fault& fault) const
{
    return fail({aboutJournal(fault), {}});
}

/// What the check of a journal says is fixed word for word; name and reason follow in a line of their own.
bool RollbackDevice::Private::failCheck(const Fault& fault) const
{
    LogInfo::error(fault.text);
    lastError = aboutJournal(fault);
    if (!fault.reason.isEmpty()) {
        LogInfo::detail(lastError);
    }
    return false;
}

QString RollbackDevice::Private::aboutJournal(const Fault& fault) const
{
    const auto* const file = qobject_cast<const QFileDevice*>(journal.get());
    return file ? QStringLiteral("'%0': %1").arg(file->fileName(), fault.whole()) : fault.whole();
}

/// Forgets everything; true when a journal device was held.
bool RollbackDevice::Private::release() noexcept
{
    files.clear();
    if (writer) {
        writer->close();
        writer.reset();
    }
    const bool held = journal != nullptr;
    if (held) {
        ++generation;
    }
    savepoints.clear();
    journal = nullIOPtr();
    state = State::Refused;
    version = QUuid();
    freeBlockCount = 0;
    repairedWhole = false;
    return held;
}

bool RollbackDevice::Private::create()
{
    barriers.restart();
    writer.emplace(*journal, barriers);
    if (!writer->create()) {
        return failJournal(writer->fault());
    }
    version = journal::freshHeader().version;
    state = State::Appendable;
    return true;
}

bool RollbackDevice::Private::load()
{
    barriers.restart();
    journal::JournalWalker walker(*journal, journal::JournalWalker::Mode::Validate, rules());
    QString reason;
    const bool whole = walker.walk([&](const journal::WalkedFile& file) {
        IOPtr device = m_device.openFile(file.name);
        if (!isUsable(device)) {
            reason = openReason(device);
            return false;
        }
        return take(file, std::move(device), false);
    });
    version = walker.header().version;
    freeBlockCount = walker.freeBlockCount();
    if (!whole) {
        const Fault& fault = walker.fault();
        files.clear();
        return failCheck({fault.text, fault.reason.isEmpty() ? reason : fault.reason});
    }
    state = State::RollbackOnly;
    if (walker.layout() == journal::Layout::Checksummed && journal->isWritable()) {
        writer.emplace(*journal, barriers);
        if (!writer->resume(walker.lastEntry(), walker.end())) {
            files.clear();
            return failJournal(writer->fault());
        }
        state = State::Appendable;
    }
    return true;
}

/// @param once  leave a file out that is there already under another name
bool RollbackDevice::Private::take(const journal::WalkedFile& walked, IOPtr device, bool once)
{
    if (once) {
        const auto status = io::DeviceIo(*device).status();
        if (status && files.keyOf(std::make_optional(status->identity)) != 0) {
            return false;
        }
    }
    files.add(StoredFile(walked.chain, walked.name, std::move(device)), true);
    return true;
}

void RollbackDevice::Private::salvage()
{
    files.clear();
    writer.reset();
    savepoints.clear();
    repairedWhole = false;
    if (isUsable(journal)) {
        readSalvageable();
    }
    for (const auto& [key, file] : files.all()) {
        repairLog(972).write(QStringLiteral("File ") + file.name() + QStringLiteral(" has been repaired"));
    }
    repairLog(980).write(QStringLiteral("Repaired file count ") + QString::number(files.all().size()));
}

/// Fills the map with the files that can be restored.
void RollbackDevice::Private::readSalvageable()
{
    state = State::Refused;
    bool all = true;
    journal::JournalWalker walker(*journal, journal::JournalWalker::Mode::Salvage, rules());
    const bool whole = walker.walk([&](const journal::WalkedFile& file) {
        // Opened at once, so that names which lead nowhere take no memory.
        IOPtr device = files.keyOf(file.name) == 0 ? m_device.openFile(file.name) : nullIOPtr();
        all = isUsable(device) && take(file, std::move(device), true) && all;
        return true;
    });
    repairedWhole = whole && all;
    version = walker.header().version;
    if (walker.layout()) {
        state = State::RollbackOnly;
    } else if (journal::isUnfinishedCreation(*journal) || (barriers.areOn() && journal::isBlank(*journal))) {
        state = State::RollbackOnly;
        repairedWhole = true;
    }
}

/// What a cut of power may leave is judged only where the journal was written with that in mind.
journal::JournalWalker::Rules RollbackDevice::Private::rules() const noexcept
{
    using Rules = journal::JournalWalker::Rules;
    return barriers.areOn() ? Rules::PowerLoss : Rules::Format;
}

bool RollbackDevice::Private::canAppend() const
{
    return (state == State::Appendable && !barriers.hasFailed()) ||
           fail({message::journalNotAppendable(), {}});
}

RollbackDevice::Key RollbackDevice::Private::addFile(const QString& name)
{
    if (const Key key = files.keyOf(name)) {
        return key;
    }
    if (!canAppend()) {
        return 0;
    }
    const std::optional<QByteArray> storedName = journal::encodeName(name);
    if (!storedName) {
        const bool tooLong = static_cast<quint64>(name.toUtf8().size()) > journal::MaxNameLength;
        fail({tooLong ? message::nameTooLong(name) : message::badName(), {}});
        return 0;
    }
    IOPtr device = m_device.openFile(name);
    if (!isUsable(device)) {
        fail({message::openFailed(name), openReason(device)});
        return 0;
    }
    const io::DeviceIo io(*device);
    const auto status = io.status();
    if (status) {
        const auto own = io::DeviceIo(*journal).status();
        if (own && own->identity == status->identity) {
            fail({message::fileIsJournal(name), {}});
            return 0;
        }
        // Saved under two names (hard links, a file system that ignores case), a file would be put back to
        // what the other name had made of it.
        if (const Key key = files.keyOf(std::make_optional(status->identity))) {
            return key;
        }
    }
    if (!io::hideFromOthers(*journal, *device)) {
        fail({message::journalShowsSecrets(name), {}});
        return 0;
    }
    // Of a file that was opened just now, the size came with what it is.
    const std::optional<quint64> size = status ? static_cast<quint64>(status->size) : io.size();
    if (!size) {
        fail({message::fileSizeUnknown(name), io.reason()});
        return 0;
    }
    return append(name, *storedName, *size, std::move(device));
}

RollbackDevice::Key RollbackDevice::Private::append(const QString& name, const QByteArray& storedName,
                                                    quint64 size, IOPtr device)
{
    StoredFile* const last = files.find(writer->lastEntry());
    auto chain = writer->appendEntry(size, storedName, last ? &last->chain : nullptr);
    if (!chain) {
        failJournal(writer->fault());
        return 0;
    }
    if (last) {
        last->mirror();
    }
    const Key key = chain->entry;
    files.add(StoredFile(std::move(*chain), name, std::move(device)), false);
    return key;
}

/// The file behind a key, open; null with a reason when it is not.
StoredFile* RollbackDevice::Private::openFile(Key key)
{
    StoredFile* const file = files.find(key);
    if (!file) {
        lastError = message::keyOutdated();
        return nullptr;
    }
    if (file->device()) {
        if (file->device()->isOpen()) {
            return file;
        }
        lastError = message::fileClosed(file->name());
        return nullptr;
    }
    return reopen(*file) ? file : nullptr;
}

/// Opens a file again that was closed to spare its descriptor.
bool RollbackDevice::Private::reopen(StoredFile& file)
{
    IOPtr device = m_device.openFile(file.name());
    if (!isUsable(device)) {
        return fail({message::openFailed(file.name()), openReason(device)});
    }
    const auto status = io::DeviceIo(*device).status();
    if (!file.isSameAs(status ? std::make_optional(status->identity) : std::nullopt)) {
        return fail({message::fileReplaced(file.name()), {}});
    }
    file.device() = std::move(device);
    return true;
}

/// Saves a range of any length as blocks of bounded size, one at least. @param size  the file's, at present
bool RollbackDevice::Private::saveRange(StoredFile& file, const io::DeviceIo& io, quint64 size,
                                        quint64 position, quint64 length)
{
    if (!canAppend()) {
        return false;
    }
    const bool saved = forEachPiece(size, position, length, [&](quint64 from, quint32 piece) {
        const journal::JournalWriter::Save save{&file.chain, &io, {size, from, piece}};
        return writer->appendBlocks(&save, &save + 1) || failSaving(file.name());
    });
    file.mirror();
    return saved;
}

/// What was saved is on the disk, where that is wanted.
bool RollbackDevice::Private::passBarrier()
{
    return !barriers.areOn() || barriers.beforeChange(io::DeviceIo(*journal)) ||
           failJournal(barriers.fault());
}

/// @param name  of the file that was being read
bool RollbackDevice::Private::failSaving(const QString& name) const
{
    const Fault& fault = writer->fault();
    if (!fault.text.isEmpty()) {
        return failJournal(fault);
    }
    const auto& range = writer->unreadable().range;
    return fail(
        {message::fileReadFailed(name, range.position, range.length, writer->readable()), fault.reason});
}

std::optional<quint64> RollbackDevice::Private::sizeOf(const StoredFile& file, const io::DeviceIo& io) const
{
    const std::optional<quint64> size = io.size();
    if (!size) {
        fail({message::fileSizeUnknown(file.name()), io.reason()});
    }
    return size;
}

bool RollbackDevice::Private::save(StoredFile& file, quint64 position, quint64 length)
{
    const io::DeviceIo io(*file.device());
    const auto size = sizeOf(file, io);
    return size && saveRange(file, io, *size, position, length);
}

bool RollbackDevice::Private::write(StoredFile& file, const QByteArray& data)
{
    const io::DeviceIo io(*file.device());
    const auto position = static_cast<quint64>(io.pos());
    const auto size = sizeOf(file, io);
    if (!size || !saveRange(file, io, *size, position, static_cast<quint64>(data.size())) || !passBarrier()) {
        static_cast<void>(io.seek(static_cast<qint64>(position)));
        return false;
    }
    const qint64 written = io.writeAt(position, data.constData(), data.size());
    const bool moved = io.seek(static_cast<qint64>(position) + written);
    if (written != data.size()) {
        return fail({message::fileWriteFailed(file.name(), position), io.reason()});
    }
    return moved;
}

bool RollbackDevice::Private::resize(StoredFile& file, quint64 size)
{
    const io::DeviceIo io(*file.device());
    const auto oldSize = sizeOf(file, io);
    if (!oldSize || *oldSize == size) {
        return oldSize.has_value();
    }
    const qint64 position = io.pos();
    const quint64 from = std::min(size, *oldSize);
    if (!saveRange(file, io, *oldSize, from, *oldSize - from) || !passBarrier()) {
        static_cast<void>(io.seek(position));
        return false;
    }
    if (!io.resize(size)) {
        fail({message::fileResizeFailed(file.name(), size), io.reason()});
        static_cast<void>(io.seek(position));
        return false;
    }
    return io.seek(size < *oldSize ? std::min(position, static_cast<qint64>(size)) : position);
}

quint64 RollbackDevice::Private::end() const
{
    if (writer) {
        return writer->end();
    }
    return journal ? io::DeviceIo(*journal).size().value_or(0) : 0;
}

bool RollbackDevice::Private::writeJournal(quint64 offset, const QByteArray& bytes)
{
    if (!journal) {
        return false;
    }
    if (!writer) { // a journal that takes no records of ours
        return io::DeviceIo(*journal).writeAt(offset, bytes.constData(), bytes.size()) == bytes.size();
    }
    return writer->write(offset, bytes.constData(), bytes.size()) || failJournal(writer->fault());
}

/// The files are on the disk before the journal goes.
JournalRemoval RollbackDevice::Private::commit()
{
    bool synced = !barriers.hasFailed();
    for (auto file = files.all().begin(); barriers.areOn() && synced && file != files.all().end(); ++file) {
        StoredFile& changed = file->second;
        if (changed.chain.blockCount != 0) {
            synced = openFile(file->first) && barriers.afterChanges(*changed.device(), changed.name());
        }
    }
    if (!synced) {
        fail(barriers.hasFailed() ? barriers.fault() : Fault{lastError, {}});
        JournalRemoval kept;
        kept.removed = false;
        kept.effective = true;
        kept.reason = lastError;
        return kept;
    }
    return dispose();
}

JournalRemoval RollbackDevice::Private::dispose()
{
    removal = {};
    writer.reset(); // not closed: that would lengthen again what is emptied now
    m_device.remove(journal);
    m_device.close();
    return removal;
}

} // namespace veltor::utils
