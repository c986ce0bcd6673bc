#include <veltor/utils/LineStream.h>
#include <veltor/utils/NoCaseJsonObject.h>
#include <veltor/utils/TextStreamFromFile.h>

#include "support/Files.h"
#include "support/Printers.h"
#include "support/Text.h"

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>
#include <tuple>

namespace veltor::utils {
namespace {

using test::u;

/// Runs of breaks are one; only a break at the very start makes an empty line.
QStringList modelLines(const QString& text)
{
    QStringList lines = text.split(QRegularExpression(u("[\r\n]+")));
    if (lines.last().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

TEST(LineStream, LosesNothingWhateverTheBufferHolds)
{
    std::mt19937 random(2);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (auto i = random() % 20; i > 0; --i) {
            text += QStringLiteral("ab\n\rж").at(static_cast<int>(random() % 5));
        }
        for (const int capacity : {1, 2, 3, 7, 0}) {
            QTextStream source(&text);
            LineStream stream(source, capacity);
            QStringList lines;
            while (!stream.atEnd()) {
                lines.append(stream.readLine());
            }
            ASSERT_EQ(lines, modelLines(text)) << text.toStdString() << ' ' << capacity;
            ASSERT_EQ(stream.readLine(), QString());
        }
    }
}

TEST(LineStream, MixesCharactersSkipsAndLines)
{
    QString text = QStringLiteral("x \t  yz\r\n\n  last");
    QTextStream source(&text);
    LineStream stream(source, 2);
    EXPECT_EQ(stream.getChar(), QLatin1Char('x'));
    stream.skipWhiteSpace();
    stream.fillBuffer();
    EXPECT_EQ(stream.getChar(), QLatin1Char('y'));
    EXPECT_EQ(stream.readLine(), QStringLiteral("z"));
    EXPECT_EQ(stream.readLine(), QStringLiteral("  last"));
    EXPECT_TRUE(stream.atEnd());
    stream.skipWhiteSpace();
    EXPECT_EQ(stream.getChar(), QChar());
}

TEST(LineStream, ReadsAheadNoFurtherThanItsCapacity)
{
    for (const int capacity : {0, -5, 16}) {
        QString text(5000, QLatin1Char('a'));
        QTextStream source(&text);
        LineStream stream(source, capacity);
        EXPECT_FALSE(stream.atEnd());
        (void)stream.getChar();
        stream.fillBuffer();
        EXPECT_EQ(source.pos(), capacity > 0 ? capacity + 1 : 2049);
    }
}

TEST(NoCaseJsonObject, FindsMembersAndAliasesInAnyCase)
{
    NoCaseJsonObject object({{u("Name"), 1}, {u("Ключ"), 2}}, {{u("NAME"), u("title")},
                                                               {u("title"), u("caption")},
                                                               {u("Ключ"), u("name")},
                                                               {u("missing"), u("nothing")}});
    for (const char* name : {"Name", "NAME", "nAmE", "TITLE", "Caption"}) {
        EXPECT_TRUE(object.contains(u(name))) << name;
        EXPECT_EQ(object.value(u(name)), QJsonValue(1)) << name;
    }
    EXPECT_EQ(object.value(u("кЛЮЧ")), QJsonValue(2));
    EXPECT_FALSE(object.contains(u("nothing")));
    EXPECT_TRUE(object.value(u("nothing")).isNull());
    EXPECT_EQ(object.size(), 2);
    EXPECT_EQ(object.value(object.begin()), QJsonValue(1)); // by its alias "caption"
    object.set({{u("b"), 1}});
    EXPECT_FALSE(object.contains(u("title")));
    EXPECT_EQ(object.size(), 1);
}

TEST(NoCaseJsonObject, OfSpellingsTheLastMemberWins)
{
    const NoCaseJsonObject object({{u("NAME"), 1}, {u("Name"), 2}, {u("name"), 3}});
    EXPECT_EQ(object.value(u("NAME")), QJsonValue(3));
    EXPECT_EQ(object.size(), 3);
    EXPECT_EQ(object.begin()->first, u("NAME")); // the first spelling leads to the last member
    EXPECT_EQ(object.begin()->second, u("name"));
}

TEST(JsonToLocalizedString, PicksTheLanguage)
{
    const QJsonObject both = {{u("en"), u("Yes")}, {u("ru"), u("Da")}};
    const std::tuple<const char*, QJsonValue, const char*> rows[] = {
        {"ru_RU", both, "Da"},
        {"de_DE", both, "Yes"},
        {"en_US", QJsonObject{{u("aa"), u("no")}, {u("en_us"), u("found")}}, "found"},
        {"en_US", QJsonObject{{u("aa"), u("first")}, {u("en_US"), u("never")}}, "first"},
        {"zh_CN", QJsonObject{{u("aa"), u("no")}, {u("zh_hans"), u("found")}}, "found"},
        {"ru_RU", QJsonObject(), ""},
        {"ru_RU", 5, ""},
    };
    for (const auto& [locale, value, expected] : rows) {
        EXPECT_EQ(jsonToLocalizedString(value, QLocale(QLatin1String(locale))), u(expected)) << expected;
    }
}

TEST(TextStreamFromFile, WritesAndReadsItsFile)
{
    const test::Folder folder;
    const QString path = folder.path("text");
    {
        TextStreamFromFile stream(path, QIODevice::WriteOnly);
        EXPECT_EQ(stream.fileName(), path);
        stream << "line" << 5;
    }
    TextStreamFromFile stream(QFileInfo(path), QIODevice::ReadOnly);
    EXPECT_EQ(stream.readAll(), QStringLiteral("line5"));
    QString text;
    stream.setString(&text);
    EXPECT_EQ(stream.fileName(), QString());
}

TEST(TextStreamFromFile, SaysWhatFailed)
{
    const test::Folder folder;
    const QString path = folder.path("missing/text");
    const std::pair<QIODevice::OpenMode, const char*> rows[] = {
        {QIODevice::ReadOnly, "Не удалось открыть файл '"},
        {QIODevice::ReadWrite, "Не удалось создать файл '"},
        {QIODevice::Append, "Не удалось открыть файл '"}, // although Qt writes then
    };
    for (const auto& [mode, prefix] : rows) {
        try {
            const TextStreamFromFile stream(path, mode);
            ADD_FAILURE();
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith(prefix + path.toStdString() + "': "));
        }
    }
}

} // namespace
} // namespace veltor::utils
