// A real process is killed at a random moment while it changes files, and while it recovers them.

#include "Scenario.h"
#include "support/LogCapture.h"
#include "support/Process.h"

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(VELTOR_EMULATED)
constexpr int Rounds = 20;
#else
constexpr int Rounds = 60;
#endif

const Role changes("change", [](const QStringList& arguments) {
    const Workspace files(arguments[0]);
    const LogCapture log;
    PlannedRollbackFile journal(arguments[1] == u("spare") ? Path::Spare : Path::Native);
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

TEST(Kill, FilesAreAsTheyWereAfterAnyDeath)
{
    const Folder folder;
    const Workspace files(folder.path());
    int round = 0;
    const auto startAndKill = [&](const char* role, int longestUs) {
        Actor victim(role, {folder.path(), u(round % 2 == 0 ? "spare" : "")});
        EXPECT_TRUE(victim.isReady());
        return victim.killWithin(longestUs) ? 1 : 0;
    };
    int killed = 0;
    int killedRecovering = 0;
    for (; round < Rounds; ++round) {
        files.reset();
        killed += startAndKill("change", 3000);
        if (round % 3 == 0) {
            killedRecovering += startAndKill("recover", 1000);
        }
        const LogCapture log;
        ASSERT_TRUE(files.recover(Path::Native)) << round;
        ASSERT_TRUE(files.read() == Workspace::originals()) << round;
    }
    std::printf("%d rounds, %d killed while changing, %d while recovering\n", Rounds, killed,
                killedRecovering);
    EXPECT_EQ(killed, Rounds);
}

} // namespace
} // namespace veltor::test
