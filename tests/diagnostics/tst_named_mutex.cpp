// The named mutex among threads, processes, users and their deaths.

#include "support/Files.h"
#include "support/Platform.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/NamedMutexGuard.h>
#include <veltor/utils/RandomFile.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QUuid>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace veltor::test {
namespace {

using utils::NamedMutex;
using utils::NamedMutexGuard;
using Result = NamedMutex::Result;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(VELTOR_EMULATED)
constexpr int Kills = 50;
constexpr int Steps = 1000;
#else
constexpr int Kills = 200;
constexpr int Steps = 5000;
#endif

QStringList mutexFiles()
{
    return QDir(u("/dev/shm")).entryList({u("veltor-mutex-*")}, QDir::AllEntries | QDir::System);
}

/// A name that nobody else has, and its file, removed with this object; no file where a mutex is none.
struct FreeName
{
    FreeName()
    {
        const QStringList before = mutexFiles();
        EXPECT_TRUE(keeper.open(text));
        for (const QString& file : mutexFiles()) {
            path = before.contains(file) ? path : u("/dev/shm/") + file;
        }
    }
    ~FreeName() { QFile::remove(path); }

    const std::string text = QUuid::createUuid().toString().toStdString();
    NamedMutex keeper; // on Windows a mutex that nobody has open is no more
    QString path;
};

/// Takes the mutex of that name and releases it again.
bool use(const std::string& name)
{
    NamedMutex mutex;
    return mutex.open(name) && mutex.tryLock() && mutex.unlock();
}

constexpr int Threads = 2;
constexpr int Objects = 2;

/// What a thread does with an object of its process, in a letter.
int act(char action, NamedMutex& mutex, const std::string& name)
{
    switch (action) {
    case 'o':
        return mutex.open(name) ? 1 : 0;
    case 'c':
        mutex.close();
        return mutex.isOpened() ? 1 : 0;
    case 'a':
        return static_cast<int>(mutex.tryAcquire());
    case 'w':
        return mutex.tryLockFor(1) ? 1 : 0;
    case 'n':
        return mutex.enter() ? 1 : 0;
    case 'u':
        return mutex.unlock() ? 1 : 0;
    default: // a forked child, which ends then
        return forked([&] {
            const int result = static_cast<int>(mutex.tryAcquire());
            return 2 * result + (mutex.unlock() ? 1 : 0);
        });
    }
}

/// Its threads do what they are told in lines, one after the other; 'e' ends one, which begins anew.
const Role player("player", [](const QStringList& arguments) {
    std::array<NamedMutex, Objects> objects;
    std::array<std::promise<std::function<void()>>, Threads> next;
    std::array<std::thread, Threads> threads;
    char action = 0;
    std::size_t thread = 0;
    std::size_t object = 0;
    while (std::cin >> action >> thread >> object) {
        if (!threads[thread].joinable()) {
            next[thread] = {};
            threads[thread] = std::thread([&mine = next[thread]] {
                while (const auto work = mine.get_future().get()) {
                    mine = {};
                    work();
                }
            });
        }
        if (action == 'e') {
            next[thread].set_value({});
            threads[thread].join();
            std::cout << 0 << std::endl;
            continue;
        }
        std::promise<int> outcome;
        next[thread].set_value(
            [&] { outcome.set_value(act(action, objects[object], arguments[0].toStdString())); });
        std::cout << outcome.get_future().get() << std::endl;
    }
    std::_Exit(0); // its threads wait
    return 0;
});

/// What the mutex is to do.
struct Model
{
    int owner = -1; // process and thread
    int levels = 0;
    bool mark = false; // whether the next owner will find it abandoned
    bool open[2][Objects] = {};

    Result acquire(int who)
    {
        const bool isTaken = owner < 0;
        if (!isTaken && owner != who) {
            return Result::Busy;
        }
        owner = who;
        ++levels;
        return isTaken && std::exchange(mark, true) ? Result::Abandoned : Result::Acquired;
    }
    bool unlock(int who)
    {
        const bool owns = owner == who;
        if (owns && levels == 1) {
            mark = false;
            end(who);
        } else if (owns) {
            --levels;
        }
        return owns;
    }
    void end(int who)
    {
        owner = owner == who ? -1 : owner;
        levels = owner < 0 ? 0 : levels;
    }

