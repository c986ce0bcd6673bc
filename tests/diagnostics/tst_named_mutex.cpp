// The named mutex among threads, processes, users and their deaths.

#include "support/Files.h"
#include "support/Platform.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/NamedMutex.h>
#include <veltor/utils/RandomFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QUuid>

#include <algorithm>
#include <array>
#include <memory>
#include <thread>
#include <vector>

namespace veltor::test {
namespace {

using utils::NamedMutex;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(Q_OS_WIN)
constexpr int Kills = 50;
#else
constexpr int Kills = 200;
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

/// Takes the mutex of that name and releases it again.
bool use(const std::string& name)
{
    NamedMutex mutex;
    return mutex.open(name) && mutex.tryLock() && mutex.unlock();
}

bool isFree(const std::string& name)
{
    return onAnotherThread([&] { return use(name); });
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
    const std::vector<std::string> names = {base,
                                            base + "/../x",
                                            base + "\xFF\n",
#ifndef Q_OS_WIN // where they are short and end with a zero byte
                                            base + std::string("\0", 1),
                                            base + std::string("\0a", 2),
                                            base + std::string(100000, 'n')
#endif
    };
    std::vector<NamedMutex> mutexes(names.size());
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
#ifdef Q_OS_WIN // where a mutex that nobody has open is no more
    NamedMutex keeper;
    ASSERT_TRUE(keeper.open(name));
#endif
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

const Role user("use", [](const QStringList& arguments) { return use(arguments[0].toStdString()) ? 0 : 1; });

TEST(NamedMutex, OtherProgramsFindItByName)
{
    const std::string name = freeName("programs");
    const auto useElsewhere = [&] { return play("use", {QString::fromStdString(name)}).status; };
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name));
    EXPECT_EQ(useElsewhere(), 0);
    EXPECT_TRUE(mutex.lock());
    EXPECT_EQ(useElsewhere(), 1);
    EXPECT_TRUE(mutex.unlock());
}

TEST(NamedMutex, AForkedChildOwnsNothing)
{
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(freeName("fork")));
    ASSERT_TRUE(mutex.lock());
    const int locked = forked([&] { return mutex.tryLock() || mutex.unlock() ? 1 : 0; });
    EXPECT_TRUE(mutex.unlock());
    if (locked == NoFork) {
        GTEST_SKIP() << "processes do not fork here";
    }
    EXPECT_EQ(locked, 0);
    EXPECT_EQ(forked([&] { return mutex.tryLock() && mutex.unlock() ? 0 : 1; }), 0);
}

/// The files of all mutexes, which stay until the system restarts; none where a mutex is no file.
QStringList mutexFiles()
{
    QStringList paths;
    const QDir memory(u("/dev/shm"), u("veltor-mutex-*"), QDir::NoSort, QDir::Files);
    for (const QFileInfo& file : memory.entryInfoList()) {
        paths << file.filePath();
    }
    return paths;
}

/// The file of a mutex that @p action makes, removed with this object.
std::unique_ptr<QFile, void (*)(QFile*)> mutexFileOf(const std::function<void()>& action)
{
    const QStringList before = mutexFiles();
    action();
    QStringList after = mutexFiles();
    after.erase(std::remove_if(after.begin(), after.end(), [&](auto& path) { return before.contains(path); }),
                after.end());
    return {new QFile(after.value(0)), [](QFile* file) {
                file->remove();
                delete file;
            }};
}

std::string unusedName()
{
    return QUuid::createUuid().toString().toStdString();
}

TEST(NamedMutex, OtherUsersMayUseIt)
{
    const std::string name = unusedName();
    const auto useAs = [&](User who) { return forked([&] { return use(name) ? 0 : 1; }, who); };
    int result = NoFork;
    const auto file = mutexFileOf([&] { result = useAs(User::Another); });
    if (result == NoFork) {
        GTEST_SKIP() << "only root can become another user";
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(useAs(User::Ordinary), 0);
    EXPECT_EQ(useAs(User::Same), 0);
}

TEST(NamedMutex, AFileOfAnotherVersionIsRefusedAndLeftAlone)
{
    const std::string name = unusedName();
    const auto owned = mutexFileOf([&] { EXPECT_TRUE(use(name)); });
    QFile& file = *owned;
    if (!file.open(QIODevice::ReadWrite)) {
        GTEST_SKIP() << "a mutex is no file here";
    }
    const QByteArray whole = file.readAll();
    for (const QByteArray& other : {QByteArray(whole.size(), '\x7F'), whole.left(whole.size() - 1)}) {
        ASSERT_TRUE(file.resize(0) && file.seek(0) && file.write(other) == other.size() && file.flush());
        EXPECT_FALSE(use(name));
        ASSERT_TRUE(file.seek(0));
        EXPECT_EQ(file.readAll(), other);
    }
}

/// What the processes count in a file: one total, and each one's own share.
struct Counters
{
    quint64 total;
    quint64 own[2]; // no std::array, which has no volatile access
    quint64 abandoned;
    quint64 faults;
    quint64 stop;
};

/// Counts until it is told to stop. An owner that was killed may have left its share one ahead.
const Role counter("count", [](const QStringList& arguments) {
    utils::RandomFile file(arguments[1]);
    NamedMutex mutex;
    if (!file.open(QIODevice::ReadWrite) || !mutex.open(arguments[0].toStdString())) {
        return 1;
    }
    const int who = arguments[2].toInt();
    auto* const counters = reinterpret_cast<volatile Counters*>(file.block(0));
    sayReady();
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
});

TEST(NamedMutex, ProcessesLoseNoIncrementWhoeverIsKilled)
{
    const Folder folder;
    const QString path = folder.path("counters");
    const std::string name = freeName("counters");
    utils::RandomFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(sizeof(Counters)));
    auto* const counters = reinterpret_cast<volatile Counters*>(file.block(0));
    const auto start = [&](int who) {
        return std::make_unique<Actor>("count",
                                       QStringList{QString::fromStdString(name), path, QString::number(who)});
    };
    std::array<std::unique_ptr<Actor>, 2> counting = {start(0), start(1)};
    for (int round = 0; round < Kills; ++round) {
        auto& victim = counting[round % 2];
        ASSERT_TRUE(victim->isReady());
        ASSERT_TRUE(victim->killWithin(1000)) << round;
        victim = start(round % 2);
    }
    ASSERT_TRUE(counting[0]->isReady() && counting[1]->isReady());
    counters->stop = 1;
    EXPECT_EQ(counting[0]->result(), 0);
    EXPECT_EQ(counting[1]->result(), 0);
    EXPECT_EQ(counters->own[0] + counters->own[1], counters->total);
    EXPECT_EQ(counters->faults, 0u);
    EXPECT_GT(counters->abandoned, 0u);
    std::printf("%d kills, %llu found the mutex abandoned, %llu increments\n", Kills, counters->abandoned,
                counters->total);
}

} // namespace
} // namespace veltor::test
