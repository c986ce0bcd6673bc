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
            if (!name.endsWith(QLatin1Char('/')) &&
                (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())) {
                qFatal("cannot write an image");
            }
        }
    }

    /// Cuts the power of random transactions until there are enough images.
    Verdict judge(Durability durability, int images, Barrier deaf = Barrier::None)
    {
        Verdict verdict;
        for (unsigned seed = 0; verdict.images < images && (deaf == Barrier::None || verdict.wrong == 0); ++seed) {
            m_world.reset();
            const PowerDisk disk(m_world.path());
            RandomTransaction transaction(m_world, seed, options(durability), seed % 2 == 0);
            const Files left = transaction.finish();
            for (int turn = 0; turn < 40 && verdict.images < images; ++turn) {
                std::mt19937 random(seed * 1000 + static_cast<unsigned>(turn));
                const std::size_t at = turn % 8 == 0 ? disk.steps().size() : random() % disk.steps().size();
                const bool ended = at == disk.steps().size();
                const auto order = static_cast<DiskOrder>(random() % 3);
                const auto isRight = [&](const Files& found) {
                    return found == left || (!ended && (found == World::originals() ||
                                                        (transaction.reachedCommit() && found == transaction.model())));
                };
                const std::string where = "seed " + std::to_string(seed) + ", turn " + std::to_string(turn) +
                                          ", step " + std::to_string(at) + " of " +
                                          std::to_string(disk.steps().size()) + ", order " +
                                          std::to_string(static_cast<int>(order));
                recoverFrom(disk.cut(at, order, deaf, random), durability, ended, isRight, where, random, verdict);
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
            const Files again = recovery->cut(at, static_cast<DiskOrder>(random() % 3), Barrier::None, random);
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
        const Verdict verdict = judge(durability, imageCount(600));
        std::printf("%s: %d images, %d refused, %d wrong\n", name, verdict.images, verdict.refused,
                    verdict.wrong);
        EXPECT_EQ(verdict.wrong, 0) << verdict.firstWrong;
        if (durability == Durability::Careful) {
            EXPECT_LT(verdict.refused * 100, verdict.images);
        }
    }
}

/// A barrier left out is found, whichever: the disk is deaf to it.
TEST_F(Power, FindsEveryBarrierThatIsLeftOut)
{
    const std::pair<Barrier, const char*> barriers[] = {
        {Barrier::JournalBytes, "journal before a change"}, {Barrier::JournalName, "journal's name"},
        {Barrier::Contents, "files before the journal goes"}, {Barrier::JournalEnd, "empty journal before names"},
        {Barrier::NewNames, "hidden folder"}, {Barrier::MovedAside, "names moved aside"},
        {Barrier::MovedRecord, "record of that"}, {Barrier::MovedToPlace, "names moved to place"},
        {Barrier::Disappearance, "journal's end"}};
    for (const auto& [barrier, name] : barriers) {
        const Verdict verdict = judge(Durability::Durable, imageCount(20000), barrier);
        std::printf("%-30s %6d images, %d refused, %d wrong: %s\n", name, verdict.images, verdict.refused,
                    verdict.wrong, verdict.firstWrong.c_str());
        EXPECT_GT(verdict.wrong, 0) << name;
    }
}

} // namespace
} // namespace veltor::test
