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
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace veltor::test {
namespace {

using utils::NamedMutex;
using utils::NamedMutexGuard;
using Result = NamedMutex::Result;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(Q_OS_WIN)
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

/// The threads and objects of one process, which do one thing after the other.
class Troupe
{
public:
    explicit Troupe(std::string name)
        : m_name(std::move(name))
    {}
    ~Troupe()
    {
        for (Thread& thread : m_threads) {
            end(thread);
        }
    }

    int act(char action, std::size_t thread, std::size_t object)
    {
        Thread& on = m_threads.at(thread);
        if (action == 'e') {
            return end(on);
        }
        if (!on.thread.joinable()) {
            on.thread = std::thread([&on] {
                while (const auto work = on.next.get_future().get()) {
                    on.next = {};
                    work();
                }
                on.next = {};
            });
        }
        std::promise<int> outcome;
        on.next.set_value([&] { outcome.set_value(perform(action, m_objects.at(object))); });
        return outcome.get_future().get();
    }

private:
    struct Thread
    {
        std::thread thread;
        std::promise<std::function<void()>> next;
    };

    static int end(Thread& thread)
    {
        if (thread.thread.joinable()) {
            thread.next.set_value({});
            thread.thread.join();
        }
        return 0;
    }

    int perform(char action, NamedMutex& mutex)
    {
        switch (action) {
        case 'o':
            return mutex.open(m_name) ? 1 : 0;
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

    const std::string m_name;
    std::array<NamedMutex, Objects> m_objects;
    std::array<Thread, Threads> m_threads;
};

const Role player("player", [](const QStringList& arguments) {
    Troupe troupe(arguments[0].toStdString());
    char action = 0;
    std::size_t thread = 0;
    std::size_t object = 0;
    while (std::cin >> action >> thread >> object) {
        std::cout << troupe.act(action, thread, object) << std::endl;
    }
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
        if (owner >= 0 && owner != who) {
            return Result::Busy;
        }
        const bool abandoned = owner < 0 && mark;
        owner = who;
        ++levels;
        mark = levels == 1 ? true : mark;
        return abandoned ? Result::Abandoned : Result::Acquired;
    }
    bool unlock(int who)
    {
        const bool owns = owner == who;
        levels -= owns ? 1 : 0;
        if (owns && levels == 0) {
            owner = -1;
            mark = false;
        }
        return owns;
    }
    void end(int who)
    {
        owner = owner == who ? -1 : owner;
        levels = owner < 0 ? 0 : levels;
    }
    bool wouldWait(int who) const { return owner >= 0 && owner != who; }

    int act(char action, int process, int thread, int object)
    {
        const int who = process * Threads + thread;
        bool& isOpen = open[process][object];
        switch (action) {
        case 'e':
            end(who);
            return 0;
        case 'o':
        case 'c':
            isOpen = action == 'o';
            return isOpen ? 1 : 0;
        case 'a':
            return static_cast<int>(isOpen ? acquire(who) : Result::Failed);
        case 'w':
            return isOpen && acquire(who) == Result::Acquired ? 1 : 0;
        case 'n':
            return acquire(who) == Result::Acquired || acquire(who) == Result::Acquired ? 1 : 0;
        case 'u':
            return isOpen && unlock(who) ? 1 : 0;
        default:
            constexpr int child = 99;
            const Result result = isOpen ? acquire(child) : Result::Failed;
            return 2 * static_cast<int>(result) + (unlock(child) ? 1 : 0);
        }
    }
};

TEST(NamedMutex, ThreadsAndProcessesFindItAsTheModelSays)
{
    const FreeName name;
    const bool isFile = !name.path.isEmpty();
    const auto startOther = [&] {
        return std::make_unique<Actor>("player", QStringList{QString::fromStdString(name.text)});
    };
    Troupe here(name.text);
    auto there = startOther();
    Model model;
    std::minstd_rand random(14);
    const auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };
    const std::string actions = std::string("oocaaaaawnnuuuuuuue") + (isFile ? "fftgrr" : "");
    for (int step = 0; step < Steps; ++step) {
        char action = actions[static_cast<std::size_t>(pick(static_cast<int>(actions.size())))];
        const int process = pick(2);
        const int thread = pick(Threads);
        const int object = pick(Objects);
        SCOPED_TRACE(QStringLiteral("step %1 %2 %3 %4 %5")
                         .arg(step)
                         .arg(QLatin1Char(action))
                         .arg(process)
                         .arg(thread)
                         .arg(object)
                         .toStdString());
        if (pick(200) == 0) { // the other process dies
            there->kill();
            there->result();
            there = startOther();
            model.end(Threads);
            model.end(Threads + 1);
            model.open[1][0] = model.open[1][1] = false;
        }
        if (action == 't' || action == 'g') { // a stranger writes into the file, or cuts it
            QFile file(name.path);
            if (!file.exists()) {
                continue; // removed, and not asked for since
            }
            ASSERT_TRUE(file.open(action == 'g' ? QIODevice::Append : QIODevice::ReadWrite));
            ASSERT_TRUE(action == 'g' ? file.write("garbage") == 7 : file.resize(0));
            model.mark = action == 'g';
            continue;
        }
        if (action == 'r') { // or removes it, which makes a new mutex of it
            if (model.owner < 0 && pick(4) == 0) {
                ASSERT_TRUE(!QFile::exists(name.path) || QFile::remove(name.path));
                model.mark = false;
            }
            continue;
        }
        if (action == 'n' && (!model.open[process][object] || model.wouldWait(process * Threads + thread))) {
            action = 'u';
        }
        int result = -1;
        if (process == 0) {
            result = here.act(action, std::size_t(thread), std::size_t(object));
        } else {
            there->write(
                QStringLiteral("%1 %2 %3\n").arg(QLatin1Char(action)).arg(thread).arg(object).toLatin1());
            ASSERT_TRUE(there->isReady());
            result = there->readLine().trimmed().toInt();
        }
        ASSERT_EQ(result, model.act(action, process, thread, object));
    }
}

TEST(NamedMutex, NamesAreAnyBytes)
{
    const std::string base = QUuid::createUuid().toString().toStdString();
    const std::vector<std::string> names = {base,
                                            base + "/../x",
                                            base + "\xFF\n",
#ifndef Q_OS_WIN // where they are short and end with a zero byte
                                            base + std::string("\0", 1),
                                            base + std::string("\0a", 2),
                                            base + std::string(100000, 'n')
#endif
    };
    const QStringList before = mutexFiles();
    std::vector<NamedMutex> mutexes(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(mutexes[i].open(names[i])) << i;
        EXPECT_TRUE(std::async(std::launch::async, use, names[i]).get())
            << i; // not one of those locked before
        EXPECT_TRUE(mutexes[i].lock());
    }
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