    int act(char action, int who, bool& isOpen)
    {
        constexpr int child = 99;
        const auto result = [&](int locker) { return isOpen ? acquire(locker) : Result::Failed; };
        switch (action) {
        case 'e':
            end(who);
            return 0;
        case 'a':
            return static_cast<int>(result(who));
        case 'w':
            return result(who) == Result::Acquired ? 1 : 0;
        case 'n':
            return result(who) == Result::Acquired || acquire(who) == Result::Acquired ? 1 : 0;
        case 'u':
            return isOpen && unlock(who) ? 1 : 0;
        case 'f':
            return 2 * static_cast<int>(result(child)) + (unlock(child) ? 1 : 0);
        default:
            isOpen = action == 'o';
            return isOpen ? 1 : 0;
        }
    }

    /// What a stranger does to the file: writes into it, cuts it, or removes it while nobody owns it.
    void attack(char action, const QString& path)
    {
        QFile file(path);
        if (!file.exists() || (action == 'r' && owner >= 0)) {
            return;
        }
        EXPECT_TRUE(action == 'r' ? file.remove() : file.open(QIODevice::ReadWrite));
        EXPECT_TRUE(action == 't' ? file.resize(0) : action == 'r' || file.write("garbage") == 7);
        mark = action == 'g';
    }
};

TEST(NamedMutex, ThreadsAndProcessesFindItAsTheModelSays)
{
    const FreeName name;
    const auto start = [&] {
        return std::make_unique<Actor>("player", QStringList{QString::fromStdString(name.text)});
    };
    std::array<std::unique_ptr<Actor>, 2> players = {start(), start()};
    Model model;
    std::minstd_rand random(14);
    const auto pick = [&](std::size_t count) { return static_cast<int>(random() % count); };
    const std::string actions = std::string("oocaaaaawnnuuuuuuue") + (name.path.isEmpty() ? "" : "fftgr");
    for (int step = 0; step < Steps; ++step) {
        char action = actions[static_cast<std::size_t>(pick(actions.size()))];
        const int process = pick(2);
        const int thread = pick(Threads);
        const int object = pick(Objects);
        const int who = process * Threads + thread;
        bool& isOpen = model.open[process][object];
        auto& actor = players[static_cast<std::size_t>(process)];
        if (std::strchr("tgr", action)) {
            model.attack(action, name.path);
            continue;
        }
        if (pick(200) == 0) { // a process dies
            actor->kill();
            actor->result();
            actor = start();
            model.end(process * Threads);
            model.end(process * Threads + 1);
            model.open[process][0] = model.open[process][1] = false;
        }
        if (action == 'n' && (!isOpen || (model.owner >= 0 && model.owner != who))) {
            action = 'u'; // rather than to wait for ever
        }
        const QString line = QStringLiteral("%1 %2 %3\n").arg(QLatin1Char(action)).arg(thread).arg(object);
        actor->write(line.toLatin1());
        ASSERT_TRUE(actor->isReady());
        ASSERT_EQ(actor->readLine().trimmed().toInt(), model.act(action, who, isOpen))
            << "step " << step << ", process " << process << ": " << line.toStdString();
    }
}

TEST(NamedMutex, NamesAreAnyBytes)
{
    const FreeName base;
    std::vector<std::string> names = {base.text + "/../x", base.text + "\xFF\n"};
#ifndef Q_OS_WIN // where they are short and end with a zero byte
    names.insert(names.end(), {base.text + std::string("\0a", 2), base.text + std::string(100000, 'n')});
#endif
    const QStringList before = mutexFiles();
    std::vector<NamedMutex> mutexes(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_TRUE(std::async(std::launch::async, use, names[i]).get()) << i; // none of those locked before
        EXPECT_TRUE(mutexes[i].open(names[i]) && mutexes[i].lock()) << i;
    }
    EXPECT_TRUE(std::async(std::launch::async, use, base.text).get());
    for (const QString& file : mutexFiles()) {
        EXPECT_TRUE(before.contains(file) || QFile::remove(u("/dev/shm/") + file));
    }
    EXPECT_TRUE(mutexes[0].open(std::string()));
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

TEST(NamedMutex, AGuardReleasesAndFailsLoudly)
{
    const FreeName name;
    NamedMutex mutex;
    EXPECT_THROW(NamedMutexGuard{mutex}, std::system_error);
    ASSERT_TRUE(mutex.open(name.text));
    {
        NamedMutexGuard guard(mutex, std::defer_lock);
        std::unique_lock lock(guard, std::chrono::milliseconds(1));
        EXPECT_TRUE(lock.owns_lock());
        EXPECT_FALSE(std::async(std::launch::async, use, name.text).get());
    }
    std::thread([&] { mutex.lock(); }).join();
    EXPECT_TRUE(NamedMutexGuard(mutex).wasAbandoned());
    EXPECT_FALSE(mutex.unlock());
}

TEST(NamedMutex, AnObjectInItsPlaceIsNamedAndLeftAlone)
{
    FreeName name;
    if (name.path.isEmpty()) {
        GTEST_SKIP() << "a mutex is no file here";
    }
    name.keeper.close();
    const QString other = name.path + u("-other");
    const std::function<bool()> plants[] = {
        [&] { return makePipe(name.path); },
        [&] { return QFile::link(other, name.path); },
        [&] { return QFile(other).open(QIODevice::WriteOnly) && QFile::rename(other, name.path); },
    };
    for (const auto& plant : plants) {
        QFile::remove(name.path);
        ASSERT_TRUE(plant());
        NamedMutex mutex;
        EXPECT_FALSE(mutex.open(name.text));
        EXPECT_TRUE(mutex.errorString().startsWith(name.path + u(": "))) << mutex.errorString().toStdString();
        EXPECT_FALSE(QFile::exists(other));
    }
    EXPECT_EQ(QFile(name.path).size(), 0);
}

TEST(NamedMutex, OtherUsersMayUseItButNotTakeIt)
{
    FreeName name;
    QFile::remove(name.path);
    const auto useAs = [&](User who) { return forked([&] { return use(name.text) ? 0 : 1; }, who); };
    if (useAs(User::Another) == NoFork) {
        GTEST_SKIP() << "only root can become another user";
    }
    EXPECT_EQ(useAs(User::Another), 0);
    EXPECT_EQ(useAs(User::Ordinary), 0);
    ASSERT_TRUE(name.keeper.lock());
    const int attacked = forked(
        [&] {
            QFile file(name.path);
            const bool wrote =
                file.open(QIODevice::ReadWrite) && file.write(QByteArray(4096, '\xFF')) == 4096;
            return wrote && file.resize(0) && !file.remove() && !use(name.text) ? 0 : 1;
        },
        User::Ordinary);
    EXPECT_EQ(attacked, 0);
    EXPECT_EQ(useAs(User::Another), 1);
    EXPECT_TRUE(name.keeper.unlock());
}

TEST(NamedMutex, AChildForkedWhileThreadsLockOwnsNothingAndEnds)
{
    const FreeName name;
    std::atomic<bool> stop{false};
    std::vector<std::thread> lockers;
    for (int i = 0; i < 2; ++i) {
        lockers.emplace_back([&] {
            while (!stop) {
                NamedMutex mutex;
                mutex.open(name.text);
                mutex.enter();
                mutex.unlock();
            }
        });
    }
    NamedMutex inherited;
    EXPECT_TRUE(inherited.open(name.text));
    for (int i = 0; i < 100; ++i) {
        const int result = forked([&] {
            NamedMutex own;
            return inherited.unlock() || !own.open(name.text) || !own.enter() || !inherited.unlock() ? 1 : 0;
        });
        ASSERT_TRUE(result == 0 || result == NoFork) << result;
    }
    stop = true;
    for (std::thread& locker : lockers) {
        locker.join();
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
        const bool limited = counters->own[who] % 2 == 1;
        const Result result = limited ? mutex.tryAcquire(std::chrono::hours(1)) : mutex.acquire();
        const bool abandoned = result == Result::Abandoned;
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
    const FreeName name;
    utils::RandomFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(sizeof(Counters)));
    auto* const counters = reinterpret_cast<volatile Counters*>(file.block(0));
    const auto start = [&](int who) {
        return std::make_unique<Actor>(
            "count", QStringList{QString::fromStdString(name.text), path, QString::number(who)});
    };
    std::array<std::unique_ptr<Actor>, 2> counting = {start(0), start(1)};
    for (int round = 0; round < Kills; ++round) {
        auto& victim = counting[static_cast<std::size_t>(round % 2)];
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
