#pragma once

#include <veltor/Export.h>

#include <QtCore/QFile>
#include <QtCore/QIODevice>
#include <QtCore/QTextStream>

#include <memory>

class QFileInfo;

/// A text stream that opens and owns its file. The file is closed, after what was written has been
/// flushed, when the stream goes; who must know whether all was written calls flush() and looks at
/// status() before. Owner thread only.
class VELTOR_UTILS_EXPORT TextStreamFromFile : public QTextStream
{
public:
    /// @throws std::runtime_error when the file cannot be opened, with a translated message that names
    ///         the file and the reason: it could not be created if @p mode contains QIODevice::WriteOnly,
    ///         and otherwise, for QIODevice::Append by itself too, it could not be opened
    TextStreamFromFile(const QString& fileName, QIODevice::OpenMode mode);
    /// The same with the absolute path of @p info.
    TextStreamFromFile(const QFileInfo& info, QIODevice::OpenMode mode);
    ~TextStreamFromFile() override;

    TextStreamFromFile(const TextStreamFromFile&) = delete;
    TextStreamFromFile& operator=(const TextStreamFromFile&) = delete;

    /// The name of the file that is the stream's device, as it was given; empty when setDevice() put
    /// something else in its place.
    [[nodiscard]] QString fileName() const;

private:
    std::unique_ptr<QFile> m_file;
};
