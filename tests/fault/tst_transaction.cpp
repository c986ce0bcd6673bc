// Random transactions against a model in memory: the process dies, or an operation fails, at every step of
// them and of their recovery. Then what other programs and other people do to a transaction.

#include "RandomTransaction.h"
#include "support/LogCapture.h"
#include "support/Platform.h"
#include "support/Process.h"

#include "platform/NameIo.h"
#include "utils/storage/journal/Manifest.h"

#include <veltor/utils/Transaction.h>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using utils::SecuredFile;
using utils::Transaction;
using Status = Transaction::Status;
using Record = utils::journal::NameRecord;

#if defined(VELTOR_EMULATED)
constexpr unsigned Seeds = 1;
constexpr int KillRounds = 8;
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned Seeds = 4;
constexpr int KillRounds = 20;
#else
constexpr unsigned Seeds = 8;
constexpr int KillRounds = 30;
#endif

/// Lets the plan in force decide of names too.
class PlannedNames : platform::NameIo
{
public:
    PlannedNames() { platform::exchangeNameIo(this); }
    ~PlannedNames() override { platform::exchangeNameIo(nullptr); }
    PlannedNames(const PlannedNames&) = delete;
    PlannedNames& operator=(const PlannedNames&) = delete;

private:
    static constexpr int failure = 5; // EIO, or that access is denied

    template <typename Operation>
    static int planned(Operation operation)
    {
        const bool whole = Plan::admitWhole();
        const bool done = whole || (Plan::inForce && Plan::inForce->fate == Fate::Applied);
        return done ? operation() : failure;
    }
    int createFile(const Path& folder, const Path& name) override
    {
        return planned([&] { return NameIo::createFile(folder, name); });
    }
    int createFolder(const Path& folder, const Path& name) override
    {
        return planned([&] { return NameIo::createFolder(folder, name); });
    }
    int move(const Path& folder, const Path& from, const Path& to, bool replace, bool through) override
    {
        return planned([&] { return NameIo::move(folder, from, to, replace, through); });
    }
    int removeFile(const Path& folder, const Path& name) override
    {
        return planned([&] { return NameIo::removeFile(folder, name); });
    }
    int removeFolder(const Path& folder, const Path& name) override
    {
        return planned([&] { return NameIo::removeFolder(folder, name); });
    }
};

class TransactionModel : public testing::Test
{
protected:
    static Transaction::Options options(unsigned seed)
    {
        Transaction::Options options;
        options.spare = seed % 2 == 0;
        options.durability = seed % 4 == 1 ? utils::Durability::Durable : utils::Durability::None;
        return options;
    }
    /// A run under a plan, up to its end or death.
    Files run(unsigned seed, Plan& plan)
    {
        m_world.reset();
        const PlanScope scope(plan);
        const PlannedNames names;
        RandomTransaction transaction(m_world, seed, options(seed));
        const Files left = transaction.finish();
        m_mayBeCommitted = transaction.reachedCommit();
        m_committed = transaction.model();
        return left;
    }
    /// What is there, for a failure's message.
    std::string found() const
    {
        std::string text;
        for (const auto& [name, bytes] : m_world.read()) {
            text += name.toStdString() + ":" + std::to_string(bytes.size()) + " ";
        }
        return text + m_reason.toStdString();
    }
    bool recover(Plan plan = {})
    {
        const PlanScope scope(plan);
        const PlannedNames names;
        Transaction::Result result = Transaction::recover(m_world.journal(), {}).result;
        if (result.status == Status::Damaged) {
            // Half of the header's two ends: the only link that no repair completes. No file was changed yet.
            result = Transaction::discard(m_world.journal(), {});
        }
        m_reason = result.reason;
        return bool(result);
    }
    void expectOneOrTheOther(const std::string& where)
    {
        const Files left = m_world.read();
        ASSERT_TRUE(left == World::originals() || (m_mayBeCommitted && left == m_committed))
            << where << " " << found();
    }

