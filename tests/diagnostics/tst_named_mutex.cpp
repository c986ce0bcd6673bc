// The named mutex among threads, processes, users and their deaths. Processes are forked, which a test
// may do while it has one thread; "tst_named_mutex --try NAME" is one that shares nothing but the name.

#include <veltor/utils/NamedMutex.h>
#include <veltor/utils/RandomFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <functional>
#include <random>
#include <thread>

namespace veltor::test {
namespace {

using utils::NamedMutex;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int Kills = 200;
constexpr quint64 Increments = 100000;
#else
constexpr int Kills = 1000;
constexpr quint64 Increments = 1000000;
#endif

/// A name of this program's own, so that other builds do not interfere; free, whoever died with it.
std::string freeName(const char* what)
{
    const std::string name = QCoreApplication::applicationFilePath().toStdString() + ": " + what;
    NamedMutex mutex;
    EXPECT_TRUE(mutex.open(name));
    mutex.enter();
    while (mutex.unlock()) {
    }
    return name;
}

bool onAnotherThread(const std::function<bool()>& action)
{
    bool result = false;
    std::thread([&] { result = action(); }).join();
    return result;
}

/// Whether another thread can take the mutex of that name, which it releases again.
bool isFree(const std::string& name)
{
    return onAnotherThread([&] {
        NamedMutex mutex;
        return mutex.open(name) && mutex.tryLock() && mutex.unlock();
    });
}

/// A child that does @p action; its result is the exit code.
pid_t child(const std::function<int()>& action)
{
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(120);
        _exit(action());
    }
    return pid;
}

/// The child's exit code, -1 when it was killed.
int end(pid_t pid)
{
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(NamedMutex, OneThreadOwnsItAsOftenAsItLocked)
{
    const std::string name = freeName("levels");
    NamedMutex first;
    NamedMutex second;
    EXPECT_FALSE(first.tryLock() || first.unlock()) << "closed";
    ASSERT_TRUE(first.open(name));
    ASSERT_TRUE(second.open(name));
    EXPECT_TRUE(first.lock());
    EXPECT_TRUE(second.tryLock());
    EXPECT_FALSE(onAnotherThread([&] { return second.tryLock(); }));
    EXPECT_FALSE(onAnotherThread([&] { return second.unlock(); }));
    EXPECT_TRUE(second.unlock());
    EXPECT_FALSE(isFree(name));
    EXPECT_TRUE(second.unlock());
    EXPECT_TRUE(isFree(name));
    EXPECT_FALSE(first.unlock());
}

TEST(NamedMutex, NamesAreAnyBytes)
{
    const std::string base = freeName("name");
    const std::array<std::string, 6> names = {base,
                                              base + "/../x",
                                              base + std::string("\0", 1),
                                              base + std::string("\0a", 2),
                                              base + "\xFF\n",
                                              base + std::string(100000, 'n')};
    std::array<NamedMutex, 6> mutexes;
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(isFree(names[i])) << i; // not one of those locked before
        ASSERT_TRUE(mutexes[i].open(names[i])) << i;
        EXPECT_TRUE(mutexes[i].lock());
    }
    for (NamedMutex& mutex : mutexes) {
        EXPECT_TRUE(mutex.unlock());
    }
    NamedMutex unnamed;
    EXPECT_TRUE(unnamed.open(std::string()));
}

TEST(NamedMutex, ClosingReleasesNothing)
{
    const std::string name = freeName("closing");
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name));
    EXPECT_TRUE(mutex.lock());
    EXPECT_TRUE(mutex.open(freeName("closing, other")));
    EXPECT_FALSE(isFree(name)); // was opened, and closed, by another handle meanwhile
    EXPECT_FALSE(isFree(name));
    EXPECT_TRUE(mutex.open(name));
    EXPECT_TRUE(mutex.unlock());
    EXPECT_TRUE(isFree(name));
}

TEST(NamedMutex, AbandonedIsOwnedButReported)
{
    const std::string name = freeName("abandoned");
    const auto abandon = [&] {
        return onAnotherThread([&] {
            NamedMutex mutex;
            return mutex.open(name) && mutex.lock() && mutex.lock();
        });
    };
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name));
    ASSERT_TRUE(abandon());
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(isFree(name));
    EXPECT_TRUE(mutex.unlock());
    EXPECT_FALSE(mutex.unlock());
    ASSERT_TRUE(abandon());
    EXPECT_FALSE(mutex.tryLock());
    EXPECT_TRUE(mutex.unlock());
    ASSERT_TRUE(abandon());
    EXPECT_TRUE(mutex.enter());
    EXPECT_TRUE(mutex.unlock());
    EXPECT_FALSE(isFree(name));
    EXPECT_TRUE(mutex.unlock());
    EXPECT_TRUE(isFree(name));
}

