// Who uses a file, and what stands against writing it: asked of real processes, users and files.

#include "support/Files.h"
#include "support/Platform.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/LockInfo.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>

#ifdef Q_OS_LINUX
#include "platform/linux/ProcText.h"
#endif

using namespace veltor::utils;
using namespace veltor::test;

namespace {

/// Opens a file, maps and locks it, makes its folder the current one, and stays.
const Role uses("use", [](const QStringList& arguments) {
    QFile file(arguments[0]);
    const bool open = file.open(QIODevice::ReadWrite);
    const int kind = arguments[1].toInt();
    QDir::setCurrent(QFileInfo(file).path());
    // A mapping counts as somebody who writes, before whom no lease is given.
    const bool mapped = kind == int(Locking::Lease) || file.map(0, 10) != nullptr;
    if (!open || !mapped || !lockFile(file.handle(), Locking(kind))) {
        return 1;
    }
    sayReady();
    QThread::sleep(1000);
    return 0;
});

std::vector<WriteObstacle::Kind> obstaclesOf(const QString& path, qint64 bytes = 1)
{
    std::vector<WriteObstacle::Kind> kinds;
    const LockInfo info(path, bytes);
    for (const WriteObstacle& obstacle : info.obstacles()) {
        EXPECT_FALSE(obstacle.text.contains(u("%1")));
        kinds.push_back(obstacle.kind);
    }
    return kinds;
}

} // namespace

#ifdef Q_OS_UNIX
TEST(LockInfo, NamesTheProcessesAndTheirLocks)
{
    const Folder folder;
    const QString path = folder.write("locked\n\x1b[1m", QByteArray(200, 'x'));
    const QDateTime before = QFileInfo(path).lastModified();
    for (const Locking kind : {Locking::Flock, Locking::Posix, Locking::OpenFile, Locking::Lease}) {
        SCOPED_TRACE(int(kind));
        Actor actor("use", {path, QString::number(int(kind))});
        ASSERT_TRUE(actor.isReady());
        const LockInfo info(path);
        ASSERT_EQ(info.holders().size(), 1u);
        const LockHolder& holder = info.holders().front();
        EXPECT_EQ(holder.pid, actor.processId());
        EXPECT_EQ(holder.name, QFileInfo(QCoreApplication::applicationFilePath()).fileName().left(15));
        EXPECT_FALSE(holder.user.isEmpty());
        EXPECT_LT(qAbs(holder.startedMs - QDateTime::currentMSecsSinceEpoch()), 600000);
        const LockHolder::Uses mapped = kind == Locking::Lease ? LockHolder::Uses() : LockHolder::Mapped;
        EXPECT_EQ(holder.uses, LockHolder::OpenForReading | LockHolder::OpenForWriting | mapped);
        ASSERT_EQ(holder.locks.size(), 1u);
        EXPECT_EQ(int(holder.locks[0].kind), int(kind));
        EXPECT_TRUE(holder.locks[0].exclusive);
        EXPECT_EQ(holder.locks[0].last, kind == Locking::Posix || kind == Locking::OpenFile ? 99 : -1);
        EXPECT_EQ(obstaclesOf(path), std::vector{WriteObstacle::Locked});
        EXPECT_TRUE(info.whyNotWritable().contains(QString::number(actor.processId())));
        EXPECT_FALSE(info.whyNotWritable().contains(QLatin1Char('\x1b')));

        const LockInfo place(folder.path());
        ASSERT_EQ(place.holders().size(), 1u);
        EXPECT_EQ(place.holders()[0].uses, LockHolder::CurrentFolder);

        const Outcome told = run(QString::fromUtf8(VELTOR_TOOL), {u("locks"), u("--json"), path});
        EXPECT_EQ(told.status, 1);
        const QJsonObject object =
            QJsonDocument::fromJson(QByteArray::fromStdString(told.output))[u("files")][0].toObject();
        EXPECT_EQ(object[u("file")].toString(), path);
        EXPECT_EQ(object[u("holders")][0][u("pid")].toInt(), actor.processId());
        EXPECT_EQ(object[u("obstacles")][0][u("kind")].toString(), u("locked"));
    }
    const Outcome free = run(QString::fromUtf8(VELTOR_TOOL), {u("locks"), path});
    EXPECT_EQ(free.status, 0);
    EXPECT_EQ(free.output.find('\x1b'), std::string::npos);
    EXPECT_EQ(QFileInfo(path).lastModified(), before);
    EXPECT_TRUE(obstaclesOf(path).empty());
}

