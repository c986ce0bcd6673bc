// The rollback device of the file system.

#include <veltor/utils/RollbackFile.h>

#include "platform/FileLock.h"
#include "utils/storage/RollbackDevicePrivate.h"
#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/JournalFile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <optional>

namespace veltor::utils {
namespace {

/// What a journal's own bytes say about it.
struct Contents
{
    bool journal = false; ///< it is one, whole or damaged, or was to become one
    bool idle = false;    ///< it protects no saved bytes
};

/// Reads as far as it takes to know.
Contents contentsOf(QIODevice& device)
{
    if (journal::isUnfinishedCreation(device)) {
        return {true, true};
    }
    bool blocks = false;
    journal::JournalWalker walker(device, journal::JournalWalker::Mode::Validate);
    const bool whole = walker.walk([&](const journal::WalkedFile& file) {
        blocks = file.chain.blockCount != 0;
        return !blocks;
    });
    return {walker.layout().has_value(), whole && !blocks};
}

/// What is to be said of a name under which no journal can be opened.
JournalView unopened(const QString& path, const QString& reason)
{
    JournalView view;
    if (platform::presenceOf(io::nativePath(path)) != platform::Presence::Absent) {
        view.state = JournalState::Unreadable;
        view.belongsToUser = false;
        view.reason = Fault{message::openFailed(path), reason}.whole();
    }
    return view;
}

/// Lists what a rollback would restore, or of a damaged journal a repair.
void listFiles(QIODevice& device, JournalView& view)
{
    using journal::JournalWalker;
    const auto list = [&](const journal::WalkedFile& file) {
        const auto& chain = file.chain;
        view.files.push_back({file.name, chain.fileSize, chain.blockCount, chain.savedBytes});
        return true;
    };
    JournalWalker walker(device, JournalWalker::Mode::Validate);
    view.valid = walker.walk(list);
    view.version = walker.header().version;
    view.freeBlocks = walker.freeBlockCount();
    if (!view.valid) {
        view.reason = walker.fault().whole();
        view.files.clear();
        JournalWalker(device, JournalWalker::Mode::Salvage).walk(list);
    }
}

} // namespace

class RollbackFile::Private
{
public:
    QFileInfo journal;
    QString directory;   // of the journal, canonical; empty until the first file is added
    QString journalPath; // canonical, likewise
    NameRule rule = NameRule::Anywhere;
    NamePredicate accepts;
    bool ownOnly = false;
    JournalState state = JournalState::Nothing;
    qint64 ownerPid = 0;
    mutable std::optional<platform::ConfinedFolder> folder; // opened when the first name is

    void forgetPlace()
    {
        directory.clear();
        journalPath.clear();
        folder.reset();
    }

    /// Opens a name as the rule has it.
    [[nodiscard]] std::unique_ptr<io::StorageFile> open(const QString& name, const QString& path) const
    {
        if (rule == NameRule::Anywhere) {
            return io::StorageFile::open(path, {true});
        }
        if (!folder) {
            folder.emplace(io::nativePath(journal.absolutePath()));
        }
#ifdef Q_OS_WIN
        const platform::NativePath native = name.toStdWString();
#else
        const platform::NativePath native = QFile::encodeName(name).toStdString();
#endif
        return std::make_unique<io::StorageFile>(path, folder->open(native), true);
    }

    /// Takes the journal that the name leads to, with its lock; null with a reason otherwise.
    std::unique_ptr<io::StorageFile> take(const QString& path, io::JournalOpening opening, QString& reason)
    {
        using Answer = io::OpenedJournal::Answer;
        opening.ownOnly = ownOnly;
        io::OpenedJournal opened = io::openJournal(path, opening);
        state = opened.answer == Answer::InUse     ? JournalState::InUse
                : opened.answer == Answer::Refused ? JournalState::Unreadable
                                                   : JournalState::Nothing;
        ownerPid = opened.ownerPid;
        reason = opened.reason;
        return std::move(opened.file);
    }

