// The rollback device of the file system.

#include <veltor/utils/RollbackFile.h>

#include "platform/FileLock.h"
#include "utils/files/LockHolders.h"
#include "utils/storage/RollbackDevicePrivate.h"
#include "utils/storage/StorageMessages.h"
#include "utils/storage/io/JournalFile.h"
#include "utils/storage/io/SpareJournal.h"

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
        view.files.push_back({file.name, chain.fileSize, chain.blockCount, chain.savedBytes, chain.whole});
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

/// Releases a journal's file, unless it is kept as a spare.
void releaseJournal(QIODevice* device)
{
    const auto* const file = static_cast<io::StorageFile*>(device);
    if (file && !file->isKept()) {
        delete file;
    }
}

IOPtr toDevice(std::unique_ptr<io::StorageFile> file)
{
    return IOPtr(file.release(), &releaseJournal);
}

} // namespace

class RollbackFile::Private
{
public:
    QFileInfo journal;
    Spare spareKind = Spare::None;
    bool durable = false;
    std::optional<io::SpareJournal> spare; // of that journal, once one was looked for or kept
    QString inDirectory; // of the journal, canonical and with its slash; empty until the first file is added
    QString journalPath; // canonical, likewise
    NameRule rule = NameRule::Anywhere;
    NamePredicate accepts;
    bool ownOnly = false;
    JournalState state = JournalState::Nothing;
    qint64 ownerPid = 0;
    mutable std::optional<platform::ConfinedFolder> folder; // opened when the first name is

    void forgetPlace()
    {
        inDirectory.clear();
        journalPath.clear();
        folder.reset();
    }

    /// A file's path, links resolved; empty when there is none. In the journal's own folder, whose links are
    /// known, that takes one question instead of one for each folder on the way.
    [[nodiscard]] QString resolved(const QFileInfo& file) const
    {
#ifndef Q_OS_WIN // where the system also says how a name is spelled
        const QString name = file.fileName();
        QString path = inDirectory + name;
        if (file.absoluteFilePath() == path && platform::isRegular(io::nativePath(path))) {
            return path;
        }
#endif
        return file.canonicalFilePath();
    }

    /// Every directory on the way is a system call: once a journal, not once a file.
    void resolvePlace()
    {
        if (inDirectory.isEmpty()) {
            const QString directory = journal.absoluteDir().canonicalPath();
            const bool slash = directory.isEmpty() || directory.endsWith(QLatin1Char('/'));
            inDirectory = slash ? directory : directory + QLatin1Char('/');
#ifdef Q_OS_WIN // where names have several spellings
            journalPath = resolved(QFileInfo(journal.absoluteFilePath()));
#else
            journalPath = inDirectory + journal.fileName(); // which is never a link
#endif
        }
    }