TEST(LockInfo, LocksThatAForkLeftToItsChildAreTheChilds)
{
    const Folder folder;
    QFile file(folder.write("file", "x"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && lockFile(file.handle(), Locking::Flock));
    EXPECT_EQ(forked([&] {
                  const LockInfo info(file.fileName());
                  const auto& holders = info.holders();
                  return holders.size() == 2 && holders[0].locks.size() == 1 && holders[1].locks.size() == 1
                             ? 0
                             : 1;
              }),
              0);
}

/// What an ordinary user is told of each of these; the number of the first row that is wrong, or 0.
int asksForReasons()
{
    const Folder folder;
    const QString file = folder.write("in/file", "x");
    const QString marked = folder.write("marked", "x");
    QFile::setPermissions(marked, QFile::ReadOwner);
    folder.write("closed/inside/file", "x");
    folder.write("sealed/file", "x");
    QFile::setPermissions(folder.path("sealed"), QFile::ReadOwner | QFile::ExeOwner);
    QFile::setPermissions(folder.path("closed"), {});
    QFile::link(folder.path("loop"), folder.path("loop"));
    QFile::link(folder.path("no/where"), folder.path("astray"));
    QFile::link(folder.path("in/new"), folder.path("promise"));
    using Kind = WriteObstacle::Kind;
    const struct
    {
        QString path;
        std::vector<Kind> kinds;
        qint64 bytes = 1;
    } rows[] = {
        {file, {}},
        {folder.path("in/new"), {}},
        {folder.path("promise"), {}},
        {folder.path("in"), {Kind::IsFolder}},
        {folder.path("no/such/file"), {Kind::NoFolder}},
        {folder.path("astray"), {Kind::NoFolder}},
        {folder.path("in/file/x"), {Kind::NotAFolder}},
        {folder.path("closed/inside/file"), {Kind::NoPassage}},
        {folder.path("sealed/file"), {}},
        {folder.path("sealed/new"), {Kind::NoRights}},
        {marked, {Kind::ReadOnlyMark}},
        {u("/etc/passwd"), {Kind::NoRights}},
        {folder.path("loop"), {Kind::LinkLoop}},
        {folder.path("in/") + QString(300, QLatin1Char('n')), {Kind::NameTooLong}},
        {file, {Kind::DiskFull}, qint64(1) << 60},
        {QString(), {Kind::Unreachable}},
    };
    int number = 0;
    int wrong = 0;
    for (const auto& row : rows) {
        ++number;
        if (obstaclesOf(row.path, row.bytes) != row.kinds && wrong == 0) {
            wrong = number;
        }
    }
    QFile::setPermissions(folder.path("closed"), QFile::Permissions(0x7000));
    QFile::setPermissions(folder.path("sealed"), QFile::Permissions(0x7000));
    return wrong;
}

TEST(LockInfo, TellsWhyAFileCannotBeWritten)
{
    EXPECT_EQ(forked(&asksForReasons, User::Ordinary), 0);
    const auto running = obstaclesOf(QCoreApplication::applicationFilePath());
    EXPECT_EQ(std::count(running.begin(), running.end(), WriteObstacle::RunningProgram), 1);
    // Of another user's process little may be seen, and that is said; its locks are in everybody's sight.
    const Folder folder;
    const QString path = folder.write("file", QByteArray(10, 'x'));
    Actor actor("use", {path, QString::number(int(Locking::Flock))});
    ASSERT_TRUE(actor.isReady());
    const qint64 pid = actor.processId();
    QFile::setPermissions(folder.path(), QFile::Permissions(0x7755));
    const int seen = forked(
        [&] {
            const LockInfo info(path);
            return !info.whatIsHidden().isEmpty() && info.holders().size() == 1 &&
                           info.holders()[0].pid == pid && !info.holders()[0].user.isEmpty() &&
                           info.otherLocks().empty()
                       ? 0
                       : 1;
        },
        User::Another);
    EXPECT_TRUE(seen == 0 || seen == NoFork);
}
#else
TEST(LockInfo, TellsWhatItCanOfAFileInUse)
{
    const Folder folder;
    const QString path = folder.write("file", "x");
    EXPECT_TRUE(LockInfo(path).exists());
    EXPECT_EQ(obstaclesOf(folder.path("no/such/file")), std::vector{WriteObstacle::NoFolder});
    EXPECT_EQ(obstaclesOf(folder.path()), std::vector{WriteObstacle::IsFolder});
    QFile::setPermissions(path, QFile::ReadOwner);
    EXPECT_EQ(obstaclesOf(path).front(), WriteObstacle::ReadOnlyMark);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
}
#endif

#ifdef Q_OS_LINUX
TEST(LockInfo, LinesOfTheKernelAreReadAndOthersRefused)
{
    using namespace veltor::platform;
    const auto lock = parseLockLine("12: -> POSIX  MANDATORY WRITE 4321 fe:0a:11100170 7 99");
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->lock.waiting && lock->lock.exclusive && lock->lock.mandatory);
    EXPECT_EQ(lock->lock.kind, FileLockKind::Posix);
    EXPECT_EQ(lock->lock.pid, 4321);
    EXPECT_EQ(lock->file.major, 0xfeu);
    EXPECT_EQ(lock->file.minor, 10u);
    EXPECT_EQ(lock->file.inode, 11100170u);
    EXPECT_EQ(lock->lock.begin, 7u);
    EXPECT_EQ(lock->lock.last, 99u);
    EXPECT_TRUE(parseLockLine("\t1: OFDLCK ADVISORY  READ -1 00:2d:5 0 EOF"));
    for (const char* line :
         {"", "1:", "1: FLOCK  ADVISORY  WRITE x 00:2d:5 0 EOF", "1: POSIX ADVISORY WRITE 1 <none>:0",
          "1: FLOCK ADVISORY WRITE 1 00:2d 0 EOF", "1: FLOCK ADVISORY WRITE 1 00:2d:5 0 EOFF"}) {
        EXPECT_FALSE(parseLockLine(line)) << line;
    }
    const auto stat =
        parseProcessStat("12 (a) b\n(c)) S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 777 20");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->name, "a) b\n(c)");
    EXPECT_EQ(stat->startTicks, 777u);
    EXPECT_FALSE(parseProcessStat("12 (a) S 1 2"));
    EXPECT_FALSE(parseProcessStat(")("));
    const auto mount = parseMountLine("36 35 98:0 / /mnt/a\\040b rw,ro shared:1 - ext3 /dev/s rw");
    ASSERT_TRUE(mount);
    EXPECT_EQ(mount->place, "/mnt/a b");
    EXPECT_TRUE(mount->readOnly);
    EXPECT_FALSE(parseMountLine("36 35 98:0 / /mnt rw"));
    EXPECT_EQ(parseMapLine("7f0-7f1 r-xp 0 08:01 131  /x")->range, "7f0-7f1");
    EXPECT_FALSE(parseMapLine("7f0-7f1 rw-p 0 00:00 0  [heap]"));
    EXPECT_EQ(parseProcessUser("Name:\tUid:\nUid:\t1\t2\t3\t4\n").value_or(0), 2u);
}
#endif
