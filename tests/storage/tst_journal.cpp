// Existing journals: what is accepted, every fault in its own words, and what repair() keeps of a damaged
// one.

#include "storage/JournalImage.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Table.h"
#include "support/Text.h"

#include <veltor/utils/RollbackFile.h>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

TEST(Journal, DamageIsRefusedInItsOwnWords)
{
    const auto rows = readTable("storage/data/damages.txt", '|');
    ASSERT_EQ(rows.size(), 40u);
    for (const QStringList& row : rows) {
        SCOPED_TRACE(row[0].toStdString());
        JournalImage image;
        const QString message = image.message(row[2].trimmed());
        image.damage(row[1]);
        LogCapture log;
        MemoryDevice device;
        device.missing << QStringLiteral("g");

        EXPECT_FALSE(device.openImage(image.bytes));

        const auto records = log.take();
        ASSERT_EQ(records.size(), 1u);
        EXPECT_EQ(records[0].text, message);
        EXPECT_EQ(records[0].level, logging::LogLevel::Error);
        EXPECT_EQ(records[0].file, QLatin1String("SecuredFile.cpp"));
        EXPECT_EQ(records[0].line, 114);
        EXPECT_TRUE(device.isOpen()) << "repair() needs the journal";
        EXPECT_TRUE(device.protectedFiles().empty());
        EXPECT_EQ(device.journal(), image.bytes);
        EXPECT_FALSE(device.rollback()) << "an unchecked journal must not be disposed of";
    }
}

TEST(Journal, WholeOnesOfBothLayoutsAreAccepted)
{
    for (const bool checksums : {true, false}) {
        JournalImage image(checksums);
        image.damage(u("F1.region=48"));                      // just behind the header
        image.damage(checksums ? QString() : u("A1+43:1=7")); // nothing can tell
        LogCapture log;
        MemoryDevice device;
        ASSERT_TRUE(device.openImage(image.bytes)) << checksums;
        const auto records = log.take();
        ASSERT_EQ(records.size(), 1u);
        EXPECT_EQ(records[0].text, QLatin1String("Rollback files: a, b"));
        EXPECT_EQ(records[0].level, logging::LogLevel::Detail);
        EXPECT_EQ(records[0].line, 745);
        const auto files = device.protectedFiles();
        ASSERT_EQ(files.size(), 2u);
        EXPECT_EQ(files[0].size, 100u);
        EXPECT_EQ(files[0].blocks, 2u);
        EXPECT_EQ(files[0].savedBytes, 15u);
        EXPECT_EQ(device.freeBlockCount(), 2u);
        // Appending would mix the layouts.
        EXPECT_EQ(device.addBlock(image.at(u("a")), 0, 10), checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("c")) != 0, checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("a")), image.at(u("a")));
        device.close();
        EXPECT_TRUE(device.freeBlockCount() == 0 && device.journalVersion().isNull());
    }
}

/// A journal whose device cannot be positioned from some offset on, nor read from another.
class StuckBuffer : public QBuffer
{
public:
    qint64 stuckFrom = 0;
    qint64 unreadableFrom = 0;
    bool seek(qint64 position) override { return position < stuckFrom && QBuffer::seek(position); }

protected:
    qint64 readData(char* data, qint64 length) override
    {
        const qint64 readable = qMin(length, unreadableFrom - pos());
        return readable > 0 ? QBuffer::readData(data, readable) : -1;
    }
};

TEST(Journal, DeviceFaultsAreTold)
{
    JournalImage image;
    image.damage(u("b.nameLength:2=60000"));
    image.bytes += QByteArray(60000, 'n');
    const auto faultOf = [&](quint64 stuckFrom, quint64 unreadableFrom) {
        auto* const buffer = new StuckBuffer;
        buffer->setData(image.bytes);
        buffer->open(QIODevice::ReadWrite);
        buffer->stuckFrom = static_cast<qint64>(stuckFrom);
        buffer->unreadableFrom = static_cast<qint64>(unreadableFrom);
        LogCapture log;
        MemoryDevice device;
        EXPECT_FALSE(device.open(makeIOPtr(buffer), QIODevice::ReadWrite));
        return log.takeTexts(logging::LogLevel::Error).value(0);
    };
    const quint64 end = image.at(u("end"));
    EXPECT_EQ(faultOf(0, end),
              image.message(u("Ошибка перехода к смещению 0 (размер файла отката {end}, файл открыт)")));
    EXPECT_EQ(faultOf(image.at(u("b.name")), end),
              image.message(u("Ошибка позиционирования в файле по смещению {b.name} относительно {b}")));
    EXPECT_EQ(faultOf(end, image.at(u("A1+44"))),
              image.message(u("Ошибка чтения данных отката по смещению {A1+40} (должно быть прочитано 15, "
                              "а прочитано 4)")));

    LogCapture log;
    MemoryDevice device;
    EXPECT_FALSE(device.open(makeIOPtr(new QBuffer), QIODevice::WriteOnly)) << "closed";
    EXPECT_FALSE(device.open(nullIOPtr(), QIODevice::ReadWrite));
    EXPECT_FALSE(device.isOpen());
    EXPECT_EQ(log.takeTexts(logging::LogLevel::Error).size(), 2);
}

