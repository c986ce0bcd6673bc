// A text stream that owns its file and finds its codec.

#include <veltor/utils/TextStreamFromFile.h>

#include <veltor/utils/Paths.h>

#include <QtCore/QFileInfo>
#include <QtCore/QObject>

#include <stdexcept>

TextStreamFromFile::TextStreamFromFile(const QString& fileName, QIODevice::OpenMode mode)
    : m_file(std::make_unique<QFile>(fileName))
{
    if (!m_file->open(mode)) {
        const QString text = mode.testFlag(QIODevice::WriteOnly)
                                 ? QObject::tr("Не удалось создать файл '%0'%1")
                                 : QObject::tr("Не удалось открыть файл '%0'%1");
        const QString message = veltor::utils::pathOpenError(text, fileName, m_file->errorString());
        throw std::runtime_error(message.toStdString());
    }
    setDevice(m_file.get());
}

TextStreamFromFile::TextStreamFromFile(const QFileInfo& info, QIODevice::OpenMode mode)
    : TextStreamFromFile(info.absoluteFilePath(), mode)
{}

TextStreamFromFile::~TextStreamFromFile()
{
    // Flushes as well, while the file is still there.
    setDevice(nullptr);
}

QString TextStreamFromFile::fileName() const
{
    const auto* file = qobject_cast<const QFile*>(device());
    return file != nullptr ? file->fileName() : QString();
}
