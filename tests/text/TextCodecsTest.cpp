#include <veltor/utils/TextCodecs.h>

#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Text.h"

#include <QTextCodec>
#include <QtCore/QTemporaryFile>

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>
#include <vector>

namespace veltor::utils {
namespace {

using test::u;

TEST(CodecForName, FailsLoudlyOnAnUnknownName)
{
    EXPECT_EQ(codecForName(u("UTF-8"))->mibEnum(), 106);
    try {
        codecForName(u("abcdefghijklmnopqrstuvwxyz1234"));
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Неизвестная кодировка abcdefghijklmnopqrstu");
    }
}

TEST(FromUnicode, FillsAFieldOfLimitedSize)
{
    const std::tuple<const char*, int, const char*, QByteArray, bool> rows[] = {
        {"0123456789", 4, "ISO-8859-1", "0123", false},
        {"Жук", 5, "UTF-8", "\xD0\x96\xD1\x83\xD0", false},
        {"Жук", 6, "UTF-8", "\xD0\x96\xD1\x83\xD0\xBA", true},
        {"Ж", 4, "UTF-16LE", "\xFF\xFE\x16\x04", true}, // the byte-order mark takes its share
        {"", -1, "UTF-8", "", false},
    };
    for (const auto& [text, maxBytes, codec, bytes, expectedFits] : rows) {
        bool fits = !expectedFits;
        EXPECT_EQ(fromUnicode(u(text), maxBytes, codecForName(u(codec)), &fits), bytes) << text;
        EXPECT_EQ(fits, expectedFits) << text << ' ' << maxBytes;
    }
}

TEST(FromUnicodeVerbose, LogsWhatDoesNotFit)
{
    test::LogCapture log;
    bool fits = true;
    EXPECT_EQ(fromUnicodeVerbose(u("a%2b"), 3, codecForName(u("UTF-8")), &fits), "a%2");
    EXPECT_FALSE(fits);
    const QStringList expected = {u("Строка a%2... в кодировке UTF-8 превышает допустимый размер 3")};
    EXPECT_EQ(log.takeTexts(logging::LogLevel::Warning), expected);
    EXPECT_EQ(fromUnicodeVerbose(u("abc"), 3, codecForName(u("UTF-8")), nullptr), "abc");
    EXPECT_TRUE(log.take().empty());
}

TEST(EnumUtf32, WalksCodePointsBothWays)
{
    const std::pair<QString, std::vector<unsigned>> rows[] = {
        {QString(), {}},
        {u("a😀я"), {'a', 0x1F600, 0x44F}},
        {QString(QChar(0xDC00)) + QChar(0xD83D), {0xDC00, 0xD83D}},
        {QChar(0xD83D) + u("😀") + QChar(0xDE00), {0xD83D, 0x1F600, 0xDE00}},
    };
    for (const auto& [text, expected] : rows) {
        std::vector<unsigned> points;
        const auto collect = [&points](unsigned point) { return points.push_back(point), true; };
        EXPECT_TRUE(enumUTF32(text, collect));
        EXPECT_EQ(points, expected);
        points.clear();
        EXPECT_TRUE(enumUTF32reverse(text, collect));
        EXPECT_EQ(points, std::vector<unsigned>(expected.rbegin(), expected.rend()));
    }
    int calls = 0;
    const auto stop = [&calls](unsigned) { return ++calls % 2 != 0; };
    EXPECT_FALSE(enumUTF32(u("abc"), stop));
    EXPECT_FALSE(enumUTF32reverse(u("abc"), stop));
    EXPECT_EQ(calls, 4);
}

TEST(AvailableCodecs, ListsEachOnce)
{
    QStringList names = availableCodecs();
    EXPECT_TRUE(names.contains(u("windows-1251")));
    EXPECT_EQ(names.removeDuplicates(), 0);
}

TEST(CodecForTextFile, ReadsTheByteOrderMark)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    EXPECT_EQ(codecForTextFile(file.fileName()), nullptr);
    const std::pair<QByteArray, const char*> rows[] = {
        {"\xEF\xBB\xBF text", "UTF-8"},
        {QByteArray("\xFF\xFE\n\0", 4), "UTF-16LE"},
        {QByteArray("\xFF\xFE\0\0\n\0\0\0", 8), "UTF-32LE"},
    };
    for (const auto& [bytes, codec] : rows) {
        file.resize(0);
        file.seek(0);
        file.write(bytes);
        file.flush();
        EXPECT_EQ(codecForTextFile(file.fileName())->name(), codec);
    }
    EXPECT_EQ(codecForTextFile(u("missing")), nullptr);
}

} // namespace
} // namespace veltor::utils
