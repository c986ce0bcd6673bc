// How a transaction begins: what a dead one has left is settled first. TransactionNames.cpp has the table of
// what may be found.

#include "utils/storage/TransactionPrivate.h"

namespace veltor::utils {

Transaction Transaction::begin(const QString& journal)
{
    return begin(journal, Options());
}

Transaction Transaction::begin(const QString& journal, const Options& options)
{
    auto p = std::make_unique<Private>(journal, options);
    p->beginning = p->start();
    p->recovery.result = p->beginning;
    return Transaction(std::move(p));
}

/// Takes the journal: settles what is left and starts anew, until nobody comes between the two.
Transaction::Result Transaction::Private::start()
{
    // Asked first without the lock: a journal to be recovered is no failure that the log should tell of.
    for (;;) {
        if (!RollbackFile::needsRecovery(journal.path())) {
            if (journal.startNew(journal.path())) {
                break;
            }
            if (journal.state() != JournalState::NeedsRecovery) {
                return journal.refusal();
            }
        }
        Result result = journal.openLeft(options.damaged);
        if (result) {
            result = journal.restore(recovery);
        }
        journal.close();
        if (!result && result.status != Status::NamesPending) {
            return result;
        }
    }
    bool finished = false;
    Result result = journal.names().settle(finished);
    recovery.finishedNames = recovery.finishedNames || finished;
    if (!result) {
        journal.setEnding(TransactionJournal::Ending::Settled);
        journal.commit();
        return fail(result);
    }
    state = State::Active;
    return result;
}

Transaction::Recovery Transaction::recover(const QString& journal, const Options& options)
{
    const QFileInfo file(journal);
    if (!file.exists() && !file.isSymLink() && !TransactionNames(file, true, false).exists()) {
        return {};
    }
    Transaction started = begin(journal, options);
    Recovery recovery = started.recovery();
    if (started.isActive()) {
        recovery.result = started.rollback();
    }
    return recovery;
}

Transaction::Result Transaction::discard(const QString& journal, const Options& options)
{
    TransactionJournal left(journal, options);
    if (QFileInfo::exists(journal) && !RollbackFile::needsRecovery(left.path())) {
        return recover(journal, options).result; // it protects nothing: names may still wait
    }
    left.setEnding(TransactionJournal::Ending::Keep);
    if (!left.openByName(left.path(), QIODevice::ReadWrite)) {
        if (!left.isOpen()) {
            return left.refusal();
        }
        const QString fault = left.errorString();
        left.repair();
        if (!left.isRecognized()) {
            return {Status::Damaged, fault, 0};
        }
    }
    const JournalRemoval removal = left.commit();
    return removal ? left.settled() : Result{Status::Failed, removal.reason, 0};
}

std::vector<Transaction::NameChange> Transaction::nameChanges(const QString& journal)
{
    std::vector<NameChange> changes;
    Result unread;
    const std::optional<journal::Manifest> manifest = TransactionNames(QFileInfo(journal), true, false).read(unread);
    if (manifest) {
        for (const journal::NameRecord& record : manifest->records) {
            const auto kind = record.kind == journal::NameRecord::Kind::Create   ? NameChange::Kind::Create
                              : record.kind == journal::NameRecord::Kind::Remove ? NameChange::Kind::Remove
                                                                                 : NameChange::Kind::Rename;
            changes.push_back({kind, record.name, record.target});
        }
    }
    return changes;
}

} // namespace veltor::utils
