// Salvage: what repair() keeps of a damaged journal, and what a rollback makes of it.

#include "storage/JournalImage.h"
#include "support/LogCapture.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using Image = JournalImage;

struct Salvage
{
    const char* name;
    const char* words;
    const char* kept; // "name:blocks ..." in order
    bool whole;
};

void PrintTo(const Salvage& row, std::ostream* out)
{
    *out << row.name;
}

class Repair : public testing::TestWithParam<Salvage>
{};

TEST_P(Repair, KeepsWhatIsWhole)
{
    for (const bool checksums : {true, false}) {
        Image image(checksums);
        image.damage(GetParam().words);
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
        EXPECT_EQ(kept.join(QLatin1Char(' ')), QLatin1String(GetParam().kept)) << checksums;
        EXPECT_EQ(device.repairedWhole(), GetParam().whole) << checksums;
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
}

// clang-format off
const Salvage salvages[] = {
    // Appends that a kill left unfinished: nothing is lost.
    {"firstBlockLinkedOnly", "b.last=0", "a:2 b:1", true},
    {"laterBlockLinkedOnly", "a.last=A1", "a:2 b:1", true},
    {"entryLinkedOnly", "lastFile=a", "a:2 b:1", true},
    {"firstLinkTorn", "b.first=17 b.last=0", "a:2 b:0", true},
    {"laterLinkTorn", "a.last=A1 A1.next=A2+256", "a:1 b:1", true},
    {"lastChangeTorn", "a.last:1=A1", "a:2 b:1", true},
    {"fileLinkTorn", "lastFile=a a.next=b+4096", "a:2", true},
    // Damage: the walk ends there.
    {"blockOfFirstFileBroken", "A2.previous=b", "a:1", false},
    {"blockOfLastFileBroken", "B1.position=50", "a:2 b:0", false},
    {"lastChangeLeadsElsewhere", "a.last=F2+65536", "a:2", false},
    {"entryBroken", "b.first=0", "a:2", false},
    {"nameBroken", "b.name:1=255", "a:2", false},
    {"fileGone", "b.name:1=103", "a:2", false},
    {"lastFileElsewhere", "lastFile=A1+65536", "a:2 b:1", false},
    {"headerInconsistent", "lastFile=0", "", false},
    {"unknownVersion", "0:1=0", "", false},
    {"cutInTheMiddle", "cut=A2+5", "a:1", false},
    {"creationCutShort", "cut=0", "", true},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Storage, Repair, testing::ValuesIn(salvages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Repair, ATornLinkIntoZerosIsNoBlockOfAnEmptyFile)
{
    Image image;
    image.damage("b.last=0 b.first=end");
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
