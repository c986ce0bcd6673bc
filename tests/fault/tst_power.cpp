// The power goes at any moment of a durable transaction, and again in its recovery. Files are then all old or
// all new, or the journal is refused: never a mixture, and never is a commit lost that had succeeded.

#include "PowerDisk.h"
#include "RandomTransaction.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using utils::Durability;
using utils::Transaction;
using Status = Transaction::Status;

/// How many images a test looks at; VELTOR_POWER_IMAGES has another number.
int imageCount(int usual)
{
    const int wanted = qEnvironmentVariableIntValue("VELTOR_POWER_IMAGES");
#ifdef VELTOR_EMULATED
    usual /= 5;
#endif
    return wanted > 0 ? wanted : usual;
}

struct Verdict
{
    int images = 0;
    int refused = 0;
    int wrong = 0; ///< a mixture, or a commit that was lost
    std::string firstWrong;
};

class Power : public testing::Test
{
protected:
    static Transaction::Options options(Durability durability)
    {
        Transaction::Options chosen;
        chosen.durability = durability;
        return chosen;
    }

    void write(const Files& image)
    {
        QDir(m_world.path()).removeRecursively();
        for (const auto& [name, bytes] : image) {
            const QString path = m_world.path(name);
            QDir().mkpath(name.endsWith(QLatin1Char('/')) ? path : QFileInfo(path).path());
            if (name.startsWith(u(".")) && name.endsWith(QLatin1Char('/'))) {
                QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            }
            QFile file(path);
            if (!name.endsWith(QLatin1Char('/')) && (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
                                                     file.write(bytes) != bytes.size())) {
                qFatal("cannot write an image");
            }
        }
    }

    /// Cuts the power of random transactions until there are enough images.
    Verdict judge(Durability durability, int images, Barrier deaf = Barrier::None)
    {
        Verdict verdict;
        const bool namesOnly =
            deaf >= Barrier::JournalEnd && deaf <= Barrier::MovedToPlace && deaf != Barrier::NewNames;
        for (unsigned seed = 0; verdict.images < images && (deaf == Barrier::None || verdict.wrong == 0);
             ++seed) {
            m_world.reset();
            const PowerDisk disk(m_world.path());
            RandomTransaction transaction(m_world, seed, options(durability), seed % 2 == 0 || namesOnly);
            const Files left = transaction.finish();
            for (int turn = 0; turn < 40 && verdict.images < images; ++turn) {
                std::mt19937 random(seed * 1000 + static_cast<unsigned>(turn));
                // Some when all is done, some while names change, others anywhere.
                const std::size_t steps = disk.steps().size();
                const std::size_t lately =
                    std::min<std::size_t>(steps, turn % 3 == 1 || namesOnly ? 16 : steps);
                const std::size_t at = turn % 8 == 0 ? steps : steps - lately + random() % lately;
                const bool ended = at == steps;
                const auto order = static_cast<DiskOrder>(random() % 3);
                const auto isRight = [&](const Files& found) {
                    return found == left ||
                           (!ended && (found == World::originals() ||
                                       (transaction.reachedCommit() && found == transaction.model())));
                };
                const std::string where = "seed " + std::to_string(seed) + ", turn " + std::to_string(turn) +
                                          ", step " + std::to_string(at) + " of " + std::to_string(steps) +
                                          ", order " + std::to_string(static_cast<int>(order));
                recoverFrom(disk.cut(at, order, deaf, random), durability, ended, isRight, where, random,
                            verdict);
            }
        }
        return verdict;
    }

    template <typename IsRight>
    void recoverFrom(const Files& image, Durability durability, bool ended, const IsRight& isRight,
                     const std::string& where, std::mt19937& random, Verdict& verdict)
    {
        ++verdict.images;
        write(image);
        const auto judgeIt = [&](const Transaction::Result& result, const char* which) {
            const Files found = m_world.read();
            if (!result) {
                ++verdict.refused;
            }
            const bool wrong = result ? !isRight(found) : ended;
            if (wrong && verdict.wrong++ == 0) {
                verdict.firstWrong = where + which + ": " + result.reason.toStdString();
                for (const auto& [name, bytes] : found) {
                    verdict.firstWrong += " " + name.toStdString() + ":" + std::to_string(bytes.size());
                }
            }
        };
        std::optional<PowerDisk> recovery(std::in_place, m_world.path());
        const auto recover = [&] {
            return Transaction::recover(m_world.journal(), options(durability)).result;
        };
        const Transaction::Result result = recover();
        judgeIt(result, "");
        if (result && random() % 3 == 0) {
            const std::size_t at = random() % (recovery->steps().size() + 1);
            const Files again =
                recovery->cut(at, static_cast<DiskOrder>(random() % 3), Barrier::None, random);
            recovery.reset();
            write(again);
            recovery.emplace(m_world.path());
            ++verdict.images;
            judgeIt(recover(), ", again");
        }
    }

    World m_world;
    LogCapture m_log;
};

