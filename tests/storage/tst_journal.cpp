// The check of an existing journal: what is accepted, and every fault in its own words.

#include "storage/JournalImage.h"
#include "support/LogCapture.h"
#include "support/Printers.h"

#include "utils/storage/JournalFormat.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

using Image = JournalImage;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

struct Damage
{
    const char* name;
    void (*apply)(Image&);
    QString (*message)(const Image&);
    bool checksums = true;
};

void PrintTo(const Damage& damage, std::ostream* out)
{
    *out << damage.name;
}

class JournalDamage : public testing::TestWithParam<Damage>
{};

TEST_P(JournalDamage, IsRefusedInItsOwnWords)
{
    Image image(GetParam().checksums);
    GetParam().apply(image);
    LogCapture log;
    MemoryDevice device;
    device.missing << QStringLiteral("gone");

    EXPECT_FALSE(device.openImage(image.bytes));

    const auto records = log.take();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].text, GetParam().message(image));
    EXPECT_EQ(records[0].level, logging::LogLevel::Error);
    EXPECT_EQ(records[0].file, QLatin1String("SecuredFile.cpp"));
    EXPECT_EQ(records[0].line, 114);
    EXPECT_TRUE(device.isOpen()) << "repair() needs the journal";
    EXPECT_TRUE(device.protectedFiles().empty());
    EXPECT_EQ(device.journal(), image.bytes);
    EXPECT_FALSE(device.rollback()) << "an unchecked journal must not be disposed of";
}