    World m_world;
    LogCapture m_log;
    bool m_mayBeCommitted = false;
    Files m_committed;
    QString m_reason; // of the last recovery
};

TEST_F(TransactionModel, ChangesWhatTheModelSays)
{
    for (unsigned seed = 0; seed < Seeds * 20; ++seed) {
        m_world.reset();
        const Files expected = RandomTransaction(m_world, seed, options(seed)).finish();
        ASSERT_TRUE(m_world.read() == expected) << "seed " << seed;
    }
}

TEST_F(TransactionModel, DeathAtEveryStepLeavesAllOrNothing)
{
    int stops = 0;
    for (unsigned seed = 0; seed < Seeds; ++seed) {
        Plan counting;
        run(seed, counting);
        for (int chosen = 0; chosen < counting.count; ++chosen) {
            constexpr Fate fates[] = {Fate::NotApplied, Fate::Applied, Fate::Torn};
            const Fate fate = fates[(static_cast<unsigned>(chosen) + seed) % 3];
            Plan plan{chosen, fate};
            run(seed, plan);
            ASSERT_TRUE(plan.dead);
            const std::string where = "seed " + std::to_string(seed) + ", operation " +
                                      std::to_string(chosen) + ", fate " +
                                      std::to_string(static_cast<int>(fate));
            // The next owner may die too, wherever: here at one step, another one each time.
            recover({(chosen * 7 + static_cast<int>(fate)) % 23, fate});
            ASSERT_TRUE(recover()) << where << " " << found();
            expectOneOrTheOther(where);
            ++stops;
        }
    }
    std::printf("%d stop points\n", stops);
}

TEST_F(TransactionModel, AnOperationThatFailsLeavesAllOrNothing)
{
    for (unsigned seed = 0; seed < Seeds; ++seed) {
        for (const auto& [reads, fate] :
             {std::pair(false, Fate::Error), {false, Fate::ShortWrite}, {true, Fate::Error}}) {
            Plan counting{-1, fate, reads};
            run(seed, counting);
            for (int chosen = 0; chosen < counting.count; ++chosen) {
                Plan plan{chosen, fate, reads};
                const Files told = run(seed, plan);
                ASSERT_TRUE(recover());
                ASSERT_TRUE(m_world.read() == told)
                    << "seed " << seed << ", " << (reads ? "read " : "operation ") << chosen << ", fate "
                    << static_cast<int>(fate) << " " << found();
            }
        }
    }
}

/// Holds or ends a transaction that touches everything a transaction can touch.
int change(const QString& folder, bool hold)
{
    const LogCapture log;
    const auto path = [&](const char* name) { return folder + u("/") + u(name); };
    sayReady();
    for (bool there = false;; there = !there) {
        Transaction transaction = Transaction::begin(path("journal"));
        if (!transaction.isActive()) {
            return static_cast<int>(transaction.beginning().status);
        }
        const char* const from = transaction.exists(path("e")) ? "e" : "a";
        const auto file = transaction.open(path(from));
        if (!file || file->write("changed") != 7 ||
            !transaction.rename(path(from), path(*from == 'a' ? "e" : "a")) ||
            !transaction.remove(path("b")) || !transaction.create(path("b")) ||
            transaction.open(path("b"))->write(pattern(5000, 9)) != 5000) {
            return 100;
        }
        if (hold) {
            std::puts("held");
            std::fflush(stdout);
            std::getchar();
        }
        if (!transaction.commit()) {
            return 101;
        }
    }
}

const Role changes("transactions", [](const QStringList& arguments) { return change(arguments[0], false); });
const Role holds("held transaction", [](const QStringList& arguments) { return change(arguments[0], true); });