TEST(Journal, NeedsRecoveryOnlyWhenItHoldsSomething)
{
    const Folder folder;
    const QString path = folder.path("journal");
    const auto needsRecovery = [&](const QByteArray& bytes) {
        return utils::RollbackFile::needsRecovery(QFileInfo(folder.write("journal", bytes)));
    };
    EXPECT_FALSE(utils::RollbackFile::needsRecovery(QFileInfo(path))) << "not there";
    EXPECT_TRUE(utils::RollbackFile::needsRecovery(QFileInfo(folder.path()))) << "a directory";
    const QByteArray fresh = JournalImage().bytes.left(16) + QByteArray(32, 0);
    EXPECT_FALSE(needsRecovery(QByteArray()));
    EXPECT_FALSE(needsRecovery(fresh.left(20))) << "creation cut short";
    EXPECT_FALSE(needsRecovery(fresh));
    EXPECT_TRUE(needsRecovery(QByteArray(16, 'x')));
    EXPECT_TRUE(needsRecovery(JournalImage().bytes));
    JournalImage unfinished;
    unfinished.damage(u("a.last=0"));
    EXPECT_TRUE(needsRecovery(unfinished.bytes));
}

void expectSalvage(const QStringList& row, bool checksums)
{
    JournalImage image(checksums);
    image.damage(row[1]);
    MemoryDevice device;
    device.missing << QStringLiteral("g");
    LogCapture log;
    EXPECT_FALSE(device.openImage(image.bytes));
    log.take();

    device.repair();

    QStringList kept;
    QStringList lines;
    for (const auto& file : device.protectedFiles()) {
        kept << file.name + QLatin1Char(':') + QString::number(file.blocks);
        lines << QStringLiteral("File %0 has been repaired").arg(file.name);
    }
    lines << QStringLiteral("Repaired file count %0").arg(kept.size());
    EXPECT_EQ(kept.join(QLatin1Char(' ')), row[2].trimmed());
    EXPECT_EQ(device.repairedWhole(), row[3].trimmed() == QLatin1String("nothing"));
    EXPECT_EQ(device.journal(), image.bytes) << "repair changes nothing";
    QStringList logged;
    for (const auto& record : log.take()) {
        EXPECT_EQ(record.level, logging::LogLevel::Info) << record.text.toStdString();
        EXPECT_EQ(record.line, record.text.startsWith(QLatin1String("File")) ? 972 : 980);
        logged << record.text;
    }
    EXPECT_EQ(logged, lines);
    EXPECT_EQ(device.addFileImpl(QStringLiteral("new")), 0u) << "a repaired journal takes no changes";
}

TEST(Repair, KeepsWhatIsWhole)
{
    for (const QStringList& row : readTable("storage/data/salvages.txt", '|')) {
        for (const bool checksums : {true, false}) {
            SCOPED_TRACE(row[0].toStdString() + (checksums ? "" : ", without checksums"));
            expectSalvage(row, checksums);
        }
    }
}

TEST(Repair, ATornLinkIntoZerosIsNoBlockOfAnEmptyFile)
{
    JournalImage image;
    image.damage(QStringLiteral("b.last=0 b.first=end"));
    image.bytes += QByteArray(100, '\0');
    LogCapture log;
    MemoryDevice device;
    EXPECT_FALSE(device.openImage(image.bytes));
    device.repair();
    ASSERT_EQ(device.protectedFiles().size(), 2u);
    EXPECT_EQ(device.protectedFiles()[1].blocks, 0u);
    EXPECT_TRUE(device.repairedWhole());
}

TEST(Repair, RollbackDisposesOfAJournalButOfNothingElse)
{
    LogCapture log;
    MemoryDevice stranger;
    EXPECT_FALSE(stranger.openImage(QByteArray(100, 'x')));
    stranger.repair();
    EXPECT_FALSE(stranger.rollback());
    EXPECT_EQ(stranger.removed, 0) << "this was never a journal";

    MemoryDevice unborn;
    EXPECT_FALSE(unborn.openImage(QByteArray()));
    unborn.repair();
    EXPECT_TRUE(unborn.rollback());
    EXPECT_EQ(unborn.removed, 1);
    EXPECT_FALSE(unborn.isOpen() || unborn.repairedWhole());
    EXPECT_FALSE(unborn.rollback());
    unborn.repair();
    unborn.commit();
    EXPECT_EQ(unborn.removed, 1);
}

} // namespace
} // namespace veltor::test
