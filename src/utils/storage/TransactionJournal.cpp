// The journal of a transaction: how it is recovered, and what its end does to the names.

#include "utils/storage/TransactionJournal.h"

#include "utils/storage/TransactionMessages.h"
#include "utils/storage/io/DeviceIo.h"

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QSet>

#include <algorithm>

namespace veltor::utils {
namespace {

namespace message = transaction::message;
using Result = Transaction::Result;
using Status = Transaction::Status;

} // namespace

TransactionJournal::TransactionJournal(const QString& path, const Transaction::Options& options)
    : m_path(QFileInfo(path).absoluteFilePath())
    , m_trustForeign(options.trustForeign)
    , m_durable(options.durability != Durability::None)
    , m_names(m_path, options.trustForeign, m_durable)
{
    setDurability(options.durability);
    setNameRule(options.nameRule);
    setOwnJournalsOnly(!options.trustForeign);
    if (options.progress) {
        setRollbackProgress([this, progress = options.progress](quint64 restored, quint64 total) {
            if (!progress(restored, total)) {
                cancelRollback();
            }
        });
    }
}

Result TransactionJournal::fail(const Result& failure) const
{
    reportFailure(failure.reason);
    return failure;
}

Result TransactionJournal::fail(const QString& reason, Status status) const
{
    return fail(Result{status, reason, 0});
}

Result TransactionJournal::refusal() const
{
    if (state() == JournalState::InUse) {
        return {Status::InUse, errorString(), ownerPid()};
    }
    const bool foreign = state() == JournalState::Unreadable && !m_trustForeign &&
                         QFileInfo::exists(m_path.filePath()) && !inspect(m_path).belongsToUser;
    return {foreign ? Status::Foreign : Status::Failed, errorString(), 0};
}

Result TransactionJournal::openLeft(Transaction::DamagedJournal damaged)
{
    m_salvaged = !openByName(m_path, QIODevice::ReadWrite);
    if (!isOpen()) {
        return refusal();
    }
    if (!m_salvaged) {
        return {};
    }
    const QString fault = errorString();
    const JournalView listed = inspect(m_path);
    repair();
    if (repairedWhole()) {
        return {};
    }
    if (damaged == Transaction::DamagedJournal::Refuse || !isRecognized() || protectedFiles().empty()) {
        close();
        return fail(message::journalDamaged(m_path.filePath(), fault), Status::Damaged);
    }
    noteLost(listed);
    return {};
}

/// What a rollback cannot restore, or not whole, of the files that the damaged journal lists.
void TransactionJournal::noteLost(const JournalView& listed)
{
    QSet<QString> whole;
    for (const ProtectedFile& file : protectedFiles()) {
        if (file.whole) {
            whole.insert(file.name);
        } else {
            ++m_restoredInPart;
        }
    }
    for (const ProtectedFile& file : listed.files) {
        if (!whole.contains(file.name)) {
            const bool opened = existingFile(file.name) != nullptr;
            m_lost.push_back({file.name, opened ? message::restoredInPart() : message::notRestorable()});
        }
    }
}

Result TransactionJournal::restore(Transaction::Recovery& recovery)
{
    const auto files = protectedFiles();
    const auto isHidden = [this](const auto& file) { return m_names.isOwn(file.name); };
    const auto hidden = static_cast<quint64>(std::count_if(files.begin(), files.end(), isHidden));
    const bool restored = rollback();
    const RollbackReport& report = rollbackReport();
    recovery.foundJournal = true;
    // Told are the files that somebody knows, and those that are what they were.
    const quint64 untold = restored ? hidden + m_restoredInPart : 0;
    recovery.restored += report.restored - std::min<quint64>(report.restored, untold);
    recovery.failures = report.failures;
    recovery.failures.insert(recovery.failures.end(), m_lost.begin(), m_lost.end());
    recovery.keptAs = m_keptAs;
    recovery.finishedNames = m_finishedNames;
    m_salvaged = m_salvaged && !restored; // another journal follows
    if (restored) {
        return m_settled;
    }
    if (!report.journal.synced) {
        return {Status::Unsynced, report.journal.reason, 0};
    }
    if (report.canceled) {
        return fail(message::canceled(m_path.filePath()), Status::Canceled);
    }
    if (!report.failures.empty()) {
        const auto count = static_cast<int>(report.failures.size());
        return fail(message::notRestored(count, m_path.filePath(), report.failures.front().reason));
    }
    return {Status::Failed, report.journal.reason.isEmpty() ? errorString() : report.journal.reason, 0};
}

IOPtr TransactionJournal::openFile(const QString& name) const
{
    if (m_ending != Ending::Keep) {
        return RollbackFile::openFile(name);
    }
    IOPtr nothing = makeIOPtr(new QBuffer);
    nothing->open(QIODevice::ReadWrite);
    return nothing;
}

/// Renamed or removed is only what nobody has open, where the system is strict about it.
void TransactionJournal::closeFiles() const
{
    for (const ProtectedFile& file : protectedFiles()) {
        const RollbackFileInfo* const info = existingFile(file.name);
        if (info && info->device) {
            info->device->close();
        }
    }
}

void TransactionJournal::remove(const IOPtr& device)
{
    if (m_salvaged && !repairedWhole() && m_ending == Ending::ByItself) {
        keepDamaged(device);
        return;
    }
    if (m_ending == Ending::Keep) {
        m_settled = m_names.seal();
        if (!m_settled) {
            reportRemoval({false, true, m_settled.reason});
            return;
        }
    }
    // A journal that cannot be written is removed with its lock; then the next owner sees to the names.
    const io::DeviceIo io(*device);
    if (m_ending != Ending::Settled && m_names.exists() && io.resize(0)) {
        closeFiles();
        // No name may change on the disk while the journal there holds anything.
        const bool settles = !m_durable || io.sync();
        m_settled = settles ? m_names.settle(m_finishedNames)
                            : Result{Status::Failed, message::cannotSync(m_path.filePath(), io.reason()), 0};
        if (!m_settled) {
            reportFailure(m_settled.reason);
            m_settled.status = Status::NamesPending; // its end is settled all the same
        }
    }
    RollbackFile::remove(device);
}

/// It is the only copy of the bytes that were left out.
void TransactionJournal::keepDamaged(const IOPtr& device)
{
    m_settled = m_names.abandon();
    const QString path = m_path.filePath();
    QString name = path + QStringLiteral(".damaged");
    for (int number = 2; QFileInfo::exists(name); ++number) {
        name = path + QStringLiteral(".damaged-%1").arg(number);
    }
    device->close();
    QFile journal(path);
    if (journal.rename(name)) {
        m_keptAs = name;
    } else {
        reportRemoval({false, true, message::cannotMove(path, name, journal.errorString())});
    }
}

} // namespace veltor::utils