    /// A path as it is stored: relative when the file lies beneath the journal's directory, however that is
    /// spelled.
    [[nodiscard]] QString storedName(const QString& path) const
    {
        if (path.startsWith(inDirectory)) {
            return path.mid(inDirectory.size());
        }
        const QString relative = QDir(inDirectory).relativeFilePath(path);
        const bool outside = relative == QLatin1String("..") || relative.startsWith(QLatin1String("../")) ||
                             QDir::isAbsolutePath(relative);
        return outside ? path : relative;
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

    /// The place of the spare, null when none is to be kept.
    io::SpareJournal* spareJournal()
    {
        // What an older journal held must not show through where the disk has not the new one's bytes yet.
        if (spareKind == Spare::None || durable) {
            return nullptr;
        }
        if (!spare) {
            spare.emplace(journal, encodeHeader(journal::freshHeader()));
        }
        spare->setStays(spareKind == Spare::Left);
        return &*spare;
    }

    /// The spare as a new journal, null when there is none, or the name is taken.
    std::unique_ptr<io::StorageFile> takeSpare()
    {
        io::SpareJournal* const kept = spareJournal();
        return kept ? kept->take() : nullptr;
    }

    /// Takes the journal that the name leads to, with its lock.
    io::OpenedJournal take(io::JournalOpening opening)
    {
        using Answer = io::OpenedJournal::Answer;
        opening.ownOnly = ownOnly;
        io::OpenedJournal opened = io::openJournal(journal.absoluteFilePath(), opening);
        state = opened.answer == Answer::InUse     ? JournalState::InUse
                : opened.answer == Answer::Refused ? JournalState::Unreadable
                                                   : JournalState::Nothing;
        ownerPid = opened.ownerPid;
        return opened;
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
        view.reason = message::journalInUse(path, lockHolderNames(file->descriptor()), lock.owner);
    }
    return view;
}

JournalRemoval RollbackFile::discard(const QFileInfo& journal)
{
    RollbackFile owner;
    owner.setJournalInfo(journal);
    const QString path = owner.journalInfo().absoluteFilePath();
    io::OpenedJournal opened = owner.m_p->take({});
    IOPtr file = toDevice(std::move(opened.file));
    if (!file || !contentsOf(*file).journal) {
        const QString reason = file ? message::journalIsNone(path) : opened.reason;
        LogInfo::error(reason);
        return {false, opened.answer != io::OpenedJournal::Answer::Absent, reason};
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

void RollbackFile::setDurability(Durability durability)
{
    RollbackDevice::m_p->barriers.want(durability);
    m_p->durable = durability != Durability::None;
}

void RollbackFile::setSpare(Spare spare)
{
    m_p->spareKind = spare;
    if (spare == Spare::None) {
        m_p->spare.reset();
    }
}

bool RollbackFile::openByName(const QFileInfo& journal, QIODevice::OpenMode mode)
{
    close();
    setJournalInfo(journal);
    if (mode == QIODevice::WriteOnly && startOnSpare()) {
        return true;
    }
    // For reading too: this run may have to roll back. Never truncated here: what an old journal holds goes
    // only after the new header stands.
    io::OpenedJournal opened = m_p->take({mode == QIODevice::WriteOnly, mode.testFlag(QIODevice::WriteOnly)});
    if (!opened.file) {
        return reportFailure(opened.reason);
    }
    const bool created = opened.created;
    const bool done = open(toDevice(std::move(opened.file)), mode);
    if (!done && created) {
        static_cast<void>(discardStillborn());
    } else if (!done && isOpen()) {
        m_p->judge(*journalDevice());
    }
    return done;
}

bool RollbackFile::startNew(const QFileInfo& journal)
{
    close();
    setJournalInfo(journal);
    if (startOnSpare()) {
        return true;
    }
    io::OpenedJournal opened = m_p->take({true});
    if (!opened.file) {
        return reportFailure(opened.reason);
    }
    if (!contentsOf(*opened.file).idle) {
        m_p->judge(*opened.file);
        const QString path = journalInfo().absoluteFilePath();
        return reportFailure(m_p->state == JournalState::NeedsRecovery ? message::journalNeedsRecovery(path)
                                                                       : message::journalIsNone(path));
    }
    const bool created = opened.created;
    return open(toDevice(std::move(opened.file)), QIODevice::WriteOnly) || (created && discardStillborn());
}

/// Starts a journal on the spare, if there is one.
bool RollbackFile::startOnSpare()
{
    auto spare = m_p->takeSpare();
    if (spare) {
        m_p->state = JournalState::Nothing;
        m_p->ownerPid = 0;
        static_cast<void>(open(toDevice(std::move(spare)), QIODevice::WriteOnly) || discardStillborn());
    }
    return isOpen();
}

/// A disk without room for a journal's header shall not keep an empty file. @return false
bool RollbackFile::discardStillborn()
{
    m_p->state = JournalState::Unreadable;
    io::removeJournal(journalInfo().absoluteFilePath(), journalDevice().get(), {}, false);
    close();
    return false;
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
    const QFileInfo absolute(journal.absoluteFilePath());
    if (absolute.filePath() != m_p->journal.filePath()) {
        m_p->spare.reset();
    }
    m_p->journal = absolute;
    m_p->forgetPlace();
    RollbackDevice::m_p->barriers.setFolder(m_p->journal.absolutePath());
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
    m_p->resolvePlace();
    const QString path = m_p->resolved(file);
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
    return addFileImpl(m_p->storedName(path));
}

void RollbackFile::remove(const IOPtr& device)
{
    io::SpareJournal* const spare = m_p->spareJournal();
    if (spare && device && device.get_deleter() == &releaseJournal &&
        spare->keep(static_cast<io::StorageFile&>(*device))) {
        return; // that was its end
    }
    io::Barriers& barriers = RollbackDevice::m_p->barriers;
    JournalRemoval removal = io::removeJournal(m_p->journal.absoluteFilePath(), device.get(),
                                               encodeHeader(journal::freshHeader()), barriers.areOn());
    if (!removal.effective && removal.synced && !barriers.afterNames()) {
        removal.synced = false;
        removal.reason = barriers.fault().whole();
    }
    if (!removal.reason.isEmpty()) {
        reportFailure(removal.reason);
    }
    reportRemoval(removal);
}

} // namespace veltor::utils
