// Files of the journal and under its protection, as Qt devices.

#include "utils/storage/io/StorageFile.h"

#include "utils/storage/StorageMessages.h"

#ifdef Q_OS_WIN
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#endif

#include <typeinfo>
#include <utility>

namespace veltor::utils::io {

StorageFile::StorageFile(const QString& path, const platform::OpenedFile& opened, bool writable)
    : QFile(path)
    , m_path(path)
    , m_status(opened.status)
    , m_descriptor(opened.fd)
{
    if (m_descriptor < 0) {
        setErrorString(reasonOf(opened));
        return;
    }
    const OpenMode mode = (writable ? ReadWrite : ReadOnly) | Unbuffered;
    if (!QFile::open(m_descriptor, mode, AutoCloseHandle)) {
        m_descriptor = -1;
    }
}

std::unique_ptr<StorageFile> StorageFile::open(const QString& path, platform::FileOpening opening)
{
    return std::make_unique<StorageFile>(path, platform::openFile(nativePath(path), opening), opening.write);
}

StorageFile::~StorageFile()
{
    StorageFile::close();
}

platform::LockAnswer StorageFile::lock()
{
    const platform::LockAnswer answer = platform::lockFile(m_descriptor);
    m_isLocked = answer.state == platform::LockState::Taken;
    return answer;
}

void StorageFile::close()
{
    if (std::exchange(m_isLocked, false)) {
        platform::unlockFile(m_descriptor);
    }
    QFile::close();
}

void StorageFile::refuse(const QString& reason)
{
    close();
    m_descriptor = -1;
    setErrorString(reason);
}

bool StorageFile::restrictAccess(unsigned access)
{
    if (!platform::restrictAccess(m_descriptor, access)) {
        return false;
    }
    m_status.access = access;
    return true;
}

platform::NativePath nativePath(const QString& path)
{
#ifdef Q_OS_WIN
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    constexpr int shortPath = 248;
    if (native.size() < shortPath || native.startsWith(QLatin1String(R"(\\?\)"))) {
        return native.toStdWString();
    }
    const bool share = native.startsWith(QLatin1String(R"(\\)"));
    return ((share ? QLatin1String(R"(\\?\UNC\)") : QLatin1String(R"(\\?\)")) + native.mid(share ? 2 : 0))
        .toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

QString reasonOf(const platform::OpenedFile& opened)
{
    switch (opened.fault) {
    case platform::OpenFault::NotRegular:
        return message::notRegular();
    case platform::OpenFault::Link:
        return message::isLink();
    case platform::OpenFault::Outside:
        return message::leadsOutside();
    case platform::OpenFault::Interface:
        return message::isInterface();
    case platform::OpenFault::System:
    case platform::OpenFault::Absent:
    case platform::OpenFault::Exists:
        return qt_error_string(opened.error);
    case platform::OpenFault::None:
        break;
    }
    return {};
}

int nativeDescriptor(QIODevice& device)
{
    // A subclass may have overridden any operation, so only the very types qualify.
    if (typeid(device) == typeid(StorageFile)) {
        return device.isOpen() ? static_cast<StorageFile&>(device).descriptor() : -1;
    }
#ifndef Q_OS_WIN
    if (typeid(device) == typeid(QFile)) {
        const QIODevice::OpenMode mode = device.openMode();
        const bool plain = mode.testFlag(QIODevice::Unbuffered) && !mode.testFlag(QIODevice::Append) &&
                           !mode.testFlag(QIODevice::Text);
        return plain ? static_cast<QFile&>(device).handle() : -1;
    }
#endif
    return -1;
}

} // namespace veltor::utils::io