TEST(TransactionKill, AnotherOwnerIsToldAndAfterADeathFindsAllOrNothing)
{
    const World world;
    const LogCapture log;
    world.reset();
    {
        Actor owner("held transaction", {world.path()});
        while (!owner.readAll().contains("held")) {
            ASSERT_TRUE(owner.waitForReadyRead(60000));
        }
        const Files held = world.read();
        const Transaction second = Transaction::begin(world.journal());
        EXPECT_FALSE(second.isActive());
        EXPECT_EQ(second.beginning().status, Status::InUse);
#ifndef Q_OS_WIN // where a lock does not tell whose it is
        EXPECT_EQ(second.beginning().ownerPid, owner.processId());
#endif
        EXPECT_EQ(Transaction::recover(world.journal(), {}).result.status, Status::InUse);
        EXPECT_EQ(Transaction::discard(world.journal(), {}).status, Status::InUse);
        EXPECT_EQ(Transaction::nameChanges(world.journal()).size(), 3U);
        EXPECT_TRUE(world.read() == held);
    }
    // A plain reader of journals restores the contents; the names were never changed.
    utils::RollbackFile plain;
    EXPECT_TRUE(plain.openByName(QFileInfo(world.journal()), QIODevice::ReadWrite) && plain.rollback());
    EXPECT_TRUE(Transaction::recover(world.journal(), {}).result);
    EXPECT_TRUE(world.read() == World::originals());

    for (int round = 0; round < KillRounds; ++round) {
        world.reset();
        Actor victim("transactions", {world.path()});
        ASSERT_TRUE(victim.isReady());
        ASSERT_TRUE(victim.killWithin(6000));
        ASSERT_TRUE(Transaction::recover(world.journal(), {}).result) << round;
        const Files left = world.read();
        // The first transaction replaces "b", each one renames and marks the other file.
        const bool begun = left.at(u("b")) != World::originals().at(u("b"));
        ASSERT_EQ(left.size(), World::originals().size()) << round;
        ASSERT_TRUE(left == World::originals() || (begun && left.at(u("b")) == pattern(5000, 9) &&
                                                   (left.count(u("a")) == 0) != (left.count(u("e")) == 0)))
            << round;
    }
}

TEST(TransactionProgress, ALongRollbackIsWatchedAndCanBeCancelled)
{
    const World world;
    const LogCapture log;
    world.reset();
    unsigned long long allowed = 3;
    Transaction::Options options;
    options.progress = [&](unsigned long long restored, unsigned long long total) {
        EXPECT_EQ(total, 21U); // one is the manifest's
        return restored < allowed;
    };
    {
        Transaction transaction = Transaction::begin(world.journal(), options);
        for (int block = 0; block < 20; ++block) {
            EXPECT_EQ(transaction.open(world.path(u("a")))->write("changed"), 7);
        }
        EXPECT_TRUE(transaction.create(world.path(u("e"))));
        EXPECT_EQ(transaction.rollback().status, Status::Canceled);
        EXPECT_FALSE(transaction.isActive()); // and its end does not begin again
    }
    EXPECT_FALSE(world.read() == World::originals());
    EXPECT_EQ(Transaction::begin(world.journal(), options).beginning().status, Status::Canceled);
    allowed = 100;
    EXPECT_EQ(Transaction::begin(world.journal(), options).recovery().restored, 1U);
    EXPECT_TRUE(world.read() == World::originals());
}

