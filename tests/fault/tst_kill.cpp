// A real process is killed at a random moment while it changes files, and while it recovers them.
// The program starts itself: "tst_kill --change DIRECTORY" and "--recover DIRECTORY" are the victims.

#include "Scenario.h"
#include "support/LogCapture.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

namespace veltor::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int Rounds = 40;
#else
constexpr int Rounds = 300;
#endif

/// Starts a victim, and kills it a random time after it said that it begins.
/// @return true when it was still alive then
bool startAndKill(const char* what, const QString& directory, int longestUs)
{
    QProcess victim;
    victim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    victim.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(what), directory});
    EXPECT_TRUE(victim.waitForReadyRead(30000));
    QElapsedTimer timer;
    timer.start();
    const qint64 moment = 1000LL * QRandomGenerator::global()->bounded(longestUs);
    while (timer.nsecsElapsed() < moment) {
    }
    victim.kill();
    EXPECT_TRUE(victim.waitForFinished(30000));
    return victim.exitStatus() == QProcess::CrashExit;
}

TEST(Kill, FilesAreAsTheyWereAfterAnyDeath)
{
    const QTemporaryDir directory;
    const Workspace files(directory.path());
    int killed = 0;
    int killedRecovering = 0;
    for (int round = 0; round < Rounds; ++round) {
        files.reset();
        killed += startAndKill("--change", directory.path(), 3000) ? 1 : 0;
        if (round % 3 == 0) {
            killedRecovering += startAndKill("--recover", directory.path(), 1000) ? 1 : 0;
        }
        const LogCapture log;
        ASSERT_TRUE(files.recover(Path::Native)) << round;
        ASSERT_TRUE(files.read() == Workspace::originals()) << round;
    }
    std::printf("%d rounds, %d killed while changing, %d while recovering\n", Rounds, killed,
                killedRecovering);
    EXPECT_EQ(killed, Rounds);
}

int changeForEver(const Workspace& files)
{
    const LogCapture log;
    utils::RollbackFile journal;
    std::puts("begin");
    std::fflush(stdout);
    if (!journal.openByName(QFileInfo(files.journal()), QIODevice::WriteOnly)) {
        return 1;
    }
    while (files.change(journal)) {
    }
    return 1;
}

int recoverOnce(const Workspace& files)
{
    const LogCapture log;
    std::puts("begin");
    std::fflush(stdout);
    return files.recover(Path::Native) ? 0 : 1;
}

} // namespace
} // namespace veltor::test

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (argc == 3) {
        const veltor::test::Workspace files(QString::fromLocal8Bit(argv[2]));
        return qstrcmp(argv[1], "--change") == 0 ? veltor::test::changeForEver(files)
                                                 : veltor::test::recoverOnce(files);
    }
    return RUN_ALL_TESTS();
}