const Damage damages[] = {
    {"empty", [](Image& i) { i.bytes.clear(); },
     [](const Image&) {
         return text("Ошибка чтения данных отката по смещению 0 (должно быть прочитано 48, а прочитано 0)");
     }},
    {"sixteenBytes", [](Image& i) { i.bytes.resize(16); },
     [](const Image&) {
         return text("Ошибка чтения данных отката по смещению 0 (должно быть прочитано 48, а прочитано 16)");
     }},
    {"unknownVersion", [](Image& i) { i.bytes[15] = 0; },
     [](const Image&) {
         return text("Указана неизвестная версия файла отката ({9fc29858-1631-44ab-8089-5feb8d818500})");
     }},
    {"firstFileOnly", [](Image& i) { i.put<quint64>(i.lastFileAt, 0); },
     [](const Image&) {
         return text("Задано смещение первого файла в цепочке (48), но не задано смещение последнего файла");
     }},
    {"lastFileOnlyBeforeItsRange",
     [](Image& i) {
         i.put<quint64>(i.firstFileAt, 0);
         i.put<quint64>(i.lastFileAt, 47);
     },
     [](const Image&) {
         return text("Задано смещение последнего файла в цепочке (47), но не задано смещение первого файла");
     }},
    {"firstFreeOnly", [](Image& i) { i.put<quint64>(i.lastFreeAt, 0); },
     [](const Image& i) {
         return text("Задано смещение первого свободного блока в цепочке (%0), но не задано смещение "
                     "последнего свободного блока")
             .arg(i.free1);
     }},
    {"lastFreeOnly", [](Image& i) { i.put<quint64>(i.firstFreeAt, 0); },
     [](const Image& i) {
         return text("Задано смещение последнего свободного блока в цепочке (%0), но не задано смещение "
                     "первого свободного блока")
             .arg(i.free2);
     }},
    {"firstFileInHeader", [](Image& i) { i.put<quint64>(i.firstFileAt, 47); },
     [](const Image&) { return text("Некорректно указано смещение первого файла в цепочке (47)"); }},
    {"lastFileInHeader", [](Image& i) { i.put<quint64>(i.lastFileAt, 1); },
     [](const Image&) { return text("Некорректно указано смещение последнего файла в цепочке (1)"); }},
    {"firstFreeInHeader", [](Image& i) { i.put<quint64>(i.firstFreeAt, 47); },
     [](const Image&) {
         return text("Некорректно указано смещение первого свободного блока в цепочке (47)");
     }},
    {"lastFreeInHeader", [](Image& i) { i.put<quint64>(i.lastFreeAt, 2); },
     [](const Image&) {
         return text("Некорректно указано смещение последнего свободного блока в цепочке (2)");
     }},
    {"firstFileBeyondAnyFile", [](Image& i) { i.put<quint64>(i.firstFileAt, ~0ULL - 7); },
     [](const Image& i) {
         return text("Ошибка перехода к смещению 18446744073709551608 (размер файла отката %0, файл открыт)")
             .arg(i.end());
     }},
    {"firstFileBeyondTheEnd", [](Image& i) { i.put<quint64>(i.firstFileAt, 5000); },
     [](const Image&) {
         return text(
             "Ошибка чтения данных отката по смещению 5000 (должно быть прочитано 34, а прочитано 0)");
     }},
    {"firstChangeOnly", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, 0); },
     [](const Image& i) {
         return text("Задано смещение первого изменения в цепочке (%0) файла размером 100, но не задано "
                     "смещение последнего изменения")
             .arg(i.blockA1);
     }},
    {"lastChangeOnly", [](Image& i) { i.put<quint64>(i.fileA + i.firstChange, 0); },
     [](const Image& i) {
         return text("Задано смещение последнего изменения в цепочке (%0) файла размером 100, но не задано "
                     "смещение первого изменения")
             .arg(i.blockA2);
     }},
    {"firstChangeInHeader", [](Image& i) { i.put<quint64>(i.fileA + i.firstChange, 47); },
     [](const Image&) {
         return text("Некорректное смещение первого изменения в цепочке (47) файла размером 100");
     }},
    {"lastChangeInHeader", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, 47); },
     [](const Image&) {
         return text("Некорректное смещение последнего изменения в цепочке (47) файла размером 100");
     }},
    {"nextFileInHeader", [](Image& i) { i.put<quint64>(i.fileA + i.nextFile, 47); },
     [](const Image&) {
         return text("Некорректное смещение очередного (после файла размером 100) файла в цепочке (47)");
     }},
    {"filesInACircle", [](Image& i) { i.put<quint64>(i.fileB + i.nextFile, i.fileA); },
     [](const Image& i) {
         return text("Некорректное смещение очередного (после файла размером 50) файла в цепочке (%0)")
             .arg(i.fileA);
     }},
    {"blockOneByteTooLong", [](Image& i) { i.put<quint64>(i.blockA1 + i.position, 86); },
     [](const Image&) {
         return text("Блок данных длиной 15 со смещением 86 выходит за границы файла (100)");
     }},
    {"blockEndWraps", [](Image& i) { i.put<quint64>(i.blockA1 + i.position, ~0ULL); },
     [](const Image&) {
         return text(
             "Блок данных длиной 15 со смещением 18446744073709551615 выходит за границы файла (100)");
     }},
    {"nextBlockInHeader", [](Image& i) { i.put<quint64>(i.blockA1 + i.next, 47); },
     [](const Image&) { return text("Некорректно указано смещение следующего блока изменений (47)"); }},
    {"previousBlockInHeader", [](Image& i) { i.put<quint64>(i.blockA2 + i.previous, 1); },
     [](const Image&) { return text("Некорректно указано смещение предыдущего блока изменений (1)"); }},
    {"blocksInACircle", [](Image& i) { i.put<quint64>(i.blockA2 + i.next, i.blockA1); },
     [](const Image& i) {
         return text("Указанное смещение предыдущего блока (0) не соответствует полученному при прямом "
                     "проходе по цепочке (%0)")
             .arg(i.blockA2);
     }},
    {"blockLongerThanTheJournal",
     [](Image& i) {
         i.put<quint64>(i.blockA1 + i.sizeBound, ~0ULL);
         i.put<quint32>(i.blockA1 + 36, 0xFFFFFFFF);
     },
     [](const Image& i) {
         return text("Ошибка чтения данных отката по смещению %0 (должно быть прочитано 4294967295, а "
                     "прочитано %1)")
             .arg(i.blockA1 + 40)
             .arg(i.end() - i.blockA1 - 40);
     }},
    {"flippedBit", [](Image& i) { i.bytes[static_cast<int>(i.blockA1 + 43)] = 'z'; },
     [](const Image& i) {
         return text("Не совпадает контрольная сумма данных отката по смещению %0").arg(i.blockA1 + 40);
     }},
    {"lastChangeElsewhere", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, i.blockA1); },
     [](const Image& i) {
         return text("Указанное в заголовке файла смещение последнего блока (%0) не соответствует "
                     "полученному при прямом проходе по цепочке (%1)")
             .arg(i.blockA1)
             .arg(i.blockA2);
     }},
    {"lastChangeElsewherePlain", [](Image& i) { i.put<quint64>(i.fileA + i.lastChange, i.blockA1); },
     [](const Image& i) {
         return text("Указанное в заголовке файла смещение последнего блока (%0) не соответствует "
                     "полученному при прямом проходе по цепочке (%1)")
             .arg(i.blockA1)
             .arg(i.blockA2);
     },
     false},
    {"nameCutOff",
     [](Image& i) {
         i = Image();
         i.put<quint64>(i.firstFreeAt, 0);
         i.put<quint64>(i.lastFreeAt, 0);
         i.put<quint64>(i.fileA + i.nextFile, i.end());
         i.addFile("b", 50);
         i.put<quint64>(i.lastFileAt, i.end() - 35);
         i.put<quint16>(i.end() - 3, 9);
     },
     [](const Image& i) {
         return text("Ошибка чтения имени файла по смещению %0 (прочитано 1 вместо 9)").arg(i.end() - 1);
     }},
    {"zeroInName", [](Image& i) { i.bytes[static_cast<int>(i.fileA + 34)] = 0; },
     [](const Image&) { return text("Имя файла содержит запрещенные символы"); }},
    {"nameNotUtf8", [](Image& i) { i.bytes[static_cast<int>(i.fileA + 34)] = '\xFF'; },
     [](const Image&) { return text("Имя файла содержит запрещенные символы"); }},
    {"nameCutInsideACharacter", [](Image& i) { i.bytes[static_cast<int>(i.fileA + 34)] = '\xD0'; },
     [](const Image&) { return text("Имя файла содержит запрещенные символы"); }},
    {"fileGone",
     [](Image& i) {
         i = Image();
         const quint64 entry = i.addFile("gone", 5);
         Q_UNUSED(entry)
     },
     [](const Image&) { return text("Ошибка открытия файла 'gone'"); }},
    {"lastFileElsewhere", [](Image& i) { i.put<quint64>(i.lastFileAt, i.fileA); },
     [](const Image& i) {
         return text("Смещение последнего блока цепочки (%0) не совпадает с указанным в заголовке файла (%1)")
             .arg(i.fileB)
             .arg(i.fileA);
     }},
    {"emptyFreeBlockBeforeItsLinks",
     [](Image& i) {
         i.put<quint32>(i.free1 + 24, 0);
         i.put<quint64>(i.free1 + i.next, 3);
     },
     [](const Image&) { return text("Пустой свободный блок"); }},
    {"nextFreeInHeader", [](Image& i) { i.put<quint64>(i.free1 + i.next, 3); },
     [](const Image&) { return text("Некорректное смещение следующего свободного блока (3)"); }},
    {"previousFreeInHeader", [](Image& i) { i.put<quint64>(i.free2 + i.previous, 47); },
     [](const Image&) { return text("Некорректное смещение предыдущего свободного блока (47)"); }},
    {"freeRegionInHeader", [](Image& i) { i.put<quint64>(i.free1 + 16, 47); },
     [](const Image&) { return text("Некорректное смещение свободного блока в исходном файле (47)"); }},
    {"freeRegionBeyondTheEnd", [](Image& i) { i.put<quint64>(i.free1 + 16, i.end() - 3); },
     [](const Image& i) {
         return text("Ошибка чтения данных отката по смещению %0 (должно быть прочитано 1, а прочитано 0)")
             .arg(i.end());
     }},
    {"freeRegionWraps", [](Image& i) { i.put<quint64>(i.free1 + 16, ~0ULL - 1); },
     [](const Image& i) {
         return text("Ошибка перехода к смещению 18446744073709551615 (размер файла отката %0, файл открыт)")
             .arg(i.end());
     }},
    {"freeInACircle", [](Image& i) { i.put<quint64>(i.free2 + i.next, i.free1); },
     [](const Image& i) {
         return text("Указанное смещение предыдущего свободного блока (0) не соответствует полученному при "
                     "прямом проходе по цепочке (%0)")
             .arg(i.free2);
     }},
};

