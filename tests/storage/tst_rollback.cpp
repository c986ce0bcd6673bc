// Protected changes on real files: what reaches the journal, and what rollback and commit make of it.

#include "support/LogCapture.h"
#include "support/Printers.h"

#include <veltor/err/Exceptions.h>
#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include "storage/JournalImage.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using utils::RollbackDevice;
using utils::RollbackFile;
using utils::SecuredFile;

class Rollback : public testing::Test
{
protected:
    QString path(const char* name) const { return m_directory.filePath(QString::fromUtf8(name)); }

    QString make(const char* name, const QByteArray& content) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    QByteArray content(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }

    bool begin(RollbackFile& journal) const
    {
        return journal.openByName(QFileInfo(path("journal")), QIODevice::WriteOnly);
    }

    QTemporaryDir m_directory;
    LogCapture m_log;
};

TEST_F(Rollback, JournalHoldsTheDocumentedBytes)
{
    make("journal", QByteArray(500, 'x')); // an old one, longer than the new
    make("файл", "0123456789");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    EXPECT_EQ(content("journal"),
              QByteArray::fromHex("5898C29F3116AB4480895FEB8D81855A") + QByteArray(32, '\0'));
    SecuredFile file;
    ASSERT_TRUE(file.open(path("файл"), journal));
    EXPECT_TRUE(file.seek(2));
    EXPECT_EQ(file.write("ab"), 2);
    EXPECT_TRUE(file.seek(10));
    EXPECT_EQ(file.write("END"), 3);

    EXPECT_EQ(content("файл"), "01ab456789END");
    // Header; entry at 48 with an 8-byte name; block at 90 with 2 bytes; block at 132 without data.
    EXPECT_EQ(content("journal").toHex(), QByteArray("5898c29f3116ab4480895feb8d81855a"
                                                     "3000000000000000"
                                                     "3000000000000000"
                                                     "00000000000000000000000000000000"
                                                     "0000000000000000"
                                                     "5a00000000000000"
                                                     "8400000000000000"
                                                     "0a00000000000000"
                                                     "0800"
                                                     "d184d0b0d0b9d0bb"
                                                     "8400000000000000"
                                                     "0000000000000000"
                                                     "0200000000000000"
                                                     "0a00000000000000"
                                                     "faefd9b5"
                                                     "02000000"
                                                     "3233"
                                                     "0000000000000000"
                                                     "5a00000000000000"
                                                     "0a00000000000000"
                                                     "0a00000000000000"
                                                     "00000000"
                                                     "00000000"));
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(content("файл"), "0123456789");
    EXPECT_FALSE(QFileInfo::exists(path("journal")));
    EXPECT_EQ(file.write("x"), -1) << "nothing protects it any more";
    EXPECT_EQ(content("файл"), "0123456789");
}

TEST_F(Rollback, UndoesEveryKindOfChange)
{
    QByteArray big(20 * 1024 * 1024, '\0');
    for (int i = 0; i < big.size(); ++i) {
        big[i] = static_cast<char>(i * 7 + i / 4096);
    }
    make("big", big);
    make("empty", "");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    SecuredFile file;
    SecuredFile empty;
    ASSERT_TRUE(file.open(path("big"), journal));
    ASSERT_TRUE(empty.open(path("empty"), journal));
    EXPECT_TRUE(file.seek(big.size() + 1000)); // a hole
    EXPECT_EQ(file.write("beyond"), 6);
    EXPECT_TRUE(file.resize(100));
    EXPECT_EQ(file.pos(), 100);
    EXPECT_TRUE(file.resize(5000));
    EXPECT_EQ(file.write(QByteArray(10 * 1024 * 1024, 'w')), 10 * 1024 * 1024);
    EXPECT_EQ(empty.write("something"), 9);
    EXPECT_TRUE(empty.resize(0));
    EXPECT_TRUE(empty.resize(0));
    EXPECT_FALSE(empty.resize(-1));
    // The shrink saved everything above 100 bytes, in pieces.
    EXPECT_EQ(journal.protectedFiles()[0].savedBytes, static_cast<quint64>(big.size() + 1006 - 100 + 4900));
    EXPECT_GT(journal.protectedFiles()[0].blocks, 3u);
    file.close();

    RollbackFile again;
    ASSERT_TRUE(again.openByName(QFileInfo(path("journal")), QIODevice::ReadOnly));
    EXPECT_EQ(again.protectedFiles()[0].blocks, journal.protectedFiles()[0].blocks);
    quint64 last = 0;
    again.setRollbackProgress(
        [&](quint64 restored, quint64 total) { last = restored == last + 1 ? total : 0; });
    last = 0;
    EXPECT_TRUE(again.rollback());
    EXPECT_TRUE(content("big") == big);
    EXPECT_EQ(content("empty"), "");
}

