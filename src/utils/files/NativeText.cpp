// Paths between Qt's texts and the system's own form.
#include "utils/files/NativeText.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace veltor::utils {

using platform::NativeString;

#ifdef Q_OS_WIN

NativeString toNative(const QString& path)
{
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (native.startsWith(QLatin1String(R"(\\?\)")) || native.startsWith(QLatin1String(R"(\\.\)"))) {
        return native.toStdWString();
    }
    return (native.startsWith(QLatin1String(R"(\\)")) ? QLatin1String(R"(\\?\UNC\)") + native.mid(2)
                                                      : QLatin1String(R"(\\?\)") + native)
        .toStdWString();
}

QString fromNative(const NativeString& name)
{
    return QDir::fromNativeSeparators(QString::fromStdWString(name));
}

bool isExactName(const NativeString&)
{
    return true;
}

#else

NativeString toNative(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

QString fromNative(const NativeString& name)
{
    if (isExactName(name)) {
        return QFile::decodeName(QByteArray::fromStdString(name));
    }
    QString text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        text += byte < 0x80 ? QString(QLatin1Char(c))
                            : QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
    }
    return text;
}

bool isExactName(const NativeString& name)
{
    const QByteArray bytes = QByteArray::fromStdString(name);
    return QFile::encodeName(QFile::decodeName(bytes)) == bytes;
}

#endif

NativeString nativeName(const QString& name)
{
#ifdef Q_OS_WIN
    return name.toStdWString();
#else
    return QFile::encodeName(name).toStdString();
#endif
}

QString reasonText(const std::error_code& error)
{
    return qt_error_string(error.value());
}

} // namespace veltor::utils