INSTANTIATE_TEST_SUITE_P(Storage, JournalDamage, testing::ValuesIn(damages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Journal, WholeOnesOfBothLayoutsAreAccepted)
{
    for (const bool checksums : {true, false}) {
        Image image(checksums);
        if (!checksums) {
            image.bytes[static_cast<int>(image.blockA1 + 43)] = 'z'; // nothing can tell
        }
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
        EXPECT_EQ(files[0].name, QLatin1String("a"));
        EXPECT_EQ(files[0].size, 100u);
        EXPECT_EQ(files[0].blocks, 2u);
        EXPECT_EQ(files[0].savedBytes, 15u);
        EXPECT_EQ(device.freeBlockCount(), 2u);
        // Appending would mix the layouts.
        EXPECT_EQ(device.addBlock(image.fileA, 0, 10), checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("c")) != 0, checksums);
        EXPECT_EQ(device.addFileImpl(QStringLiteral("a")), image.fileA);
    }
    MemoryDevice empty;
    EXPECT_TRUE(empty.openImage(QByteArray(Image().bytes).left(16) + QByteArray(32, 0)));
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
    image.put<quint64>(image.fileB + image.nextFile, image.end());
    const quint64 entry = image.addFile(QByteArray(60000, 'n'), 1);
    image.put<quint64>(image.fileB + image.nextFile, entry);

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
              text("Ошибка перехода к смещению 0 (размер файла отката %0, файл открыт)").arg(image.end()));
    EXPECT_EQ(
        faultOf(entry + 34),
        text("Ошибка позиционирования в файле по смещению %0 относительно %1").arg(entry + 34).arg(entry));

    LogCapture log;
    MemoryDevice device;
    EXPECT_FALSE(device.open(makeIOPtr(new QBuffer), QIODevice::WriteOnly)) << "closed";
    EXPECT_FALSE(device.open(nullIOPtr(), QIODevice::ReadWrite));
    EXPECT_FALSE(device.isOpen());
    EXPECT_EQ(log.takeTexts(logging::LogLevel::Error).size(), 2);
}

TEST(Journal, UnfinishedLinksAreToldFromWrongOnes)
{
    using utils::journal::isUnfinishedLink;
    constexpr quint64 before = 0x1122334455667788;
    constexpr quint64 after = 0x99AABBCCDDEEFF00;
    EXPECT_TRUE(isUnfinishedLink(before, after, before));
    EXPECT_TRUE(isUnfinishedLink(before, after, after));
    EXPECT_TRUE(isUnfinishedLink(before, after, 0x112233445566FF00));
    EXPECT_FALSE(isUnfinishedLink(before, after, 0x99AABBCC55667788)) << "the low bytes arrive first";
    EXPECT_FALSE(isUnfinishedLink(before, after, 0));
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
    unfinished.put<quint64>(unfinished.fileA + Image::lastChange, 0);
    EXPECT_TRUE(needsRecovery(unfinished.bytes));
}

} // namespace
} // namespace veltor::test
