// A real process is killed at a random moment while it changes files, and while it recovers them. By the
// environment (tools/dev/kill-rounds sets it) VELTOR_KILL_ROUNDS times, and the tool VELTOR_KILL_TOOL, of
// another build, is the one that recovers.

#include "Scenario.h"
#include "support/LogCapture.h"
#include "support/Process.h"

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

constexpr int Rounds = 20;

const Role changes("change", [](const QStringList& arguments) {
    const Workspace files(arguments[0]);
    const LogCapture log;
    PlannedRollbackFile journal(static_cast<Path>(arguments[1].toInt()));
    sayReady();
    if (journal.openJournal(files.journal, QIODevice::WriteOnly)) {
        while (files.change(journal)) {
        }
    }
    return 1;
});

const Role recovers("recover", [](const QStringList& arguments) {
    const LogCapture log;
    sayReady();
    return Workspace(arguments[0]).recover(Path::Native) ? 0 : 1;
});

/// A death between the two links of a batch is refused by a build from before there were batches, which
/// changes nothing then; this build goes on.
bool recoverByTool(const QString& tool, const Workspace& files, int& refused)
{
    if (!QFileInfo::exists(files.journal) ||
        run(tool, {u("journal"), u("rollback"), files.journal}).status == 0) {
        return true;
    }
    ++refused;
    return files.recover(Path::Native);
}

TEST(Kill, FilesAreAsTheyWereAfterAnyDeath)
{
    constexpr Path ways[] = {Path::Native, Path::Spare, Path::Durable};
    constexpr qint64 piece = 65536;
    const Folder folder;
    const Workspace files(folder.path());
    const QString tool = qEnvironmentVariable("VELTOR_KILL_TOOL");
    const int wanted = qEnvironmentVariableIntValue("VELTOR_KILL_ROUNDS");
    const int rounds = wanted > 0 ? wanted : Rounds;
    int killed = 0;
    int killedRecovering = 0;
    int withRoom = 0;
    int refused = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto startAndKill = [&](const char* role, int longestUs) {
            Actor victim(role, {folder.path(), QString::number(static_cast<int>(ways[round % 3]))});
            EXPECT_TRUE(victim.isReady());
            return victim.killWithin(longestUs) ? 1 : 0;
        };
        files.reset();
        // Later ones have room; a slow machine gets longer, until it has come to one.
        killed += startAndKill("change", round % 2 == 0 ? 3000 : withRoom > 0 ? 9000 : 9000 * (round + 1));
        const qint64 size = QFileInfo(files.journal).size();
        withRoom += size > 0 && size % piece == 0 ? 1 : 0;
        if (round % 4 == 0 && tool.isEmpty()) {
            killedRecovering += startAndKill("recover", 1000);
        }
        const LogCapture log;
        ASSERT_TRUE(tool.isEmpty() ? files.recover(Path::Native) : recoverByTool(tool, files, refused))
            << round;
        ASSERT_TRUE(files.read() == Workspace::originals()) << round;
    }
    std::printf("%d rounds, %d killed while changing (%d with room), %d while recovering, %d refused\n",
                rounds, killed, withRoom, killedRecovering, refused);
    EXPECT_EQ(killed, rounds);
    EXPECT_GT(withRoom, 0);
}

} // namespace
} // namespace veltor::test
