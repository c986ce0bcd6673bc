#pragma once

#include "utils/storage/TransactionNames.h"

#include <veltor/utils/Transaction.h>

namespace veltor::utils {

/// The journal of a transaction, to whose end the change of names belongs: between the moment in which it
/// holds nothing any more and the one in which its name, and so its lock, goes.
class TransactionJournal : public RollbackFile
{
public:
    /// What its end means for the names.
    enum class Ending
    {
        Settled,  ///< nothing: there are none, or they are seen to elsewhere
        ByItself, ///< the manifest decides: sealed it was committed, otherwise rolled back
        Keep,     ///< somebody keeps the new contents of a dead transaction; its files are not opened
    };

    TransactionJournal(const QString& path, const Transaction::Options& options);

    [[nodiscard]] const QFileInfo& path() const noexcept { return m_path; }
    [[nodiscard]] TransactionNames& names() noexcept { return m_names; }
    [[nodiscard]] const TransactionNames& names() const noexcept { return m_names; }

    void setEnding(Ending ending) noexcept { m_ending = ending; }

    /// Opens it for recovery, salvaged if need be. Done: it can be rolled back.
    Transaction::Result openLeft(Transaction::DamagedJournal damaged);
    /// Rolls back, and tells of it.
    Transaction::Result restore(Transaction::Recovery& recovery);

    /// Why the journal is not open, after openByName() or startNew().
    [[nodiscard]] Transaction::Result refusal() const;
    /// How the names ended with the journal.
    [[nodiscard]] const Transaction::Result& settled() const noexcept { return m_settled; }
    [[nodiscard]] bool finishedNames() const noexcept { return m_finishedNames; }
    /// The name under which a damaged journal was kept.
    [[nodiscard]] const QString& keptAs() const noexcept { return m_keptAs; }

    /// Logs a failure. @return it
    Transaction::Result fail(const Transaction::Result& failure) const;
    Transaction::Result fail(const QString& reason,
                             Transaction::Status status = Transaction::Status::Failed) const;

    /// Opens nothing where the files do not matter.
    [[nodiscard]] IOPtr openFile(const QString& name) const override;

protected:
    void remove(const IOPtr& device) override;

private:
    void noteLost(const JournalView& listed);
    void keepDamaged(const IOPtr& device);
    void closeFiles() const;

    QFileInfo m_path;
    bool m_trustForeign;
    bool m_durable;
    TransactionNames m_names;
    Ending m_ending = Ending::ByItself;
    bool m_salvaged = false;
    bool m_finishedNames = false;
    std::vector<RollbackReport::Failure> m_lost; // by the damage of the journal
    unsigned long long m_restoredInPart = 0;
    Transaction::Result m_settled;
    QString m_keptAs;
};

} // namespace veltor::utils
