#pragma once

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace veltor::test {

/// A temporary folder with a name that is not ASCII, removed with all that is in it.
class Folder
{
public:
    explicit Folder(const QString& parent = QDir::tempPath())
        : m_directory(parent + QStringLiteral("/папка-XXXXXX"))
    {
        EXPECT_TRUE(m_directory.isValid()) << m_directory.errorString().toStdString();
    }

    [[nodiscard]] QString path(const char* name = "") const
    {
        return m_directory.filePath(QString::fromUtf8(name));
    }

    /// Makes a file anew, and the folders on its way; its path.
    QString write(const char* name, const QByteArray& bytes) const // NOLINT(modernize-use-nodiscard)
    {
        QFile file(path(name));
        EXPECT_TRUE(QDir().mkpath(QFileInfo(file).path()));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << name;
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }

    [[nodiscard]] QByteArray read(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }

private:
    QTemporaryDir m_directory;
};

} // namespace veltor::test