/// What a sealed manifest of these records would do to a folder from somebody else.
TEST(TransactionPlanted, AManifestLeadsNowhereButBeneathTheJournal)
{
    const World world;
    const LogCapture log;
    const Folder elsewhere;
    const QString outside = elsewhere.path("outside");
    const QString hidden = u(".journal.transaction/");
    struct Row
    {
        Record record;
        Status status;
        bool truncated;
    };
    const auto row = [](Record::Kind kind, const char* name, const char* target, Status status,
                        bool truncated = false) {
        return Row{{kind, kind == Record::Kind::Create ? 1U : 2U, 0, u(name), u(target)}, status, truncated};
    };
    using K = Record::Kind;
    const Row rows[] = {
        row(K::Remove, "../outside", "", Status::Damaged),
        row(K::Remove, "/etc/passwd", "", Status::Damaged),
        row(K::Rename, "a", "sub/../../x", Status::Damaged),
        row(K::Remove, "journal", "", Status::Damaged),
        row(K::Rename, "a", ".journal.transaction/manifest", Status::Damaged),
        row(K::Create, "link/new", "", Status::NamesPending),
        row(K::Remove, "link/victim", "", Status::NamesPending),
        row(K::Create, "a", "", Status::NamesPending), // taken
        row(K::Remove, "a", "", Status::Damaged, true),
    };
    for (const Row& planted : rows) {
        QDir(outside).removeRecursively();
        QDir().mkpath(outside);
        world.reset();
        QFile::link(outside, world.path(u("link")));
        QFile victim(outside + u("/victim"));
        EXPECT_TRUE(victim.open(QIODevice::WriteOnly) && victim.write("precious") == 8);
        victim.close();
        QDir().mkpath(world.path(hidden));
        QFile::setPermissions(world.path(hidden), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        Record seal;
        seal.kind = K::Sealed;
        seal.number = 1;
        QByteArray bytes = utils::journal::manifestHead() + encodeRecord(planted.record) + encodeRecord(seal);
        bytes.chop(planted.truncated ? 1 : 0);
        for (const auto& [name, content] : {std::pair("manifest", bytes), {"1", QByteArray("new")}}) {
            QFile file(world.path(hidden + u(name)));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        }
        const Files before = world.read();
        const Transaction transaction = Transaction::begin(world.journal());
        EXPECT_EQ(transaction.beginning().status, planted.status)
            << planted.record.name.toStdString() << ": " << transaction.beginning().reason.toStdString();
        EXPECT_EQ(QDir(outside).entryList(QDir::Files), QStringList{u("victim")});
        EXPECT_TRUE(world.read() == before) << planted.record.name.toStdString();
    }
}

TEST(TransactionPlanted, WhatBelongsToAnotherUserIsNotTrusted)
{
    const World world;
    const LogCapture log;
    world.reset();
    QFile::setPermissions(world.path(), QFile::Permissions(0x7777));
    const auto status = [&](const Transaction::Options& options) {
        return static_cast<int>(Transaction::begin(world.journal(), options).beginning().status);
    };
    // A user plants a folder, then a journal; another one begins.
    const auto plantFolder = [&] { return QDir().mkpath(world.path(u(".journal.transaction"))) ? 0 : 1; };
    if (forked(plantFolder, User::Another) != 0) {
        GTEST_SKIP() << "no other user to be had";
    }
    EXPECT_EQ(status({}), static_cast<int>(Status::Foreign));
    Transaction::Options trusting;
    trusting.trustForeign = true;
    EXPECT_EQ(status(trusting), static_cast<int>(Status::Done));

    world.reset();
    QFile::setPermissions(world.path(), QFile::Permissions(0x7777));
    const auto plantJournal = [&] {
        utils::RollbackFile journal;
        QFile::setPermissions(world.path(u("a")), QFile::Permissions(0x6666));
        SecuredFile file;
        return journal.startNew(QFileInfo(world.journal())) && file.open(world.path(u("z")), journal) &&
                       file.write("planted") == 7
                   ? 0
                   : 1;
    };
    const auto prepare = [&] {
        QFile file(world.path(u("z")));
        return file.open(QIODevice::WriteOnly) && file.write("of another") == 10 ? 0 : 1;
    };
    ASSERT_EQ(forked(prepare, User::Another), 0);
    ASSERT_EQ(forked(plantJournal, User::Another), 0);
    EXPECT_EQ(status({}), static_cast<int>(Status::Foreign));
    EXPECT_EQ(status(trusting), static_cast<int>(Status::Done));
}

} // namespace
} // namespace veltor::test
