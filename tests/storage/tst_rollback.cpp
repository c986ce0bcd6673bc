// Protected changes on real files: what reaches the journal, and what rollback and commit make of it.

#include "storage/JournalImage.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Platform.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <QtCore/QDataStream>
#include <QtCore/QTextStream>
#include <QtCore/QXmlStreamWriter>

#include <gtest/gtest.h>

#include <filesystem>

namespace veltor::test {
namespace {

using utils::RollbackDevice;
using utils::RollbackFile;
using utils::SecuredFile;

class Rollback : public testing::Test, protected Folder
{
protected:
    bool begin(RollbackFile& journal) const
    {
        return journal.openByName(QFileInfo(path("journal")), QIODevice::WriteOnly);
    }

    /// Writes at the start of a file under the journal's protection.
    void change(RollbackFile& journal, const char* name, const QByteArray& bytes) const
    {
        SecuredFile file;
        ASSERT_TRUE(file.open(path(name), journal));
        EXPECT_EQ(file.write(bytes), bytes.size());
    }

    bool rollBack(const char* journalName = "journal") const
    {
        RollbackFile journal;
        return journal.openByName(QFileInfo(path(journalName)), QIODevice::ReadWrite) && journal.rollback();
    }

    LogCapture m_log;
};

TEST_F(Rollback, JournalHoldsTheDocumentedBytes)
{
    write("journal", QByteArray(500, 'x')); // an old one, longer than the new
    write("файл", "0123456789");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    EXPECT_EQ(read("journal"),
              QByteArray::fromHex("5898C29F3116AB4480895FEB8D81855A") + QByteArray(32, '\0'));
    SecuredFile file;
    ASSERT_TRUE(file.open(path("файл"), journal));
    EXPECT_TRUE(file.seek(2));
    EXPECT_EQ(file.write("ab"), 2);
    EXPECT_TRUE(file.seek(10));
    EXPECT_EQ(file.write("END"), 3);

    EXPECT_EQ(read("файл"), "01ab456789END");
    // Header; entry at 48 with an 8-byte name; block at 90 with 2 bytes; block at 132 without data.
    const QByteArray expected("5898c29f3116ab4480895feb8d81855a 3000000000000000 3000000000000000"
                              "0000000000000000 0000000000000000"
                              "0000000000000000 5a00000000000000 8400000000000000 0a00000000000000"
                              "0800 d184d0b0d0b9d0bb"
                              "8400000000000000 0000000000000000 0200000000000000 0a00000000000000"
                              "faefd9b5 02000000 3233"
                              "0000000000000000 5a00000000000000 0a00000000000000 0a00000000000000"
                              "00000000 00000000");
    EXPECT_EQ(read("journal"), QByteArray::fromHex(expected));
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(read("файл"), "0123456789");
    EXPECT_FALSE(QFileInfo::exists(path("journal")));
    EXPECT_EQ(file.write("x"), -1) << "nothing protects it any more";
    EXPECT_EQ(read("файл"), "0123456789");
}

TEST_F(Rollback, LongRangesAreSavedInPieces)
{
    const QByteArray big = QByteArray("0123456789abcde").repeated(1400000);
    write("big", big);
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    SecuredFile file;
    ASSERT_TRUE(file.open(path("big"), journal));
    EXPECT_TRUE(file.resize(100));
    EXPECT_FALSE(file.resize(-1));
    EXPECT_EQ(journal.protectedFiles()[0].savedBytes, static_cast<quint64>(big.size() - 100));
    EXPECT_EQ(journal.protectedFiles()[0].blocks, 3u);
    journal.close();

    RollbackFile again;
    ASSERT_TRUE(again.openByName(QFileInfo(path("journal")), QIODevice::ReadOnly));
    again.setRollbackProgress([&](quint64 restored, quint64 total) {
        EXPECT_EQ(total, 3u);
        if (restored == 2) {
            again.cancelRollback();
        }
    });
    EXPECT_FALSE(again.rollback());
    EXPECT_TRUE(again.rollbackReport().canceled && again.rollbackReport().failures.empty());
    again.setRollbackProgress([](quint64, quint64) { throw 1; });
    EXPECT_THROW(again.rollback(), int);
    again.setRollbackProgress({});
    EXPECT_TRUE(again.rollback());
    EXPECT_TRUE(read("big") == big);
}

TEST_F(Rollback, NamesAreRelativeBeneathTheJournalAndOneFileHasOneKey)
{
    const QString anotherDrive = placeOnAnotherDrive();
    const Folder elsewhere(anotherDrive.isEmpty() ? QDir::tempPath() : anotherDrive);
    write("home/maps/a..b", "inside");
    const QString outside = elsewhere.write("outside", "outside");
    std::error_code noLinks; // Windows asks for a privilege
    const auto native = [this](const char* name) {
        return std::filesystem::u8path(path(name).toStdString());
    };
    create_directory_symlink(native("home"), native("link"), noLinks);
    create_hard_link(native("home/maps/a..b"), native("hard"));
    RollbackFile journal;
    const char* const folder = noLinks ? "home" : "link";
    const QString place = path(folder);
    ASSERT_TRUE(journal.openByName(QFileInfo(place + u("/journal")), QIODevice::WriteOnly));
    const auto key = journal.addFile(QFileInfo(path("home/maps/a..b")));
    EXPECT_EQ(key, 48u);
    EXPECT_EQ(journal.fileLookup(u("maps/a..b")), key);
    EXPECT_EQ(journal.addFile(QFileInfo(place + u("/./maps/../maps/a..b"))), key);
    EXPECT_EQ(journal.addFile(QFileInfo(path("hard"))), key);
    const auto other = journal.addFile(QFileInfo(outside));
    EXPECT_EQ(journal.protectedFiles()[1].name, QFileInfo(outside).canonicalFilePath());
    EXPECT_EQ(journal.fileName(key), place + u("/maps/a..b"));

    m_log.take();
    EXPECT_EQ(journal.addFile(QFileInfo(path("nothing"))), 0u);
    EXPECT_EQ(journal.addFile(QFileInfo(path("home"))), 0u) << "a directory";
    EXPECT_EQ(journal.addFile(QFileInfo(path("home/journal"))), 0u) << "the journal itself";
    EXPECT_EQ(m_log.takeTexts(logging::LogLevel::Error).size(), 3);

    // Journal and files move together.
    EXPECT_TRUE(journal.fileSeek(key, 0));
    EXPECT_TRUE(journal.writeBlock(key, "INSIDE"));
    EXPECT_TRUE(journal.writeBlock(other, "OUT"));
    journal.close();
    ASSERT_TRUE(QFile::rename(path("home"), path("elsewhere")));
    ASSERT_TRUE(journal.openByName(QFileInfo(path("elsewhere/journal")), QIODevice::ReadWrite));
    EXPECT_EQ(journal.fileLookup(u("maps/a..b")), key);
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(read("elsewhere/maps/a..b"), "inside");
    EXPECT_EQ(elsewhere.read("outside"), "outside");
}

TEST_F(Rollback, AFailedFileKeepsTheJournal)
{
    write("a", "aaaa");
    write("b", "bbbb");
    write("c", "cccc");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    for (const char* name : {"a", "b", "c"}) {
        change(journal, name, "1");
    }
    const auto overwriteSavedByteOfB = [this](const char* byte) {
        QFile file(path("journal"));
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        file.seek(48 + 35 + 41 + 35 + 40); // header, entry, block with its byte, entry, head
        file.write(byte);
    };
    overwriteSavedByteOfB("x");
    EXPECT_FALSE(journal.rollback());
    EXPECT_EQ(journal.rollbackReport().restored, 2u);
    EXPECT_EQ(journal.rollbackReport().failures.at(0).name, u("b"));
    EXPECT_EQ(read("a"), "aaaa");
    EXPECT_EQ(read("b"), "1bbb");
    EXPECT_EQ(read("c"), "cccc");
    EXPECT_EQ(journal.protectedFiles().size(), 1u);
    EXPECT_EQ(journal.addFile(QFileInfo(path("a"))), 0u) << "the journal lists it already";
    overwriteSavedByteOfB("b");
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(read("b"), "bbbb");
}

TEST_F(Rollback, RefusesBadNamesUnknownKeysAndClosedFiles)
{
    MemoryDevice device;
    EXPECT_EQ(device.addFileImpl(QStringLiteral("a")), 0u) << "no journal";
    ASSERT_TRUE(device.openImage(QByteArray(), QIODevice::WriteOnly));
    const auto key = device.addFileImpl(QStringLiteral("a"));
    EXPECT_EQ(device.addFileImpl(QString(32768, QChar(0x444))), 0u) << "65,536 bytes";
    const QString longest = QString(32767, QChar(0x444)) + QLatin1Char('n');
    EXPECT_NE(device.addFileImpl(longest), 0u);
    MemoryDevice reader;
    EXPECT_TRUE(reader.openImage(device.journal()) && reader.existingFile(longest));
    EXPECT_EQ(device.addFileImpl(QString(QChar(0xD800))), 0u) << "half a character";
    const QByteArray before = device.journal();
    EXPECT_FALSE(device.addBlock(key + 1, 0, 1));
    EXPECT_FALSE(device.writeBlock(0, "x"));
    device.existingFile(QStringLiteral("a"))->device->close();
    EXPECT_FALSE(device.addBlock(key, 0, 1));
    EXPECT_FALSE(device.writeBlock(key, "x"));
    EXPECT_EQ(device.journal(), before);
    EXPECT_FALSE(device.rollback());
}

TEST_F(Rollback, SpecialFilesAreRefusedNotWaitedFor)
{
    RollbackFile journal;
    EXPECT_FALSE(journal.openByName(QFileInfo(path()), QIODevice::ReadWrite));
    EXPECT_FALSE(journal.openByName(QFileInfo(path()), QIODevice::WriteOnly));
    EXPECT_FALSE(journal.openByName(QFileInfo(path("missing")), QIODevice::ReadWrite));
    EXPECT_FALSE(QFileInfo::exists(path("missing"))) << "a reading mode never creates a journal";
    if (!makePipe(path("pipe"))) {
        GTEST_SKIP() << "no named pipes among the files";
    }
    EXPECT_FALSE(journal.openByName(QFileInfo(path("pipe")), QIODevice::ReadOnly));
    EXPECT_FALSE(journal.openByName(QFileInfo(path("pipe")), QIODevice::WriteOnly));
    ASSERT_TRUE(begin(journal));
    EXPECT_EQ(journal.addFile(QFileInfo(path("pipe"))), 0u);
}

/// Keeps a file open until it is killed.
const Role hold("hold", [](const QStringList& arguments) {
    QFile file(arguments[0]);
    const bool opened = file.open(QIODevice::ReadWrite);
    sayReady();
    return opened && std::getchar() == 0 ? 0 : 1;
});

TEST_F(Rollback, FilesThatAnotherProcessHoldsAreRolledBackAndCommitted)
{
    write("a", "aaaa");
    for (const bool commits : {false, true}) {
        RollbackFile journal;
        ASSERT_TRUE(begin(journal));
        change(journal, "a", "1");
        Actor holdsJournal("hold", {path("journal")});
        Actor holdsFile("hold", {path("a")});
        ASSERT_TRUE(holdsJournal.isReady() && holdsFile.isReady());
        EXPECT_TRUE(commits ? bool(journal.commit()) : journal.rollback());
        EXPECT_EQ(read("a"), commits ? "1aaa" : "aaaa");
        // Where the journal could not be deleted it is empty.
        EXPECT_FALSE(RollbackFile::needsRecovery(QFileInfo(path("journal"))));
    }
}

TEST_F(Rollback, ACommitThatCannotDeleteTheJournalEmptiesIt)
{
    write("folder/journal", "");
    write("folder/a", "aaaa");
    const auto everybody = QFile::Permissions(0x6666);
    const auto nobodyWrites = QFile::Permissions(0x5555);
    QFile::setPermissions(path("folder/journal"), everybody);
    QFile::setPermissions(path("folder/a"), everybody);
    QFile::setPermissions(path("folder"), nobodyWrites);
    QFile::setPermissions(path(), nobodyWrites);
    const int result = forked(
        [this] {
            RollbackFile journal;
            if (!journal.openByName(QFileInfo(path("folder/journal")), QIODevice::WriteOnly)) {
                return 1;
            }
            change(journal, "folder/a", "1");
            m_log.take();
            journal.commit();
            return m_log.takeTexts(logging::LogLevel::Error).size() == 1 && !HasFailure() ? 0 : 2;
        },
        User::Ordinary);
    QFile::setPermissions(path("folder"), nobodyWrites | QFile::WriteOwner);
    QFile::setPermissions(path(), nobodyWrites | QFile::WriteOwner);
    if (result == NoFork) {
        GTEST_SKIP() << "this system deletes what it lets write, unless somebody holds it";
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(read("folder/journal"), JournalImage().bytes.left(16) + QByteArray(32, '\0'));
    EXPECT_TRUE(rollBack("folder/journal"));
    EXPECT_EQ(read("folder/a"), "1aaa");
}

TEST_F(Rollback, FilesBeyond4GiBAreProtected)
{
    constexpr qint64 size = (5LL << 30) + 3;
    QFile plain(write("a", "start"));
    if (!plain.open(QIODevice::ReadWrite) || !plain.resize(size)) {
        GTEST_SKIP() << "no room for a file of 5 GiB: " << qPrintable(plain.errorString());
    }
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    SecuredFile file;
    ASSERT_TRUE(file.open(path("a"), journal));
    for (const qint64 position : {size - 2, (4LL << 30) - 2, size + 100}) {
        ASSERT_TRUE(file.seek(position));
        EXPECT_EQ(file.write("1234"), 4);
    }
    EXPECT_EQ(plain.size(), size + 104);
    file.close();
    journal.close();
    EXPECT_TRUE(rollBack());
    EXPECT_EQ(plain.size(), size);
    for (const qint64 position : {size - 2, (4LL << 30) - 2}) {
        ASSERT_TRUE(plain.seek(position));
        EXPECT_EQ(plain.read(4), QByteArray(4, '\0').left(static_cast<int>(size - position)));
    }
}

/// What a program sees that reads and writes a file through all that takes a file device.
QStringList seen(QFileDevice& file)
{
    QStringList seen;
    const auto say = [&](const auto& value) { seen << u("%0").arg(value); };
    say(QString::fromUtf8(file.peek(4)));
    say(QString::fromUtf8(file.readLine()));
    say(file.pos());
    say(file.bytesAvailable());
    char line[4] = "";
    say(file.readLine(line, sizeof line));
    say(file.skip(1));
    say(file.canReadLine());
    file.ungetChar('!');
    say(QString::fromUtf8(file.readAll()));
    say(file.atEnd());
    say(file.write("", 0));
    say(file.reset());
    QTextStream text(&file);
    text << "LINE" << QStringLiteral(" ONE\n");
    text.flush();
    say(text.status());
    QDataStream data(&file);
    data << 1.5 << quint8(7);
    say(data.status());
    QXmlStreamWriter xml(&file);
    xml.writeTextElement(QStringLiteral("a"), QStringLiteral("b"));
    say(xml.hasError());
    say(file.flush());
    say(file.isTextModeEnabled());
    say(int(file.permissions()));
    say(file.seek(100000));
    say(file.read(line, 2));
    say(file.size());
    say(file.resize(3));
    say(file.pos());
    say(file.error());
    say(file.seek(-1));
    return seen;
}

TEST_F(Rollback, ASecuredFileBehavesAsAFileDevice)
{
    const QByteArray content = "line one\nline two\n" + QByteArray(9000, 'x') + "\nend";
    write("plain", content);
    write("a", content);
    QFile plain(path("plain"));
    ASSERT_TRUE(plain.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    SecuredFile file;
    EXPECT_FALSE(file.open(path("missing"), journal));
    EXPECT_EQ(file.error(), QFileDevice::ResizeError) << "the base has no better one to set";
    EXPECT_FALSE(file.errorString().isEmpty() || file.isOpen());
    EXPECT_FALSE(file.open(path("a"), SecuredFile::OwnedRollbackDevice(nullptr, [](RollbackDevice*) {})));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.openMode(), QIODevice::ReadWrite | QIODevice::Unbuffered);
    EXPECT_EQ(file.write("x"), 0) << "no rollback device";
    EXPECT_FALSE(file.seek(1));
    EXPECT_EQ(file.size(), 0);
    file.close();

    ASSERT_TRUE(file.open(path("a"), journal));
    EXPECT_FALSE(file.isSequential());
    EXPECT_EQ(file.fileName(), path("a"));
    EXPECT_EQ(seen(file), seen(plain));
    EXPECT_EQ(read("a"), read("plain"));
    EXPECT_EQ(file.handle(), -1);
    EXPECT_EQ(file.map(0, 1), nullptr) << "would pass the journal by";

    // Keys repeat in the next journal.
    EXPECT_TRUE(journal.rollback());
    write("b", "bbbb");
    ASSERT_TRUE(begin(journal));
    EXPECT_EQ(journal.addFile(QFileInfo(path("b"))), 48u);
    char byte = 0;
    EXPECT_EQ(file.write("x"), -1);
    const bool windows = QDir::rootPath() != QLatin1String("/"); // where Qt's engine says otherwise
    EXPECT_EQ(file.error(), windows ? QFileDevice::PermissionsError : QFileDevice::WriteError);
    EXPECT_EQ(file.read(&byte, 1), -1);
    EXPECT_EQ(file.error(), windows ? QFileDevice::PermissionsError : QFileDevice::ReadError);
    EXPECT_FALSE(file.seek(0));
    EXPECT_EQ(file.error(), QFileDevice::PositionError);
    EXPECT_FALSE(file.resize(0));
    EXPECT_FALSE(file.errorString().isEmpty());
    EXPECT_EQ(read("b"), "bbbb");
    journal.commit();

    // An owned device goes with the file; the journal stays for the next run.
    auto* const owned = new RollbackFile;
    ASSERT_TRUE(owned->startNew(QFileInfo(path("journal"))));
    ASSERT_TRUE(file.open(path("a"), {owned, [](RollbackDevice* device) { delete device; }}));
    EXPECT_EQ(file.write("####"), 4);
    file.close();
    EXPECT_TRUE(rollBack());
    EXPECT_EQ(read("a"), content);
}

} // namespace
} // namespace veltor::test
