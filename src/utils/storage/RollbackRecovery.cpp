// Putting back: rollback of what the journal holds, and the salvage of a damaged one.

#include <veltor/utils/RollbackDevice.h>

#include "utils/storage/DeviceIo.h"
#include "utils/storage/JournalMessages.h"
#include "utils/storage/JournalWalker.h"

#include <veltor/logging/Logger.h>

#include <algorithm>

namespace veltor::utils {
namespace {

namespace message = journal::message;

const logging::LoggerMessager& repairLog(int line)
{
    static constexpr const char* function = "void veltor::utils::RollbackDevice::repair()";
    static const logging::LoggerMessager file(logging::LogLevel::Info, "SecuredFile.cpp", 972, function);
    static const logging::LoggerMessager count(logging::LogLevel::Info, "SecuredFile.cpp", 980, function);
    return line == 972 ? file : count;
}

bool refuse(const QString& text)
{
    LogInfo::error(text);
    return false;
}

/// Restores one protected file from its blocks, newest first, so that the oldest bytes win.
class FileRestorer
{
public:
    FileRestorer(QIODevice& journal, const RollbackFileInfo& info, std::function<void()> restored)
        : m_input(journal)
        , m_budget(m_input.size())
        , m_info(info)
        , m_io(*info.device)
        , m_restored(std::move(restored))
    {}

    bool run()
    {
        return readLayout() && restoreBlocks() && restoreLength() &&
               (m_io.flush() || refuse(message::fileFlushFailed(m_info.name)));
    }

private:
    bool readLayout()
    {
        const journal::JournalInput::Piece piece = m_input.fetch(0, journal::VersionSize);
        if (piece.length != journal::VersionSize) {
            return refuse(message::readFailed(0, journal::VersionSize,
                                              static_cast<quint64>(qMax<qint64>(piece.length, 0))));
        }
        m_layout = journal::layoutOf(journal::decodeVersion(piece.data)).value_or(journal::Layout::Plain);
        return true;
    }

    bool restoreBlocks()
    {
        quint64 newer = m_input.size();
        for (quint64 offset = m_info.lastChange; offset != 0;) {
            journal::ChangeHead head;
            if (!readHead(offset, newer, head) || !cut(head.sizeBound) || !restoreData(offset, head)) {
                return false;
            }
            m_restored();
            newer = offset;
            offset = head.previous;
        }
        return true;
    }

    bool readHead(quint64 offset, quint64 newer, journal::ChangeHead& head)
    {
        const quint64 size = journal::changeHeadSize(m_layout);
        const auto piece = m_input.fetch(offset, static_cast<qint64>(size), newer);
        const auto got = static_cast<quint64>(qMax<qint64>(piece.length, 0));
        if (got != size) {
            return refuse(message::readFailed(offset, size, got));
        }
        head = journal::decodeChangeHead(piece.data, m_layout);
        return m_budget.take(size + head.length) || refuse(message::badPreviousChange(offset));
    }

    bool cut(quint64 sizeBound)
    {
        return m_io.size() <= sizeBound || m_io.resize(sizeBound) ||
               refuse(message::fileResizeFailed(m_info.name, sizeBound));
    }

    bool restoreData(quint64 block, const journal::ChangeHead& head)
    {
        const quint64 offset = block + journal::changeHeadSize(m_layout);
        if (m_layout == journal::Layout::Checksummed) {
            quint32 checksum = 0;
            quint64 readable = 0;
            if (!m_input.checksum(offset, head.length, checksum, readable)) {
                return refuse(message::readFailed(offset, head.length, readable));
            }
            if (checksum != head.checksum) {
                return refuse(message::checksumMismatch(offset));
            }
        }
        for (quint64 done = 0; done < head.length;) {
            const quint64 wanted = std::min<quint64>(head.length - done, journal::JournalInput::MaxPiece);
            const auto piece = m_input.fetch(offset + done, static_cast<qint64>(wanted));
            if (piece.length != static_cast<qint64>(wanted)) {
                return refuse(message::readFailed(offset, head.length, done));
            }
            if (m_io.writeAt(head.position + done, piece.data, piece.length) != piece.length) {
                return refuse(message::fileWriteFailed(m_info.name, head.position + done));
            }
            done += wanted;
        }
        return true;
    }

    bool restoreLength()
    {
        return m_io.size() == m_info.fileSize || m_io.resize(m_info.fileSize) ||
               refuse(message::fileResizeFailed(m_info.name, m_info.fileSize));
    }

    journal::JournalInput m_input;
    journal::RecordBudget m_budget;
    journal::Layout m_layout = journal::Layout::Checksummed;
    const RollbackFileInfo& m_info;
    DeviceIo m_io;
    std::function<void()> m_restored;
};

} // namespace

bool RollbackDevice::rollback()
{
    if (!isOpen() || m_state == State::Refused) {
        return refuse(isOpen() ? message::journalNotChecked() : message::journalNotUsable());
    }
    // Whatever happens now, the map no longer mirrors the journal.
    m_state = State::RollbackOnly;
    m_restoredBlocks = 0;
    m_blocksToRestore = 0;
    for (const auto& [key, file] : m_files) {
        m_blocksToRestore += file.blockCount;
    }
    for (auto file = m_files.begin(); file != m_files.end();) {
        if (rollbackFileImpl(*file)) {
            file = forget(file);
        } else {
            ++file;
        }
    }
    if (!m_files.empty()) {
        return false;
    }
    dispose();
    return true;
}

bool RollbackDevice::rollbackFileImpl(FileItem& file)
{
    const RollbackFileInfo& info = file.second;
    if (!info.device || !info.device->isOpen()) {
        return refuse(message::fileClosed(info.name));
    }
    return FileRestorer(*m_journal, info,
                        [this] {
                            ++m_restoredBlocks;
                            if (m_progress) {
                                m_progress(m_restoredBlocks, m_blocksToRestore);
                            }
                        })
        .run();
}

void RollbackDevice::repair()
{
    forgetFiles();
    m_repairedWhole = false;
    if (isOpen() && m_journal->isOpen()) {
        salvage();
    }
    for (auto file = m_files.begin(); file != m_files.end();) {
        IOPtr device = openFile(file->second.name);
        if (device && device->isOpen()) {
            file->second.device = std::move(device);
            repairLog(972).write(QStringLiteral("File ") + file->second.name +
                                 QStringLiteral(" has been repaired"));
            ++file;
        } else {
            m_repairedWhole = false;
            file = forget(file);
        }
    }
    repairLog(980).write(QStringLiteral("Repaired file count ") + QString::number(m_files.size()));
}

/// Fills the map with the files that can be restored, not yet opened.
void RollbackDevice::salvage()
{
    m_state = State::Refused;
    journal::JournalWalker walker(*m_journal, journal::JournalWalker::Mode::Salvage);
    m_repairedWhole =
        walker.walk([this](const journal::WalkedFile& file) { return takeFile(file, nullIOPtr()); });
    m_version = walker.header().version;
    if (walker.layout()) {
        m_state = State::RollbackOnly;
    } else if (journal::isUnfinishedCreation(*m_journal)) {
        m_state = State::RollbackOnly;
        m_repairedWhole = true;
    }
}

} // namespace veltor::utils
