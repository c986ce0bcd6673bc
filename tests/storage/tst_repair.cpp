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
    void (*apply)(Image&);
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
        GetParam().apply(image);
        MemoryDevice device;
        device.missing << QStringLiteral("gone");
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

const Salvage salvages[] = {
    // Appends that a kill left unfinished: nothing is lost.
    {"blockNotLinked",
     [](Image& i) {
         i.bytes += QByteArray(40, '?');
         i.put<quint64>(i.lastFileAt, 0);
         i.put<quint64>(i.firstFileAt, 1);
         i = Image(i.headSize == 40);
         i.put<quint64>(i.lastFileAt, i.fileA);
     },
     "a:2 b:1", true},
    {"firstBlockLinkedOnly", [](Image& i) { i.put<quint64>(i.fileB + i.lastChange, 0); }, "a:2 b:1", true},
    {"laterBlockLinkedOnly", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, i.blockA1); }, "a:2 b:1",
     true},
    {"entryLinkedOnly", [](Image& i) { i.put<quint64>(i.lastFileAt, i.fileA); }, "a:2 b:1", true},
    {"firstLinkTorn",
     [](Image& i) {
         i.put<quint64>(i.fileB + i.firstChange, 17);
         i.put<quint64>(i.fileB + i.lastChange, 0);
     },
     "a:2 b:0", true},
    {"laterLinkTorn",
     [](Image& i) {
         i.put<quint64>(i.fileA + i.lastChange, i.blockA1);
         i.put<quint64>(i.blockA1 + i.next, i.blockA2 + 256);
     },
     "a:1 b:1", true},
    {"fileLinkTorn",
     [](Image& i) {
         i.put<quint64>(i.lastFileAt, i.fileA);
         i.put<quint64>(i.fileA + i.nextFile, i.fileB + 4096);
     },
     "a:2", true},
    // Damage: the walk ends there.
    {"blockOfFirstFileBroken", [](Image& i) { i.put<quint64>(i.blockA2 + i.previous, i.fileB); }, "a:1",
     false},
    {"blockOfLastFileBroken", [](Image& i) { i.put<quint64>(i.blockB1 + i.position, 50); }, "a:2 b:0", false},
    {"lastChangeLeadsElsewhere", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, i.blockB1); }, "a:2",
     false},
    {"entryBroken", [](Image& i) { i.put<quint64>(i.fileB + i.firstChange, 0); }, "a:2", false},
    {"nameBroken", [](Image& i) { i.bytes[static_cast<int>(i.fileB + 34)] = '\xFF'; }, "a:2", false},
    {"fileGone",
     [](Image& i) {
         i = Image(i.headSize == 40);
         i.addFile("gone", 5);
     },
     "a:2 b:1", false},
    {"lastFileElsewhere", [](Image& i) { i.put<quint64>(i.lastFileAt, i.blockA1); }, "a:2 b:1", false},
    {"headerInconsistent", [](Image& i) { i.put<quint64>(i.lastFileAt, 0); }, "", false},
    {"unknownVersion", [](Image& i) { i.bytes[0] = 0; }, "", false},
    {"cutInTheMiddle", [](Image& i) { i.bytes.truncate(static_cast<int>(i.blockA2 + 5)); }, "a:1", false},
    {"creationCutShort", [](Image& i) { i.bytes = Image().bytes.left(9); }, "", true},
};

INSTANTIATE_TEST_SUITE_P(Storage, Repair, testing::ValuesIn(salvages),
                         [](const auto& row) { return std::string(row.param.name); });

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
