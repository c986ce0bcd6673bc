// Salvage: what repair() keeps of a damaged journal, and what a rollback makes of it.

#include "storage/JournalImage.h"
#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Table.h"

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

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
    EXPECT_FALSE(unborn.isOpen());
    EXPECT_FALSE(unborn.rollback());
    unborn.repair();
    unborn.commit();
    EXPECT_EQ(unborn.removed, 1);
}

} // namespace
} // namespace veltor::test
