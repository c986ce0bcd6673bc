#pragma once

#include "platform/FileIo.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <map>

namespace veltor::test {

/// What becomes of one chosen operation on a device, and of all that follow.
enum class Fate
{
    NotApplied, ///< the process dies before it
    Applied,    ///< the process dies right after it
    Torn,       ///< the process dies when half of its bytes have arrived
    Error,      ///< it does nothing and reports an error; the process lives on
    ShortWrite, ///< it does half of its work and reports that; the process lives on
};

/// Counts the operations that reach a device, and lets one of them meet its fate.
struct Plan
{
    int chosen = -1; ///< -1: none
    Fate fate = Fate::NotApplied;
    int count = 0;
    bool dead = false;
    bool reads = false; ///< count reads instead of writes, resizes and removals

    /// How many of `length` bytes the next operation may move; `met` tells that it was the chosen one.
    std::int64_t admit(std::int64_t length, bool isRead, bool& met);
};

/// Puts a plan in force: for plain files at the system-call layer, for every file that RollbackFile opens
/// through PlannedFile at the QIODevice layer.
class PlanScope
{
public:
    explicit PlanScope(Plan& plan);
    ~PlanScope();
    PlanScope(const PlanScope&) = delete;
    PlanScope& operator=(const PlanScope&) = delete;

private:
    platform::FileIo* m_io;
};

/// Which of the two ways to a file a scenario takes.
enum class Path
{
    Native,
    Generic
};

/// A RollbackFile whose files, and whose deletion of the journal, obey the plan in force.
class PlannedRollbackFile : public utils::RollbackFile
{
public:
    explicit PlannedRollbackFile(Path path)
        : m_path(path)
    {}

    bool openJournal(const QString& path, QIODevice::OpenMode mode);
    [[nodiscard]] IOPtr openFile(const QString& name) const override;

protected:
    void remove(const IOPtr& device) override;

private:
    Path m_path;
    QString m_journalPath;
};

using Contents = std::map<QString, QByteArray>;

/// A directory with several files and a journal.
class Workspace
{
public:
    explicit Workspace(QString directory);

    [[nodiscard]] QString path(const QString& name) const;
    [[nodiscard]] QString journal() const { return path(QStringLiteral("journal")); }
    /// Writes the files as they are before the transaction, and removes a journal.
    void reset() const;
    [[nodiscard]] Contents read() const;
    [[nodiscard]] static const Contents& originals();

    /// The transaction: writes inside, overlapping, at the end and beyond it, growing and shrinking
    /// resizes, on four files, one of them empty. Ends without commit or rollback.
    /// @return false at the first operation that fails
    bool change(utils::RollbackFile& journal) const;

    /// What a user does after a crash.
    bool recover(Path path) const;

private:
    QString m_directory;
};

} // namespace veltor::test
