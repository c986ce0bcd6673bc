#include <veltor/json/JsonFormatter.h>

#include "support/Printers.h"
#include "support/Text.h"

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace veltor::json {
namespace {

using test::u;

IOPtr lend(QIODevice& device)
{
    return {&device, [](QIODevice*) {}};
}

QByteArray textOf(const QJsonValue& value, const Format& format, EndOfLine eol = EndOfLine::Lf)
{
    QBuffer buffer;
    JsonFormatter formatter(lend(buffer), format);
    formatter.setEndOfLine(eol).write(value);
    return buffer.data();
}

/// The text with a visible character in place of the zero byte.
QByteArray visible(QByteArray text)
{
    return text.replace('\0', '~');
}

TEST(JsonFormatter, LaysOutByItsFormat)
{
    const QJsonObject value = {{u("a"), 1}, {u("b"), QJsonArray{true, u("x")}}};
    const std::pair<const Format&, const char*> rows[] = {
        {JsonFormatter::formatCompact, R"({"a":1,"b":[true~,"x"]})"},
        {JsonFormatter::formatSqueeze, R"({"a":1,"b":[true~,"x"]})"},
        {JsonFormatter::formatDelimited, R"({"a": 1, "b": [true~, "x"]})"},
        {JsonFormatter::formatIndented,
         "{\n    \"a\": 1,\n    \"b\": [\n        true~,\n        \"x\"\n    ]\n}"},
        {JsonFormatter::formatUnindented, "{\n\"a\": 1,\n\"b\": [\ntrue~,\n\"x\"\n]\n}"},
        {JsonFormatter::formatBracketsIndented,
         "{\n    \"a\": 1,\n    \"b\": \n    [\n        true~,\n        \"x\"\n    ]\n}"},
        {JsonFormatter::formatCommaFirst,
         "{ \"a\": 1\n    , \"b\": \n        [ true~\n        , \"x\"\n    ]\n}"},
    };
    for (const auto& [format, expected] : rows) {
        EXPECT_EQ(visible(textOf(value, format)), expected);
    }
    // No line break is doubled where one bracket follows another.
    const QJsonArray nested = {QJsonArray{1}, QJsonObject{{u("k"), 2}}};
    EXPECT_EQ(textOf(nested, JsonFormatter::formatBracketsIndented),
              "[\n    [\n        1\n    ],\n    {\n        \"k\": 2\n    }\n]");
    EXPECT_EQ(textOf(nested, JsonFormatter::formatCommaFirst),
              "[ \n        [ 1\n    ]\n    , \n        { \"k\": 2\n    }\n]");
}

TEST(JsonFormatter, WritesScalarsBare)
{
    const std::pair<QJsonValue, const char*> rows[] = {
        {true, "true~"},
        {false, "false~"},
        {0.5, ".5"},
        {1000000000000.125, "1000000000000.13"},
        {u("Жя😀/\x7f\u0080"), "\"Жя😀/\x7f\u0080\""},
        {u("a\"b\\c\t\n\b\f\r\x01\x1f\x0b"), "\"a\\\"b\\\\c\\t\\n\\b\\f\\r\\u0001\\u001f\\u000b\""},
        {u("Ж\"\\\t"), "\"Ж\\\"\\\\\\t\""},
        {QString(QChar(0xD800)), "\"?\""},
        {QJsonValue(QJsonValue::Undefined), ""},
    };
    Format framed = JsonFormatter::formatSqueeze;
    framed.fields.fill("*\n");
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(visible(textOf(value, framed)), expected);
    }
}

TEST(JsonFormatter, EmptyContainersAreTheirBracketsAlone)
{
    const QJsonArray value = {QJsonArray(), QJsonObject(), 1};
    EXPECT_EQ(textOf(QJsonArray(), JsonFormatter::formatIndented), "[]");
    EXPECT_EQ(textOf(value, JsonFormatter::formatIndented), "[\n    [],\n    {},\n    1\n]");
    EXPECT_EQ(textOf(value, JsonFormatter::formatCommaFirst),
              "[ \n        []\n    , \n        {}\n    , 1\n]");
}

TEST(JsonFormatter, ReplacesTheLineFeedThatEndsADelimiter)
{
    Format format = JsonFormatter::formatIndented;
    format.fields[CommaAfter] = "\n \n";
    const QJsonArray value = {u("\n"), 2};
    EXPECT_EQ(textOf(value, format, EndOfLine::CrLf), "[\r\n    \"\\n\",\n \r\n    2\r\n]");
    EXPECT_EQ(textOf(value, format, EndOfLine::Cr), "[\r    \"\\n\",\n \r    2\r]");
}

TEST(JsonFormatter, KeepsTheLineStartOverAKey)
{
    Format format = JsonFormatter::formatIndented;
    format.fields[ColonBefore] = "*"; // left out: the line has only just begun
    EXPECT_EQ(textOf(QJsonObject{{u("a"), u("b")}}, format), "{\n    \"a\": \"b\"\n}");
    // A depth that the mask brings below zero gives no indentation, and no line start.
    format.numberFormat.setUnused(1U << ArrayCloseBefore);
    format.fields[ArrayCloseAfter] = "!";
    EXPECT_EQ(textOf(QJsonArray{QJsonValue(QJsonArray{1})}, format), "[\n[\n1\n]!\n]!");
    format.numberFormat.setUnused(1U << ArrayOpenAfter | 1U << ArrayCloseBefore);
    format.indent = "\t";
    EXPECT_EQ(textOf(QJsonArray{QJsonValue(QJsonArray{1})}, format), "[\n\t[\n\t\t1\n\t]!\n]!");
}

QJsonValue randomTree(std::mt19937& random, int depth)
{
    const auto kind = random() % (depth > 3 ? 3 : 5);
    if (kind == 0) {
        return QJsonValue();
    }
    if (kind == 1) {
        return static_cast<double>(static_cast<int>(random())) / static_cast<double>(1U << (random() % 5));
    }
    if (kind == 2) {
        return QString(static_cast<int>(random() % 3), QChar(static_cast<ushort>(random() % 0x3000)));
    }
    QJsonArray array;
    QJsonObject object;
    for (auto i = random() % 4 + 1; i > 0; --i) {
        array.append(randomTree(random, depth + 1));
        object.insert(QString::number(random() % 100), randomTree(random, depth + 1));
    }
    return kind == 3 ? QJsonValue(array) : QJsonValue(object);
}

TEST(JsonFormatter, WritesWhatParsesBack)
{
    std::mt19937 random(4);
    const QRegularExpression blanksOutsideStrings(u(R"re(("(?:[^"\\]|\\.)*")|\s+)re"));
    for (int round = 0; round < 300; ++round) {
        const QJsonArray value = {randomTree(random, 0)};
        const QByteArray compact = textOf(value, JsonFormatter::formatCompact);
        ASSERT_EQ(QJsonDocument::fromJson(compact).array(), value) << compact.toStdString();
        for (Format format :
             {JsonFormatter::formatIndented, JsonFormatter::formatUnindented, JsonFormatter::formatDelimited,
              JsonFormatter::formatBracketsIndented, JsonFormatter::formatCommaFirst}) {
            format.numberFormat.setPresentation(utils::NumberFormat::Shortest);
            const QString text = QString::fromUtf8(textOf(value, format));
            ASSERT_EQ(QString(text).replace(blanksOutsideStrings, u("\\1")).toUtf8(), compact);
        }
    }
}

TEST(JsonFormatter, OwnsAndOpensItsDevice)
{
    JsonFormatter(nullIOPtr(), JsonFormatter::formatCompact).write(1);
    QPointer<QBuffer> owned = new QBuffer;
    {
        const JsonFormatter formatter(makeIOPtr(owned), JsonFormatter::formatCompact);
        formatter.write(1);
        formatter.write(u("a"));
        EXPECT_EQ(owned->data(), "1\"a\"");
        owned->close();
        formatter.write(2);
        EXPECT_EQ(owned->data(), "1\"a\"");
    }
    EXPECT_TRUE(owned.isNull());
}

/// Takes so many bytes, then none.
class FullDevice : public QBuffer
{
public:
    qint64 room = 0;

protected:
    qint64 writeData(const char* data, qint64 length) override
    {
        const qint64 taken = qMin(room, length);
        room -= taken;
        return taken > 0 ? QBuffer::writeData(data, taken) : -1;
    }
};

TEST(JsonFormatter, ADeviceThatFailsEndsWithWhatItTook)
{
    const QByteArray whole(R"({"a":["b","c"],"d":1})");
    const QJsonValue value = QJsonDocument::fromJson(whole).object();
    for (int room = 0; room <= whole.size(); ++room) {
        FullDevice device;
        device.room = room;
        JsonFormatter(lend(device), JsonFormatter::formatCompact).write(value);
        EXPECT_EQ(device.data(), whole.left(room));
    }
}

TEST(JsonFormatter, NestsAsDeepAsMemoryAllows)
{
    // Qt itself destroys such a value by recursion: in a thread with a stack for that.
    const std::unique_ptr<QThread> thread(QThread::create([] {
        constexpr int depth = 100000;
        QJsonValue value = 1;
        for (int i = 0; i < depth; ++i) {
            value = i % 2 == 0 ? QJsonValue(QJsonArray{value}) : QJsonValue(QJsonObject{{u("a"), value}});
        }
        const QByteArray text = textOf(value, JsonFormatter::formatCompact);
        EXPECT_TRUE(text.startsWith(R"({"a":[{"a":[)"));
        EXPECT_EQ(text.size(), depth / 2 * 8 + 1);
    }));
    thread->setStackSize(128 << 20);
    thread->start();
    thread->wait();
}

} // namespace
} // namespace veltor::json