TEST_F(Rollback, NamesAreRelativeBeneathTheJournalAndOneFileHasOneKey)
{
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(QStringLiteral("home/maps")));
    make("home/maps/a..b", "inside");
    make("outside", "outside");
    ASSERT_TRUE(QFile::link(path("home"), path("link")));
    ASSERT_TRUE(QFile::link(path("home/maps/a..b"), path("alias")));
    RollbackFile journal;
    ASSERT_TRUE(journal.openByName(QFileInfo(path("link/journal")), QIODevice::WriteOnly));
    const auto key = journal.addFile(QFileInfo(path("home/maps/a..b")));
    EXPECT_EQ(key, 48u);
    EXPECT_EQ(journal.fileLookup(QStringLiteral("maps/a..b")), key);
    EXPECT_EQ(journal.addFile(QFileInfo(path("link/./maps/../maps/a..b"))), key);
    EXPECT_EQ(journal.addFile(QFileInfo(path("alias"))), key);
#ifdef Q_OS_UNIX
    EXPECT_EQ(QProcess::execute(QStringLiteral("ln"), {path("home/maps/a..b"), path("hard")}), 0);
    EXPECT_EQ(journal.addFile(QFileInfo(path("hard"))), key);
#endif
    const auto other = journal.addFile(QFileInfo(path("outside")));
    EXPECT_EQ(journal.protectedFiles()[1].name, QFileInfo(path("outside")).canonicalFilePath());
    EXPECT_EQ(journal.fileName(key), path("link/maps/a..b"));

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
    EXPECT_EQ(journal.fileLookup(QStringLiteral("maps/a..b")), key);
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(content("elsewhere/maps/a..b"), "inside");
    EXPECT_EQ(content("outside"), "outside");
}

TEST_F(Rollback, AReopenedJournalTakesFurtherChanges)
{
    make("a", "aaaa");
    make("b", "bbbb");
    {
        RollbackFile journal;
        ASSERT_TRUE(begin(journal));
        SecuredFile file;
        ASSERT_TRUE(file.open(path("a"), journal));
        file.write("11");
    }
    RollbackFile journal;
    ASSERT_TRUE(journal.openByName(QFileInfo(path("journal")), QIODevice::ReadWrite));
    SecuredFile a;
    SecuredFile b;
    ASSERT_TRUE(a.open(path("a"), journal));
    ASSERT_TRUE(b.open(path("b"), journal));
    a.write("2222");
    b.write("2");
    journal.close();
    EXPECT_FALSE(journal.openByName(QFileInfo(path("missing")), QIODevice::ReadWrite));
    EXPECT_FALSE(QFileInfo::exists(path("missing"))) << "a reading mode never creates a journal";
    ASSERT_TRUE(journal.openByName(QFileInfo(path("journal")), QIODevice::ReadOnly));
    EXPECT_EQ(journal.addBlock(journal.fileLookup(QStringLiteral("a")), 0, 1), false) << "opened for reading";
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(content("a"), "aaaa");
    EXPECT_EQ(content("b"), "bbbb");
}

