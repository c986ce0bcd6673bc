#pragma once

#include "utils/storage/TransactionJournal.h"

#include <veltor/utils/Transaction.h>

#include <QtCore/QPointer>

#include <vector>

namespace veltor::utils {

/// What a transaction holds.
class Transaction::Private
{
public:
    /// Whether and how it goes on.
    enum class State
    {
        Ended,
        Active,
        Sealed,  ///< a commit failed: another one, or a rollback, can follow
        Broken,  ///< only a rollback can follow
        GivenUp, ///< a rollback was cancelled: the journal is left to the next owner
    };

    Private(const QString& path, const Options& wanted)
        : options(wanted)
        , journal(path, wanted)
    {}

    Result start();
    Result fail(const Result& failure) { return journal.fail(failure); }

    /// The name, if this transaction may change names now; it must pass `journal::NameMap::canTake`.
    [[nodiscard]] std::optional<QString> nameToChange(const QString& path, Result& failure) const;
    /// Done when the name means a file that may be renamed or removed; tells whether for the first time.
    Result checkFile(const QString& name, bool& first) const;
    Result checkFree(const QString& name) const;

    Result openManifest();
    Result note(const journal::NameRecord& record);
    Result appendToManifest(const QByteArray& bytes);
    Result seal();
    Result reloadNames();
    void closeFiles(bool all);
    void end();

    struct Opened
    {
        QPointer<SecuredFile> file;
        quint32 hidden; // 0: not made in this transaction
    };

    const Options options;
    TransactionJournal journal;
    Result beginning;
    Recovery recovery;
    State state = State::Ended;

    journal::NameMap names;
    quint32 lastNumber = 0;
    quint32 recordCount = 0;
    qint64 manifestSize = 0;
    RollbackDevice::Key manifest = 0; // 0: no name was touched yet

    std::vector<Opened> files;
    std::vector<unsigned long long> savepoints; // those that are good, in the order of time
    unsigned long long lastSavepoint = 0;
};

} // namespace veltor::utils
