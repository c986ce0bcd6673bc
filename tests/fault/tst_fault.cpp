// A transaction is stopped, or meets a fault, at every single operation that reaches a device; so is its
// recovery. Afterwards every file is as it was, bit for bit.

#include "Scenario.h"
#include "platform/FileOpen.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>

namespace veltor::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int RecoveryStride = 7;
#elif defined(VELTOR_EMULATED)
constexpr int RecoveryStride = 97;
#else
constexpr int RecoveryStride = 3;
#endif

constexpr Fate deaths[] = {Fate::NotApplied, Fate::Applied, Fate::Torn};

class Fault : public testing::TestWithParam<Path>
{
protected:
    /// Runs the transaction under a plan and commits it; true when everything went well.
    bool transact(Plan& plan, bool keepOpen = false)
    {
        if (GetParam() == Path::Spare) {
            PlannedRollbackFile first(GetParam());
            EXPECT_TRUE(first.openJournal(m_files.journal, QIODevice::WriteOnly) && first.commit());
        }
        const PlanScope scope(plan);
        m_journal = std::make_unique<PlannedRollbackFile>(GetParam());
        const bool committed = m_journal->openJournal(m_files.journal, QIODevice::WriteOnly) &&
                               m_files.change(*m_journal) && m_journal->commit();
        if (!keepOpen) {
            m_journal.reset();
        }
        return committed;
    }

    bool recover(Plan& plan)
    {
        const PlanScope scope(plan);
        return m_files.recover(GetParam());
    }

    int countOperations(bool reads = false)
    {
        m_files.reset();
        Plan plan{-1, Fate::Error, reads};
        EXPECT_TRUE(transact(plan));
        return plan.count;
    }

    static std::string where(const Plan& plan)
    {
        return "operation " + std::to_string(plan.chosen) + ", fate " +
               std::to_string(static_cast<int>(plan.fate));
    }

    Folder m_folder;
    Workspace m_files{m_folder.path()};
    std::unique_ptr<PlannedRollbackFile> m_journal;
    LogCapture m_log;
};

/// The next owner may die too: after some of the deaths at each step of its recovery, until there is none.
TEST_P(Fault, DeathAtEveryOperationAndInRecoveryIsRecoveredFrom)
{
    const int operations = countOperations();
    ASSERT_GT(operations, 60);
    const Contents committed = m_files.read();
    int stops = 0;
    for (int chosen = 0; chosen < operations; ++chosen) {
        for (const Fate fate : deaths) {
            bool met = true;
            for (int step = chosen % RecoveryStride == 0 ? 0 : INT_MAX - 1; met; ++step, ++stops) {
                m_files.reset();
                Plan death{chosen, fate};
                transact(death);
                ASSERT_TRUE(death.dead);
                // By the last one, or by the last two where it is emptied first.
                const bool ended = chosen >= operations - 2 && QFileInfo(m_files.journal).size() == 0;
                ASSERT_TRUE(ended || chosen != operations - 1 || fate != Fate::Applied);
                Plan again{step, fate};
                recover(again);
                met = again.dead;
                Plan none;
                ASSERT_TRUE(recover(none)) << where(death) << ", recovery " << where(again);
                ASSERT_TRUE(m_files.read() == (ended ? committed : Workspace::originals()))
                    << where(death) << ", recovery " << where(again);
                ASSERT_FALSE(QFileInfo::exists(m_files.journal));
            }
        }
    }
    std::printf("%d operations, %d stop points\n", operations, stops);
}

TEST_P(Fault, AnOperationThatFailsFailsTheTransactionWhichRollsBack)
{
    // A short read is no failure: a device may give less than asked for and the rest later. Nor is what is
    // only there to be faster: room in the journal; to begin on the spare, two reads and two operations. Nor
    // one step of the end, which has others.
    const auto isNeedless = [](const Plan& plan, int operations) {
        const bool inOneStep = platform::RemovesOpenFiles && GetParam() != Path::Generic;
        const bool ends = !plan.reads && plan.chosen >= operations - (inOneStep ? 1 : 2);
        return ends || plan.metRoom || (GetParam() == Path::Spare && plan.chosen < 2);
    };
    Plan whole;
    m_files.reset();
    ASSERT_TRUE(transact(whole));
    const Contents committed = m_files.read();
    for (const auto& [reads, fate] :
         {std::pair(false, Fate::Error), {false, Fate::ShortWrite}, {true, Fate::Error}}) {
        const int operations = countOperations(reads);
        ASSERT_GT(operations, reads ? 5 : 60);
        for (int chosen = 0; chosen < operations; ++chosen) {
            m_files.reset();
            Plan plan{chosen, fate, reads};
            const bool done = transact(plan, true);
            ASSERT_EQ(done, isNeedless(plan, operations)) << where(plan);
            if (done) {
                ASSERT_TRUE(m_files.read() == committed) << where(plan);
                continue;
            }
            ASSERT_FALSE(m_log.takeTexts(logging::LogLevel::Error).isEmpty()) << where(plan);
            // The journal in hand and the journal on disk tell the same: take them in turn. One that
            // could not even be created is none in hand.
            const bool recovered = chosen % 2 == 0 && m_journal->rollback();
            m_journal.reset();
            Plan none;
            ASSERT_TRUE(recovered || recover(none)) << where(plan);
            ASSERT_TRUE(m_files.read() == Workspace::originals()) << where(plan);
            ASSERT_FALSE(QFileInfo::exists(m_files.journal)) << where(plan);
        }
    }
}

/// What was saved in one piece is read back in several, after it was checked.
TEST(LongRange, IsRestoredAsAWholeOrStaysInTheJournal)
{
    const Folder folder;
    const LogCapture log;
    const QByteArray content = pattern(900000, 1);
    const auto recover = [&](Plan plan) {
        const PlanScope scope(plan);
        PlannedRollbackFile journal(Path::Native);
        static_cast<void>(journal.openJournal(folder.path("journal"), QIODevice::ReadWrite) &&
                          journal.rollback());
        return plan.count;
    };
    int chosen = 0;
    for (bool met = true; met; ++chosen) {
        folder.write("a", content);
        {
            PlannedRollbackFile journal(Path::Native);
            ASSERT_TRUE(journal.openJournal(folder.path("journal"), QIODevice::WriteOnly) &&
                        Change(folder.path("a"), journal).resize(0));
        }
        met = recover({chosen, Fate::Error, true}) > chosen;
        if (QFileInfo::exists(folder.path("journal"))) {
            recover({});
        }
        ASSERT_TRUE(folder.read("a") == content) << chosen;
    }
    EXPECT_GT(chosen, 10);
}

#ifdef Q_OS_WIN // where no spare is kept
constexpr Path paths[] = {Path::Native, Path::Generic, Path::Durable};
#else
constexpr Path paths[] = {Path::Native, Path::Generic, Path::Durable, Path::Spare};
#endif
INSTANTIATE_TEST_SUITE_P(Storage, Fault, testing::ValuesIn(paths), [](const auto& row) {
    return row.param == Path::Native    ? std::string("Native")
           : row.param == Path::Generic ? std::string("Generic")
           : row.param == Path::Durable ? std::string("Durable")
                                        : std::string("Spare");
});

} // namespace
} // namespace veltor::test
