#include <veltor/utils/LineStream.h>

#include "support/Printers.h"

#include <QtCore/QTextStream>

#include <gtest/gtest.h>

#include <random>

namespace veltor::utils {
namespace {

/// What readLine() is to give: runs of breaks are one, and only a break at the very start makes an empty
/// line.
QStringList modelLines(const QString& text)
{
    QStringList lines;
    bool inBreak = false;
    for (const QChar c : text) {
        const bool isBreak = c == QLatin1Char('\n') || c == QLatin1Char('\r');
        if (lines.isEmpty() || (inBreak && !isBreak)) {
            lines.append(QString());
        }
        inBreak = isBreak;
        if (!isBreak) {
            lines.last() += c;
        }
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

} // namespace
} // namespace veltor::utils
