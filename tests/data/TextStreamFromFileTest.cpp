#include <veltor/utils/TextStreamFromFile.h>

#include "support/Printers.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

TEST(TextStreamFromFile, WritesAndReadsItsFile)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("text"));
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
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("missing/text"));
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
