// Others on the machine: a second program, another user's journal, names that lead elsewhere, a full disk.

#include "storage/JournalImage.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Platform.h"
#include "support/Process.h"

#include "platform/FileOpen.h"

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>

#if defined(Q_OS_LINUX) && defined(__LP64__)
#define VELTOR_STUBBORN 1
#include <sys/syscall.h>
#include <unistd.h>

// A system whose calls move little at a time, and are interrupted in between.
static std::atomic<std::size_t> mostAtOnce{SIZE_MAX};
static std::atomic<int> stubbornCalls{0};

template <typename Bytes>
static ssize_t moveSome(long call, int fd, Bytes bytes, std::size_t length, off_t position)
{
    if (mostAtOnce < SIZE_MAX && ++stubbornCalls % 2 == 0) {
        errno = EINTR;
        return -1;
    }
    return syscall(call, fd, bytes, std::min<std::size_t>(length, mostAtOnce), position);
}
extern "C" Q_DECL_EXPORT ssize_t pread(int fd, void* bytes, std::size_t length, off_t position)
{
    return moveSome(SYS_pread64, fd, bytes, length, position);
}
extern "C" Q_DECL_EXPORT ssize_t pwrite(int fd, const void* bytes, std::size_t length, off_t position)
{
    return moveSome(SYS_pwrite64, fd, bytes, length, position);
}
#endif

namespace veltor::test {
namespace {

#ifdef VELTOR_EMULATED // what the system calls a program then
constexpr char programName[] = "qemu-aarch64";
#else
constexpr char programName[] = "tst_storage";
#endif

using utils::JournalState;
using utils::RollbackFile;
using utils::SecuredFile;

class Others : public testing::Test, protected Folder
{
protected:
    QFileInfo journal() const { return QFileInfo(path("journal")); }

    /// Begins a transaction and writes at a file's start.
    static bool change(RollbackFile& journal, const QFileInfo& name, const QString& file,
                       const QByteArray& bytes)
    {
        SecuredFile secured;
        return journal.startNew(name) && secured.open(file, journal) && secured.write(bytes) == bytes.size();
    }

