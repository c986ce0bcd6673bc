// The check of an existing journal: what is accepted, and every fault in its own words.

#include "storage/JournalImage.h"
#include "support/LogCapture.h"
#include "support/Printers.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using Image = JournalImage;

struct Damage
{
    const char* name;
    const char* words;
    const char* message;
};

void PrintTo(const Damage& damage, std::ostream* out)
{
    *out << damage.name;
}

class JournalDamage : public testing::TestWithParam<Damage>
{};

TEST_P(JournalDamage, IsRefusedInItsOwnWords)
{
    Image image;
    const QString message = image.message(GetParam().message);
    image.damage(GetParam().words);
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

// clang-format off
const Damage damages[] = {
    {"empty", "cut=0", "Ошибка чтения данных отката по смещению 0 (должно быть прочитано 48, а прочитано 0)"},
    {"sixteenBytes", "cut=16", "Ошибка чтения данных отката по смещению 0 (должно быть прочитано 48, а прочитано 16)"},
    {"unknownVersion", "15:1=0", "Указана неизвестная версия файла отката ({9fc29858-1631-44ab-8089-5feb8d818500})"},
    {"firstFileOnly", "lastFile=0", "Задано смещение первого файла в цепочке ({a}), но не задано смещение последнего файла"},
    {"lastFileOnlyBeforeItsRange", "firstFile=0 lastFile=47", "Задано смещение последнего файла в цепочке (47), но не задано смещение первого файла"},
    {"firstFreeOnly", "lastFree=0", "Задано смещение первого свободного блока в цепочке ({F1}), но не задано смещение последнего свободного блока"},
    {"lastFreeOnly", "firstFree=0", "Задано смещение последнего свободного блока в цепочке ({F2}), но не задано смещение первого свободного блока"},
    {"firstFileInHeader", "firstFile=47", "Некорректно указано смещение первого файла в цепочке (47)"},
    {"lastFileInHeader", "lastFile=1", "Некорректно указано смещение последнего файла в цепочке (1)"},
    {"firstFreeInHeader", "firstFree=47", "Некорректно указано смещение первого свободного блока в цепочке (47)"},
    {"lastFreeInHeader", "lastFree=2", "Некорректно указано смещение последнего свободного блока в цепочке (2)"},
    {"firstFileBeyondAnyFile", "firstFile=18446744073709551608", "Ошибка перехода к смещению 18446744073709551608 (размер файла отката {end}, файл открыт)"},
    {"firstFileBeyondTheEnd", "firstFile=5000", "Ошибка чтения данных отката по смещению 5000 (должно быть прочитано 34, а прочитано 0)"},
    {"firstChangeOnly", "a.last=0", "Задано смещение первого изменения в цепочке ({A1}) файла размером 100, но не задано смещение последнего изменения"},
    {"lastChangeOnly", "a.first=0", "Задано смещение последнего изменения в цепочке ({A2}) файла размером 100, но не задано смещение первого изменения"},
    {"firstChangeInHeader", "a.first=47", "Некорректное смещение первого изменения в цепочке (47) файла размером 100"},
    {"lastChangeInHeader", "a.last=47", "Некорректное смещение последнего изменения в цепочке (47) файла размером 100"},
    {"nextFileInHeader", "a.next=47", "Некорректное смещение очередного (после файла размером 100) файла в цепочке (47)"},
    {"filesInACircle", "b.next=a", "Некорректное смещение очередного (после файла размером 50) файла в цепочке ({a})"},
    {"blockOneByteTooLong", "A1.position=86", "Блок данных длиной 15 со смещением 86 выходит за границы файла (100)"},
    {"blockEndWraps", "A1.position=18446744073709551615", "Блок данных длиной 15 со смещением 18446744073709551615 выходит за границы файла (100)"},
    {"nextBlockInHeader", "A1.next=47", "Некорректно указано смещение следующего блока изменений (47)"},
    {"previousBlockInHeader", "A2.previous=1", "Некорректно указано смещение предыдущего блока изменений (1)"},
    {"blocksInACircle", "A2.next=A1", "Указанное смещение предыдущего блока (0) не соответствует полученному при прямом проходе по цепочке ({A2})"},
    {"blockLongerThanTheJournal", "cut=A1+55 A1.length:4=4294967295 A1.bound=18446744073709551615", "Ошибка чтения данных отката по смещению {A1+40} (должно быть прочитано 4294967295, а прочитано 15)"},
    {"flippedBit", "A1+43:1=7", "Не совпадает контрольная сумма данных отката по смещению {A1+40}"},
    {"lastChangeElsewhere", "a.last=A1", "Указанное в заголовке файла смещение последнего блока ({A1}) не соответствует полученному при прямом проходе по цепочке ({A2})"},
    {"nameCutOff", "cut=B1+43 b.first=0 b.last=0 b.nameLength:2=999", "Ошибка чтения имени файла по смещению {b.name} (прочитано 84 вместо 999)"},
    {"zeroInName", "a.name:1=0", "Имя файла содержит запрещенные символы"},
    {"nameNotUtf8", "a.name:1=255", "Имя файла содержит запрещенные символы"},
    {"nameCutInsideACharacter", "a.name:1=208", "Имя файла содержит запрещенные символы"},
    {"fileGone", "b.name:1=103", "Ошибка открытия файла 'g'"},
    {"lastFileElsewhere", "lastFile=a", "Смещение последнего блока цепочки ({b}) не совпадает с указанным в заголовке файла ({a})"},
    {"emptyFreeBlockBeforeItsLinks", "F1.bound:4=0 F1.next=3", "Пустой свободный блок"},
    {"nextFreeInHeader", "F1.next=3", "Некорректное смещение следующего свободного блока (3)"},
    {"previousFreeInHeader", "F2.previous=47", "Некорректное смещение предыдущего свободного блока (47)"},
    {"freeRegionInHeader", "F1.region=47", "Некорректное смещение свободного блока в исходном файле (47)"},
    {"freeRegionBeyondTheEnd", "F1.region=end", "Ошибка чтения данных отката по смещению {end+3} (должно быть прочитано 1, а прочитано 0)"},
    {"freeRegionWraps", "F1.region=18446744073709551614", "Ошибка перехода к смещению 18446744073709551615 (размер файла отката {end}, файл открыт)"},
    {"freeInACircle", "F2.next=F1", "Указанное смещение предыдущего свободного блока (0) не соответствует полученному при прямом проходе по цепочке ({F2})"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Storage, JournalDamage, testing::ValuesIn(damages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Journal, WholeOnesOfBothLayoutsAreAccepted)
{
    for (const bool checksums : {true, false}) {
        Image image(checksums);
        image.damage(checksums ? "" : "A1+43:1=7"); // nothing can tell
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
        EXPECT_EQ(device.addBlock(image.at("a"), 0, 10), checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("c")) != 0, checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("a")), image.at("a"));
    }
}

/// A journal whose device cannot be positioned from some offset on.
class StuckBuffer : public QBuffer
{
public:
    qint64 stuckFrom = 0;
    bool seek(qint64 position) override { return position < stuckFrom && QBuffer::seek(position); }
};

TEST(Journal, DeviceFaultsAreTold)
{
    Image image;
    image.damage("b.nameLength:2=60000");
    image.bytes += QByteArray(60000, 'n');
    const auto faultOf = [&](quint64 stuckFrom) {
        auto* const buffer = new StuckBuffer;
        buffer->setData(image.bytes);
        buffer->open(QIODevice::ReadWrite);
        buffer->stuckFrom = static_cast<qint64>(stuckFrom);
        LogCapture log;
        MemoryDevice device;
        EXPECT_FALSE(device.open(makeIOPtr(buffer), QIODevice::ReadWrite));
        return log.takeTexts(logging::LogLevel::Error).value(0);
    };
    EXPECT_EQ(faultOf(0),
              image.message("Ошибка перехода к смещению 0 (размер файла отката {end}, файл открыт)"));
    EXPECT_EQ(faultOf(image.at("b.name")),
              image.message("Ошибка позиционирования в файле по смещению {b.name} относительно {b}"));

    LogCapture log;
    MemoryDevice device;
    EXPECT_FALSE(device.open(makeIOPtr(new QBuffer), QIODevice::WriteOnly)) << "closed";
    EXPECT_FALSE(device.open(nullIOPtr(), QIODevice::ReadWrite));
    EXPECT_FALSE(device.isOpen());
    EXPECT_EQ(log.takeTexts(logging::LogLevel::Error).size(), 2);
}

TEST(Journal, NeedsRecoveryOnlyWhenItHoldsSomething)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("journal"));
    const auto needsRecovery = [&](const QByteArray& bytes) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        return utils::RollbackFile::needsRecovery(QFileInfo(path));
    };
    EXPECT_FALSE(utils::RollbackFile::needsRecovery(QFileInfo(path))) << "not there";
    EXPECT_TRUE(utils::RollbackFile::needsRecovery(QFileInfo(directory.path()))) << "a directory";
    const QByteArray fresh = Image().bytes.left(16) + QByteArray(32, 0);
    EXPECT_FALSE(needsRecovery(QByteArray()));
    EXPECT_FALSE(needsRecovery(fresh.left(20))) << "creation cut short";
    EXPECT_FALSE(needsRecovery(fresh));
    EXPECT_TRUE(needsRecovery(QByteArray(16, 'x')));
    EXPECT_TRUE(needsRecovery(Image().bytes));
    Image unfinished;
    unfinished.damage("a.last=0");
    EXPECT_TRUE(needsRecovery(unfinished.bytes));
}

} // namespace
} // namespace veltor::test