    /// Notes what a journal that was refused is.
    void judge(QIODevice& device)
    {
        state = contentsOf(device).journal ? JournalState::NeedsRecovery : JournalState::Unreadable;
    }
};

RollbackFile::RollbackFile()
    : m_p(std::make_unique<Private>())
{}

RollbackFile::~RollbackFile() = default;

bool RollbackFile::needsRecovery(const QFileInfo& journal)
{
    const QString path = journal.absoluteFilePath();
    const auto file = io::StorageFile::open(path, {false, false, true});
    return file->isOpen() ? !contentsOf(*file).idle
                          : unopened(path, QString()).state == JournalState::Unreadable;
}

JournalView RollbackFile::inspect(const QFileInfo& journal)
{
    const QString path = journal.absoluteFilePath();
    const auto file = io::StorageFile::open(path, {false, false, true});
    if (!file->isOpen()) {
        return unopened(path, file->errorString());
    }
    JournalView view;
    view.belongsToUser = platform::belongsToUser(file->descriptor());
    const Contents contents = contentsOf(*file);
    view.state = contents.idle      ? JournalState::Nothing
                 : contents.journal ? JournalState::NeedsRecovery
                                    : JournalState::Unreadable;
    listFiles(*file, view);
    const platform::LockAnswer lock = platform::askLock(file->descriptor());
    if (lock.state == platform::LockState::Busy) {
        view.state = JournalState::InUse;
        view.ownerPid = lock.owner;
        view.reason = message::journalInUse(path, lock.owner);
    }
    return view;
}

JournalRemoval RollbackFile::discard(const QFileInfo& journal)
{
    RollbackFile owner;
    owner.setJournalInfo(journal);
    const QString path = owner.journalInfo().absoluteFilePath();
    QString reason;
    IOPtr file = makeIOPtr(owner.m_p->take(path, {}, reason).release());
    const bool isJournal = file && contentsOf(*file).journal;
    if (!isJournal) {
        if (file) {
            reason = message::journalIsNone(path);
        }
        LogInfo::error(reason);
        return {false, owner.state() != JournalState::Nothing || file, reason};
    }
    owner.remove(file);
    return owner.RollbackDevice::m_p->removal;
}

void RollbackFile::setNameRule(NameRule rule)
{
    m_p->rule = rule;
    m_p->accepts = nullptr;
}

void RollbackFile::setNameRule(NamePredicate accepts)
{
    m_p->rule = NameRule::Anywhere;
    m_p->accepts = std::move(accepts);
}

void RollbackFile::setOwnJournalsOnly(bool own)
{
    m_p->ownOnly = own;
}

bool RollbackFile::openByName(const QFileInfo& journal, QIODevice::OpenMode mode)
{
    close();
    setJournalInfo(journal);
    const bool create = mode == QIODevice::WriteOnly;
    QString reason;
    // For reading too: this run may have to roll back. Never truncated here: what an old journal holds goes
    // only after the new header stands.
    auto file =
        m_p->take(journalInfo().absoluteFilePath(), {create, mode.testFlag(QIODevice::WriteOnly)}, reason);
    if (!file) {
        return reportFailure(reason);
    }
    const bool opened = open(makeIOPtr(file.release()), mode);
    if (!opened && isOpen()) {
        m_p->judge(*journalDevice());
    }
    return opened;
}

bool RollbackFile::startNew(const QFileInfo& journal)
{
    close();
    setJournalInfo(journal);
    const QString path = journalInfo().absoluteFilePath();
    QString reason;
    auto file = m_p->take(path, {true}, reason);
    if (!file) {
        return reportFailure(reason);
    }
    if (!contentsOf(*file).idle) {
        m_p->judge(*file);
        return reportFailure(m_p->state == JournalState::NeedsRecovery ? message::journalNeedsRecovery(path)
                                                                       : message::journalIsNone(path));
    }
    return open(makeIOPtr(file.release()), QIODevice::WriteOnly);
}

JournalState RollbackFile::state() const noexcept
{
    return m_p->state;
}

qint64 RollbackFile::ownerPid() const noexcept
{
    return m_p->ownerPid;
}

const QFileInfo& RollbackFile::journalInfo() const noexcept
{
    return m_p->journal;
}

void RollbackFile::setJournalInfo(const QFileInfo& journal)
{
    // Absolute from now on: the process may change its directory.
    m_p->journal = QFileInfo(journal.absoluteFilePath());
    m_p->forgetPlace();
}

QString RollbackFile::canonical(const QString& name) const
{
    return m_p->journal.absoluteDir().absoluteFilePath(name);
}

IOPtr RollbackFile::openFile(const QString& name) const
{
    auto file = m_p->open(name, canonical(name));
    if (file->isOpen()) {
        const IOPtr& own = journalDevice();
        const auto status = own ? io::DeviceIo(*own).status() : std::nullopt;
        if (status && status->identity == file->status().identity) {
            file->refuse(message::fileIsJournal(name));
        } else if (m_p->accepts) {
            const platform::NativePath path = platform::pathOf(file->descriptor());
#ifdef Q_OS_WIN
            const QString resolved = QDir::fromNativeSeparators(QString::fromStdWString(path));
#else
            const QString resolved = QFile::decodeName(path.c_str());
#endif
            if (resolved.isEmpty() || !m_p->accepts(resolved)) {
                file->refuse(message::isNotAccepted());
            }
        }
    }
    return makeIOPtr(file.release());
}

RollbackDevice::Key RollbackFile::addFile(const QFileInfo& file)
{
    // Every directory on the way is a system call: once a journal, not once a file.
    if (m_p->directory.isEmpty()) {
        m_p->directory = m_p->journal.absoluteDir().canonicalPath();
        m_p->journalPath = QFileInfo(m_p->journal.absoluteFilePath()).canonicalFilePath();
    }
    const QString path = file.canonicalFilePath();
    if (path.isEmpty()) {
        // Which of the names on the way is missing or forbidden only an opening tells.
        const auto reason = io::StorageFile::open(file.absoluteFilePath(), {})->errorString();
        reportFailure(Fault{message::openFailed(file.filePath()), reason}.whole());
        return 0;
    }
    if (path == m_p->journalPath) {
        reportFailure(message::fileIsJournal(path));
        return 0;
    }
    // Relative when the file lies beneath the journal's directory, however that is spelled.
    const QString relative = QDir(m_p->directory).relativeFilePath(path);
    const bool outside = relative == QLatin1String("..") || relative.startsWith(QLatin1String("../")) ||
                         QDir::isAbsolutePath(relative);
    return addFileImpl(outside ? path : relative);
}

void RollbackFile::remove(const IOPtr& device)
{
    const QString path = m_p->journal.absoluteFilePath();
    const platform::NativePath native = io::nativePath(path);
    JournalRemoval removal;
    bool emptied = false;
    bool ours = true;
    if (device && device->isOpen()) {
        const io::DeviceIo io(*device);
        emptied = device->isWritable() && io.resize(0);
        removal.reason = emptied ? QString() : io.reason();
        const auto status = io.status();
        ours = !status || platform::names(native, status->identity);
        if (!platform::RemovesOpenFiles) {
            device->close();
        }
    }
    const int error = ours ? platform::fileIo().removeName(native) : 0;
    if (error != 0 && platform::presenceOf(native) != platform::Presence::Absent) {
        removal.removed = false;
        removal.reason = Fault{message::journalNotRemoved(path), qt_error_string(error)}.whole();
        LogInfo::error(removal.reason);
        // An empty header opens like any other journal.
        const auto left = io::StorageFile::open(path, {true, false, true});
        const QByteArray header = encodeHeader(journal::freshHeader());
        const io::DeviceIo io(*left);
        emptied = emptied || (left->isOpen() && io.resize(0));
        if (left->isOpen() && emptied) {
            static_cast<void>(io.writeAt(0, header.constData(), header.size()));
        }
        removal.effective = !emptied;
        if (removal.effective) {
            removal.reason = Fault{message::journalStillEffective(path), removal.reason}.whole();
            LogInfo::error(removal.reason);
        }
    }
    reportRemoval(removal);
}

} // namespace veltor::utils