    LogCapture m_log;
};

/// Stays in the middle of a transaction until it is killed.
const Role owns("own", [](const QStringList& arguments) {
    const LogCapture log;
    RollbackFile journal;
    SecuredFile file;
    if (journal.startNew(QFileInfo(arguments[0])) && file.open(arguments[1], journal) &&
        file.write("1") == 1) {
        sayReady();
    }
    return std::getchar();
});

TEST_F(Others, AJournalHasOneOwner)
{
    write("a", "aaaa");
    Actor owner("own", {path("journal"), path("a")});
    ASSERT_TRUE(owner.isReady());
    if (!makePipe(path("pipe"))) { // where there are pipes there are signals
        QProcess::execute(u("kill"), {u("-STOP"), QString::number(owner.processId())});
    }
    const QByteArray before = read("journal");
    RollbackFile second;
    const auto expectInUse = [&](bool opened) {
        EXPECT_FALSE(opened);
        EXPECT_EQ(second.state(), JournalState::InUse);
#ifdef Q_OS_LINUX
        EXPECT_EQ(second.ownerPid(), owner.processId());
        EXPECT_TRUE(second.errorString().contains(
            u(": %1 (процесс %2, пользователь ").arg(u(programName)).arg(owner.processId())));
#endif
        EXPECT_TRUE(second.errorString().contains(path("journal")));
    };
    expectInUse(second.startNew(journal()));
    expectInUse(second.openByName(journal(), QIODevice::WriteOnly));
    expectInUse(second.openByName(journal(), QIODevice::ReadOnly));
    EXPECT_TRUE(RollbackFile::discard(journal()).effective);
    const auto view = RollbackFile::inspect(journal());
    EXPECT_EQ(view.state, JournalState::InUse);
    EXPECT_TRUE(view.valid);
    EXPECT_EQ(view.files.size(), 1u);
    EXPECT_TRUE(RollbackFile::needsRecovery(journal()));
    EXPECT_EQ(read("journal"), before);
    EXPECT_EQ(read("a"), "1aaa");

    owner.kill();
    owner.waitForFinished();
    EXPECT_FALSE(second.startNew(journal()));
    EXPECT_EQ(second.state(), JournalState::NeedsRecovery);
    ASSERT_TRUE(second.openByName(journal(), QIODevice::ReadWrite));
    RollbackFile third;
    EXPECT_FALSE(third.startNew(journal())) << "in this process too";
    EXPECT_TRUE(second.rollback());
    EXPECT_EQ(second.rollbackReport().restored, 1u);
    EXPECT_EQ(read("a"), "aaaa");
    EXPECT_TRUE(third.startNew(journal()));
}

#ifndef Q_OS_WIN
TEST_F(Others, ASpareIsTakenFromNobodyAndRestoresNothing)
{
    write("a", "aaaa");
    RollbackFile holder;
    holder.setSpare(RollbackFile::Spare::Held);
    ASSERT_TRUE(change(holder, journal(), path("a"), "held"));
    const QByteArray whole = read("journal"); // it would put "aaaa" back
    write("precious", whole);
    const char* const spare = ".journal.spare";
    const auto native = [this](const char* name) {
        return std::filesystem::u8path(path(name).toStdString());
    };
    const auto begins = [&](RollbackFile& next) {
        next.setSpare(RollbackFile::Spare::Left);
        return change(next, journal(), path("a"), "next");
    };
    const std::function<void()> rows[] = {
        [&] { create_symlink(native("precious"), native(spare)); },
        [&] { create_hard_link(native("precious"), native(spare)); },
        [&] { write(spare, "no journal, but longer than the header of one: it stays as it is"); },
        [&] { QFile::setPermissions(write(spare, whole), QFile::ReadOwner | QFile::WriteOther); },
        [&] { EXPECT_TRUE(holder.commit()); }, // whoever holds it has its lock
    };
    for (const auto& plant : rows) {
        holder.close();
        QFile::remove(path("journal"));
        QFile::remove(path(spare));
        ASSERT_TRUE(change(holder, journal(), path("a"), "held"));
        if (&plant != std::end(rows) - 1) {
            ASSERT_TRUE(holder.rollback());
            QFile::remove(path(spare));
        }
        plant();
        const QByteArray before = read(spare);
        RollbackFile next;
        ASSERT_TRUE(begins(next) && next.commit());
        EXPECT_EQ(read("a"), "next");
        EXPECT_EQ(read(spare), before);
        EXPECT_EQ(read("precious"), whole);
        EXPECT_FALSE(QFileInfo::exists(path("journal")));
    }
    ASSERT_TRUE(change(holder, journal(), path("a"), "held") && holder.rollback());
    EXPECT_EQ(read("a"), "next");

    // The owner died before it could clear the header.
    QFile::remove(path(spare));
    QFile::setPermissions(write(spare, whole), QFile::ReadOwner | QFile::WriteOwner);
    RollbackFile heir;
    heir.setSpare(RollbackFile::Spare::Left);
    ASSERT_TRUE(heir.startNew(journal()));
    EXPECT_FALSE(QFileInfo::exists(path(spare)));
    EXPECT_EQ(RollbackFile::inspect(journal()).files.size(), 0u);
    heir.close();
    EXPECT_FALSE(RollbackFile::needsRecovery(journal()));
    EXPECT_EQ(QFileInfo(path("journal")).size(), 48);
    EXPECT_EQ(read("a"), "next");
}
#endif

TEST_F(Others, AForkedChildHasNoPartInATransaction)
{
    write("a", "aaaa");
    RollbackFile owner;
    ASSERT_TRUE(change(owner, journal(), path("a"), "new"));
    const int undone = forked([&] { return owner.rollback() ? 1 : 0; });
    if (undone == NoFork) {
        GTEST_SKIP() << "no fork here";
    }
    EXPECT_EQ(undone, 0);
    forked([&] { return owner.commit() ? 1 : 0; });
    EXPECT_TRUE(QFile::exists(path("journal"))) << "a child has ended its parent's transaction";
    EXPECT_EQ(read("a"), "newa");
    EXPECT_TRUE(owner.rollback());
    EXPECT_EQ(read("a"), "aaaa");

    QFile next(path("next")); // has the journal's number, and likely its place on the disk
    ASSERT_TRUE(next.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_EQ(forked([&] { return next.write("n") == 1 ? 0 : 1; }), 0);
    EXPECT_EQ(read("next"), "n") << "the child's own descriptor was taken away";
}

TEST_F(Others, NamesStayBeneathTheJournalWhenTheyAreToldTo)
{
    using platform::ConfinedFolder;
    using platform::OpenFault;
    write("maps/a", "a");
    write("b", "b");
    std::error_code noLinks; // Windows asks for a privilege
    const auto native = [this](const char* name) {
        return std::filesystem::u8path(path(name).toStdString());
    };
    create_symlink(native("b"), native("maps/link"), noLinks);
    create_directory_symlink(native("maps"), native("folder"), noLinks);
    makePipe(path("pipe"));
    const struct
    {
        const char* name;
        bool beneath, anywhere;
    } rows[] = {{"maps/a", true, true},           {"b", true, true},
                {"../b", false, false},           {"maps/link", false, true},
                {"folder/a", false, true},        {"maps", false, false},
                {"pipe", false, false},           {"/etc/passwd", false, true},
                {"missing", false, false},        {"journal", false, false},
                {"/proc/self/mem", false, false}, {"", false, false}};
    for (const auto& row : rows) {
        const bool link = u(row.name).contains(u("link")) || u(row.name).startsWith(u("folder"));
        if ((link && noLinks) || (row.name[0] == '/' && QDir::rootPath() != u("/"))) {
            continue;
        }
        SCOPED_TRACE(row.name);
        RollbackFile file;
        ASSERT_TRUE(file.startNew(journal()));
        EXPECT_EQ(file.openFile(u(row.name))->isOpen(), row.anywhere);
        file.setNameRule(RollbackFile::NameRule::Beneath);
        EXPECT_EQ(file.openFile(u(row.name))->isOpen(), row.beneath);
        file.setNameRule([&](const QString& found) { return found.endsWith(u("a")); });
        EXPECT_EQ(file.openFile(u(row.name))->isOpen(), row.anywhere && u(row.name).endsWith(u("a")));
        file.close();
#ifdef Q_OS_LINUX
        const ConfinedFolder folder(QFile::encodeName(path()).toStdString());
        const auto opened = folder.open(row.name, ConfinedFolder::By::StepByStep);
        EXPECT_EQ(opened.fault == OpenFault::None, row.beneath || u(row.name) == u("journal"));
        QFile().open(opened.fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
#endif
    }
    // The journals of two folders, one after the other.
    RollbackFile file;
    file.setNameRule(RollbackFile::NameRule::Beneath);
    EXPECT_TRUE(file.startNew(journal()) && file.addFile(QFileInfo(path("b"))) != 0);
    EXPECT_TRUE(file.startNew(QFileInfo(path("maps/journal"))) && file.openFile(u("a"))->isOpen());
    EXPECT_NE(file.addFile(QFileInfo(path("maps/a"))), 0u);
    EXPECT_EQ(file.addFile(QFileInfo(path("b"))), 0u) << "not beneath";
}

#ifdef VELTOR_STUBBORN
TEST_F(Others, ACallThatMovesLessOrIsInterruptedIsContinued)
{
    const QByteArray content("0123456789abc");
    write("a", content.repeated(700));
    RollbackFile file;
    mostAtOnce = 100;
    const bool changed = change(file, journal(), path("a"), content.repeated(600).toUpper());
    const QByteArray found = read("a");
    const bool restored = file.rollback();
    mostAtOnce = SIZE_MAX;
    EXPECT_TRUE(changed && restored) << file.errorString().toStdString();
    EXPECT_TRUE(found == content.repeated(600).toUpper() + content.repeated(100));
    EXPECT_TRUE(read("a") == content.repeated(700));
    EXPECT_GT(stubbornCalls, 200);
}
#endif

TEST_F(Others, LinksAndStrangersJournalsAreRefused)
{
    write("a", "aaaa");
    write("text", QByteArray(500, 'x'));
    RollbackFile file;
    std::error_code noLinks;
    const auto native = [this](const char* name) {
        return std::filesystem::u8path(path(name).toStdString());
    };
    create_symlink(native("text"), native("journal"), noLinks);
    if (!noLinks) {
        EXPECT_FALSE(file.openByName(journal(), QIODevice::WriteOnly));
        EXPECT_EQ(RollbackFile::inspect(journal()).state, JournalState::Unreadable);
        EXPECT_TRUE(RollbackFile::needsRecovery(journal()));
        EXPECT_EQ(read("text").size(), 500);
        QFile::remove(path("journal"));
    }
    EXPECT_FALSE(file.startNew(QFileInfo(path("text")))) << "no journal, but somebody's";
    EXPECT_EQ(file.state(), JournalState::Unreadable);

    ASSERT_TRUE(change(file, journal(), path("a"), "1"));
    create_hard_link(native("journal"), native("other"), noLinks);
    EXPECT_TRUE(file.commit());
    EXPECT_FALSE(RollbackFile::needsRecovery(QFileInfo(path("other")))) << "emptied under all its names";

    ASSERT_TRUE(change(file, journal(), path("a"), "2"));
    file.close();
    file.setOwnJournalsOnly(true);
    EXPECT_TRUE(file.openByName(journal(), QIODevice::ReadWrite));
    file.close();
    EXPECT_TRUE(RollbackFile::inspect(journal()).belongsToUser);
#ifdef Q_OS_UNIX
    QFile::setPermissions(path("journal"), QFile::Permissions(0x6666));
    EXPECT_FALSE(file.openByName(journal(), QIODevice::ReadWrite)) << "anybody may have written it";
    EXPECT_FALSE(RollbackFile::inspect(journal()).belongsToUser);
#endif
}

TEST_F(Others, AJournalTellsNobodyMoreThanItsFilesDo)
{
#ifdef Q_OS_UNIX
    using Permissions = QFile::Permissions;
    write("secret", "aaaa");
    QFile::setPermissions(path("secret"), Permissions(0x6600));
    const auto othersRights = [this] { return QFile::permissions(path("journal")) & ~Permissions(0x7700); };
    RollbackFile file;
    ASSERT_TRUE(file.startNew(journal()));
    EXPECT_EQ(othersRights(), Permissions());
    file.close();
    QFile::setPermissions(path("journal"), Permissions(0x6666));
    ASSERT_TRUE(file.startNew(journal()));
    EXPECT_NE(file.addFile(QFileInfo(path("secret"))), 0u);
    EXPECT_EQ(othersRights(), Permissions());
#endif
}

/// A journal of two files chained against the order in which they lie.
JournalImage crossed()
{
    JournalImage image;
    image.damage(u("firstFile=b lastFile=a b.next=a a.next=0"));
    return image;
}

TEST_F(Others, JournalsMadeElsewhereAreContinuedAtTheirLastFile)
{
    write("journal", crossed().bytes);
    for (const char* name : {"a", "b", "c"}) {
        write(name, QByteArray(100, '.'));
    }
    RollbackFile file;
    ASSERT_TRUE(file.openByName(journal(), QIODevice::ReadWrite));
    EXPECT_NE(file.addFile(QFileInfo(path("c"))), 0u);
    file.close();
    EXPECT_EQ(RollbackFile::inspect(journal()).files.size(), 3u);
}

TEST_F(Others, ALengthNeedsBytesThatExplainIt)
{
    // A block of zeros would cut "b" to nothing; a block far out would make it huge.
    for (const char* damage : {"B1.position=0 B1.bound=0 B1.length:4=0 B1.checksum:4=0",
                               "b.size=1099511627776 B1.position=1099511627775 B1.bound=1099511627776"}) {
        JournalImage image;
        image.damage(u(damage));
        write("journal", image.bytes);
        write("a", QByteArray(100, 'a'));
        write("b", QByteArray(50, 'b'));
        RollbackFile file;
        ASSERT_TRUE(file.openByName(journal(), QIODevice::ReadWrite));
        EXPECT_FALSE(file.rollback());
        EXPECT_EQ(file.rollbackReport().restored, 1u);
        ASSERT_EQ(file.rollbackReport().failures.size(), 1u);
        EXPECT_EQ(file.rollbackReport().failures[0].name, u("b"));
        EXPECT_EQ(read("b"), QByteArray(50, 'b'));
        EXPECT_TRUE(RollbackFile::needsRecovery(journal()));
    }
}

TEST_F(Others, HundredsOfFilesNeedFewDescriptors)
{
    const QDir descriptors(u("/proc/self/fd"));
    const auto count = [&] { return descriptors.entryList(QDir::NoFilter, QDir::Unsorted).size(); };
    RollbackFile file;
    ASSERT_TRUE(file.startNew(journal()));
    for (int i = 0; i < 200; ++i) {
        const QByteArray name = "many/" + QByteArray::number(i);
        SecuredFile secured;
        ASSERT_TRUE(secured.open(write(name, "old"), file) && secured.write("new") == 3);
    }
    file.close();
    const auto before = count();
    ASSERT_TRUE(file.openByName(journal(), QIODevice::ReadWrite));
    decltype(count()) most = 0;
    file.setRollbackProgress([&](quint64, quint64) { most = qMax(most, count()); });
    EXPECT_TRUE(file.rollback());
    EXPECT_LT(most, before + 100);
    EXPECT_EQ(read("many/199"), "old");
    EXPECT_EQ(file.rollbackReport().restored, 200u);
}

/// A transaction of several stages on a disk with @p room bytes left: how many stages succeeded, each failure
/// telling the system's reason; then rolled back as soon as there is room.
void fillAndRollBack(const QString& disk, qint64 size, qint64 room)
{
    const QString file = disk + u("/file");
    const QByteArray content(30000, 'o');
    QFile(file).remove();
    QFile plain(file);
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly) && plain.write(content) == content.size());
    plain.close();
    QFile filler(disk + u("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(1024, 'f')) == 1024 && filler.size() < size) {
    }
    filler.resize(qMax<qint64>(0, filler.size() - room));
    filler.close();

    RollbackFile journal;
    SecuredFile secured;
    const QFileInfo name(disk + u("/journal"));
    const auto told = [&](bool done) {
        const bool reason = journal.errorString().contains(qt_error_string(ENOSPC));
        EXPECT_TRUE(done || reason) << room << ": " << journal.errorString().toStdString();
        return done;
    };
    const bool changed = told(journal.startNew(name)) && told(secured.open(file, journal)) &&
                         told(secured.write(QByteArray(9000, 'n')) == 9000) && told(secured.resize(100)) &&
                         told(secured.resize(28000)) && secured.seek(20000) &&
                         told(secured.write(QByteArray(50000, 'g')) == 50000);
    secured.close();
    const bool open = journal.isOpen();
    const bool restored = open && journal.rollback();
    static_cast<void>(told(restored || !open));
    journal.close();
    QFile::remove(filler.fileName());
    if (open && !restored) {
        ASSERT_TRUE(journal.openByName(name, QIODevice::ReadWrite)) << journal.errorString().toStdString();
        EXPECT_TRUE(journal.rollback()) << journal.errorString().toStdString();
    }
    EXPECT_TRUE(QFile::exists(file) && plain.open(QIODevice::ReadOnly) && plain.readAll() == content) << room;
    EXPECT_FALSE(name.exists()) << room << changed;
}

TEST_F(Others, EveryStageOnAFullDiskFailsCleanlyAndIsUndone)
{
    write("image", QByteArray());
    QFile(path("image")).resize(2 << 20);
    QDir().mkdir(path("disk"));
    const QStringList disks[] = {{u("-t"), u("tmpfs"), u("-o"), u("size=256k"), u("none"), path("disk")},
                                 {u("-o"), u("loop"), path("image"), path("disk")}};
    QProcess::execute(u("mkfs.ext4"), {u("-q"), u("-O"), u("^has_journal"), path("image")});
    for (const QStringList& disk : disks) {
        if (QProcess::execute(u("mount"), disk) != 0) {
            GTEST_SKIP() << "no file systems can be mounted here";
        }
        for (const qint64 room : {0, 2000, 6000, 12000, 20000, 30000, 45000, 60000, 70000, 90000, 110000}) {
            fillAndRollBack(path("disk"), 2 << 20, room);
        }
        EXPECT_EQ(QProcess::execute(u("umount"), {path("disk")}), 0);
    }
}

} // namespace
} // namespace veltor::test