TEST_F(Rollback, AFailedFileKeepsTheJournal)
{
    make("a", "aaaa");
    make("b", "bbbb");
    make("c", "cccc");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    for (const char* name : {"a", "b", "c"}) {
        SecuredFile file;
        ASSERT_TRUE(file.open(path(name), journal));
        file.write("1");
    }
    const auto overwriteSavedByteOfB = [this](const char* byte) {
        QFile file(path("journal"));
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        file.seek(48 + 35 + 41 + 35 + 40); // header, entry, block with its byte, entry, head
        file.write(byte);
    };
    overwriteSavedByteOfB("x");
    EXPECT_FALSE(journal.rollback());
    EXPECT_EQ(content("a"), "aaaa");
    EXPECT_EQ(content("b"), "1bbb");
    EXPECT_EQ(content("c"), "cccc");
    EXPECT_EQ(journal.protectedFiles().size(), 1u);
    EXPECT_EQ(journal.addFile(QFileInfo(path("a"))), 0u) << "the journal lists it already";
    overwriteSavedByteOfB("b");
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(content("b"), "bbbb");
}

TEST_F(Rollback, RefusesBadNamesUnknownKeysAndClosedFiles)
{
    MemoryDevice device;
    EXPECT_EQ(device.addFileImpl(QStringLiteral("a")), 0u) << "no journal";
    ASSERT_TRUE(device.openImage(QByteArray(), QIODevice::WriteOnly));
    const auto key = device.addFileImpl(QStringLiteral("a"));
    EXPECT_EQ(device.addFileImpl(QString(40000, QChar(0x444))), 0u) << "80,000 bytes";
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
    EXPECT_FALSE(journal.openByName(QFileInfo(m_directory.path()), QIODevice::ReadWrite));
    EXPECT_FALSE(journal.openByName(QFileInfo(m_directory.path()), QIODevice::WriteOnly));
#ifdef Q_OS_UNIX
    ASSERT_EQ(QProcess::execute(QStringLiteral("mkfifo"), {path("pipe")}), 0);
    EXPECT_FALSE(journal.openByName(QFileInfo(path("pipe")), QIODevice::ReadOnly));
    EXPECT_FALSE(journal.openByName(QFileInfo(path("pipe")), QIODevice::WriteOnly));
    ASSERT_TRUE(begin(journal));
    EXPECT_EQ(journal.addFile(QFileInfo(path("pipe"))), 0u);
#endif
}

TEST_F(Rollback, ASecuredFileBehavesAsAFileDevice)
{
    make("a", "line one\nline two\n");
    RollbackFile journal;
    ASSERT_TRUE(begin(journal));
    SecuredFile file;
    EXPECT_STREQ(file.metaObject()->className(), "veltor::utils::SecuredFile");
    EXPECT_FALSE(file.open(path("missing"), journal));
    EXPECT_FALSE(file.isOpen());
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
    EXPECT_EQ(file.peek(4), "line");
    EXPECT_EQ(file.readLine(), "line one\n");
    EXPECT_EQ(file.pos(), 9);
    EXPECT_EQ(file.bytesAvailable(), 9);
    EXPECT_EQ(file.write("LINE"), 4);
    EXPECT_EQ(file.readAll(), " two\n");
    EXPECT_TRUE(file.atEnd());
    EXPECT_EQ(file.write("", 0), 0);
    EXPECT_EQ(journal.protectedFiles()[0].blocks, 1u);
    EXPECT_EQ(content("a"), "line one\nLINE two\n");
    file.close();

    // An owned device goes with the file; the journal stays for the next run.
    {
        auto* const owned = new RollbackFile;
        ASSERT_TRUE(owned->openByName(QFileInfo(path("journal")), QIODevice::ReadWrite));
        ASSERT_TRUE(file.open(path("a"), {owned, [](RollbackDevice* device) { delete device; }}));
        EXPECT_EQ(file.write("####"), 4);
        file.close();
    }
    ASSERT_TRUE(journal.openByName(QFileInfo(path("journal")), QIODevice::ReadWrite));
    EXPECT_TRUE(journal.rollback());
    EXPECT_EQ(content("a"), "line one\nline two\n");
}

} // namespace
} // namespace veltor::test