TEST(NamedMutex, WaitsAreYieldsFirst)
{
    unsigned steps = 0;
    for (unsigned i = 1; i <= 1000; ++i) {
        NamedMutex::activeWait(steps);
        ASSERT_EQ(steps, i);
    }
    QElapsedTimer timer;
    timer.start();
    NamedMutex::activeWait(steps);
    EXPECT_EQ(steps, 1000u);
    EXPECT_GE(timer.elapsed(), 12); // a sleep may be late, but not early
}

TEST(NamedMutex, OtherProgramsFindItByName)
{
    const std::string name = freeName("programs");
    const auto tryElsewhere = [&] {
        return QProcess::execute(QCoreApplication::applicationFilePath(),
                                 {QStringLiteral("--try"), QString::fromStdString(name)}) == 0;
    };
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name));
    EXPECT_TRUE(tryElsewhere());
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(tryElsewhere());
    EXPECT_TRUE(mutex.unlock());
}

TEST(NamedMutex, AForkedChildOwnsNothing)
{
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(freeName("fork")));
    ASSERT_TRUE(mutex.lock());
    EXPECT_EQ(end(child([&] { return mutex.tryLock() || mutex.unlock() ? 1 : 0; })), 0);
    EXPECT_TRUE(mutex.unlock());
    EXPECT_EQ(end(child([&] { return mutex.tryLock() && mutex.unlock() ? 0 : 1; })), 0);
}

TEST(NamedMutex, OtherUsersMayUseIt)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const std::string name = freeName("users") + std::to_string(getpid());
    const auto use = [&] {
        umask(077);
        NamedMutex mutex;
        return mutex.open(name) && mutex.tryLock() && mutex.unlock() ? 0 : 1;
    };
    EXPECT_EQ(end(child([&] { return setuid(65534) == 0 ? use() : 2; })), 0);
    EXPECT_EQ(end(child([&] { return setuid(65533) == 0 ? use() : 2; })), 0);
    EXPECT_EQ(end(child(use)), 0);
    // The one of this process's own name would stay until the system restarts.
    const QDir memory(QStringLiteral("/dev/shm"), QStringLiteral("veltor-mutex-*"));
    for (const QFileInfo& file : memory.entryInfoList(QDir::Files)) {
        EXPECT_TRUE(file.ownerId() != 65534 || QFile::remove(file.filePath()));
    }
}

/// What the processes count in a file: one total, and each one's own share.
struct Counters
{
    quint64 total;
    quint64 own[2]; // not an array object, which has no volatile access
    quint64 abandoned;
    quint64 faults;
    quint64 stop;
};

/// Counts until it is told to stop. An owner that was killed may have left its share one ahead.
int count(const std::string& name, const QString& path, std::size_t who)
{
    utils::RandomFile file(path);
    NamedMutex mutex;
    if (!file.open(QIODevice::ReadWrite) || !mutex.open(name)) {
        return 1;
    }
    auto* const counters = reinterpret_cast<volatile Counters*>(file.block(0));
    while (counters->stop == 0) {
        const bool abandoned = !mutex.lock();
        const quint64 ahead = counters->own[0] + counters->own[1] - counters->total;
        counters->abandoned = counters->abandoned + (abandoned ? 1 : 0);
        counters->faults = counters->faults + (ahead > (abandoned ? 1u : 0u) ? 1 : 0);
        counters->total = counters->total + ahead;
        counters->own[who] = counters->own[who] + 1;
        counters->total = counters->total + 1;
        if (!mutex.unlock()) {
            return 2;
        }
    }
    return 0;
}

TEST(NamedMutex, ProcessesLoseNoIncrementWhoeverIsKilled)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("counters"));
    const std::string name = freeName("counters");
    utils::RandomFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(sizeof(Counters)));
    auto* const counters = reinterpret_cast<volatile Counters*>(file.block(0));
    const auto start = [&](std::size_t who) { return child([=] { return count(name, path, who); }); };
    std::array<pid_t, 2> pids = {start(0), start(1)};
    std::mt19937 random(2);
    for (int round = 0; round < Kills || counters->total < Increments; ++round) {
        usleep(std::uniform_int_distribution<useconds_t>(0, 1000)(random));
        const std::size_t victim = random() % 2;
        kill(pids[victim], SIGKILL);
        ASSERT_EQ(end(pids[victim]), -1) << round;
        pids[victim] = start(victim);
    }
    counters->stop = 1;
    EXPECT_EQ(end(pids[0]), 0);
    EXPECT_EQ(end(pids[1]), 0);
    EXPECT_EQ(counters->own[0] + counters->own[1], counters->total);
    EXPECT_EQ(counters->faults, 0u);
    EXPECT_GT(counters->abandoned, 0u);
    std::printf("%d kills at least, %llu found the mutex abandoned, %llu increments\n", Kills,
                counters->abandoned, counters->total);
}

} // namespace
} // namespace veltor::test

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--try") == 0) {
        veltor::utils::NamedMutex mutex;
        return mutex.open(argv[2]) && mutex.tryLock() && mutex.unlock() ? 0 : 1;
    }
    return RUN_ALL_TESTS();
}