TEST_F(Power, LeavesAllOrNothing)
{
    for (const auto& [durability, name] :
         {std::pair(Durability::Durable, "durable"), {Durability::Careful, "careful"}}) {
        const Verdict verdict = judge(durability, imageCount(700));
        std::printf("%s: %d images, %d refused, %d wrong\n", name, verdict.images, verdict.refused,
                    verdict.wrong);
        EXPECT_EQ(verdict.wrong, 0) << verdict.firstWrong;
        if (durability == Durability::Careful) {
            EXPECT_LT(verdict.refused * 100, verdict.images);
        }
    }
}

/// Each sync fails in turn: what was to wait for it fails with its reason, and all or nothing holds.
TEST_F(Power, ASyncThatFailsFailsTheTransaction)
{
    for (const bool names : {false, true}) {
        for (std::size_t failing = 0;; ++failing) {
            m_world.reset();
            std::optional<PowerDisk> disk(std::in_place, m_world.path());
            disk->failFrom(failing);
            std::optional<Transaction> begun(
                Transaction::begin(m_world.journal(), options(Durability::Durable)));
            Transaction& change = *begun;
            const auto file = change.open(m_world.path(u("a")));
            bool done = file && file->write("changed") == 7;
            EXPECT_EQ(done, failing >= 2); // the journal and its name
            done = done && (!names || change.rename(m_world.path(u("b")), m_world.path(u("e"))));
            Transaction::Result result = done ? change.commit() : Transaction::Result{Status::Failed, {}, 0};
            if (result) {
                EXPECT_EQ(disk->syncs(), failing);
                break;
            }
            if (change.isActive()) {
                EXPECT_FALSE(change.errorString().isEmpty());
                EXPECT_FALSE(change.commit()) << "as if nothing had happened";
                EXPECT_FALSE(change.rollback()) << "which has syncs too";
            } else {
                EXPECT_FALSE(result.reason.isEmpty());
            }
            const bool isFinal = result.status == Status::Unsynced || result.status == Status::NamesPending;
            begun.reset();
            disk.emplace(m_world.path());
            EXPECT_TRUE(Transaction::recover(m_world.journal(), options(Durability::Durable)).result);
            EXPECT_EQ(m_world.read() == World::originals(), !isFinal) << failing << " " << names;
        }
    }
}

/// Twelve pages of three files: what SQLite does with 3 (normal), 4 (full) or 5 (extra) syncs
/// of one file.
TEST_F(Power, CostsFewSyncs)
{
    struct Row
    {
        Durability durability;
        bool batch;
        std::size_t syncs;
    };
    for (const auto& [durability, batch, syncs] : {Row{Durability::None, false, 0},
                                                   {Durability::Durable, false, 17},
                                                   {Durability::Durable, true, 6},
                                                   {Durability::Careful, false, 33},
                                                   {Durability::Careful, true, 11}}) {
        m_world.reset();
        for (const char* name : {"a", "b", "c"}) {
            QFile file(m_world.path(u(name)));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(qint64(16) * 4096));
        }
        const PowerDisk disk(m_world.path());
        Transaction change = Transaction::begin(m_world.journal(), options(durability));
        std::vector<std::unique_ptr<utils::SecuredFile>> files;
        std::vector<Transaction::Block> blocks;
        for (int page = 0; page < 12; ++page) {
            files.push_back(change.open(m_world.path(u(page % 3 == 0 ? "a" : page % 3 == 1 ? "b" : "c"))));
            ASSERT_TRUE(files.back());
            blocks.push_back({files.back().get(), qint64(page) * 4096, pattern(4096, page)});
            EXPECT_TRUE(batch || change.writeBlocks({blocks.back()}));
        }
        EXPECT_TRUE(!batch || change.writeBlocks(blocks));
        EXPECT_TRUE(change.commit());
        std::printf("durability %d, %s: %zu syncs\n", static_cast<int>(durability),
                    batch ? "a batch" : "one by one", disk.syncs());
        EXPECT_EQ(disk.syncs(), syncs);
    }
}

/// A barrier left out is found, whichever: the disk is deaf to it.
TEST_F(Power, FindsEveryBarrierThatIsLeftOut)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(VELTOR_EMULATED)
    GTEST_SKIP() << "long here, and the plain builds prove as much";
#endif
    const std::pair<Barrier, const char*> barriers[] = {{Barrier::JournalBytes, "journal before a change"},
                                                        {Barrier::JournalName, "journal's name"},
                                                        {Barrier::Contents, "files before the journal goes"},
                                                        {Barrier::JournalEnd, "empty journal before names"},
                                                        {Barrier::NewNames, "hidden folder"},
                                                        {Barrier::MovedAside, "names moved aside"},
                                                        {Barrier::MovedRecord, "record of that"},
                                                        {Barrier::MovedToPlace, "names moved to place"},
                                                        {Barrier::Disappearance, "journal's end"}};
    for (const auto& [barrier, name] : barriers) {
        const Verdict verdict = judge(Durability::Durable, imageCount(8000), barrier);
        std::printf("%-30s %6d images, %d refused, %d wrong: %s\n", name, verdict.images, verdict.refused,
                    verdict.wrong, verdict.firstWrong.c_str());
        EXPECT_GT(verdict.wrong, 0) << name;
    }
}

} // namespace
} // namespace veltor::test
