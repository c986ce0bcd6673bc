#include "utils/storage/StorageFile.h"

#ifdef Q_OS_WIN
#include "platform/windows/FileOpen.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#endif

#include <typeinfo>

namespace veltor::utils {

#ifdef Q_OS_WIN
namespace {

/// A file with one descriptor from its opening to its end.
class DescriptorFile : public QFile
{
public:
    explicit DescriptorFile(const QString& name)
        : QFile(name)
        , m_name(name)
    {}

    /// QFile forgets the name of what is opened by descriptor.
    [[nodiscard]] QString fileName() const override { return m_name; }

    using QFile::open;
    bool open(OpenMode mode) override
    {
        const platform::FileOpening opening{mode.testFlag(WriteOnly), mode.testFlag(NewOnly)};
        const int descriptor = platform::openFile(nativePath().toStdWString(), opening);
        // The C runtime holds some two thousand descriptors: files beyond go without positioned access.
        return descriptor >= 0 ? QFile::open(descriptor, mode & (ReadWrite | Unbuffered), AutoCloseHandle)
                               : QFile::open(mode);
    }

private:
    /// In the form that has no limit of 260 characters where that is needed.
    [[nodiscard]] QString nativePath() const
    {
        const QString path = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(m_name).absoluteFilePath()));
        constexpr int shortPath = 248;
        if (path.size() < shortPath || path.startsWith(QLatin1String(R"(\\?\)"))) {
            return path;
        }
        return path.startsWith(QLatin1String(R"(\\)")) ? QLatin1String(R"(\\?\UNC\)") + path.mid(2)
                                                       : QLatin1String(R"(\\?\)") + path;
    }

    const QString m_name;
};

using Opened = DescriptorFile;

} // namespace
#else
using Opened = QFile;
#endif

std::unique_ptr<QFile> openStorageFile(const QString& path, QIODevice::OpenMode mode)
{
    auto file = std::make_unique<Opened>(path);
    file->open(mode | QIODevice::Unbuffered);
    return file;
}

int nativeDescriptor(QIODevice& device)
{
    // A subclass may have overridden any operation, so only the very type qualifies.
    if (typeid(device) != typeid(Opened)) {
        return -1;
    }
    const QIODevice::OpenMode mode = device.openMode();
    if (!mode.testFlag(QIODevice::Unbuffered) || mode.testFlag(QIODevice::Append) ||
        mode.testFlag(QIODevice::Text)) {
        return -1;
    }
    return static_cast<QFile&>(device).handle();
}

} // namespace veltor::utils
