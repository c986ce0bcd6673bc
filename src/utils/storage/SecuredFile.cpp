#include <veltor/utils/SecuredFile.h>

#include "utils/storage/JournalMessages.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace veltor::utils {
namespace {

void keepDevice(RollbackDevice*) {}

} // namespace

SecuredFile::SecuredFile(QObject* parent)
    : QFileDevice(parent)
    , m_device(nullptr, &keepDevice)
{}

SecuredFile::~SecuredFile()
{
    SecuredFile::close();
}

bool SecuredFile::open(const QString& name, RollbackDevice& device)
{
    return open(name, OwnedRollbackDevice(&device, &keepDevice));
}

bool SecuredFile::open(const QString& name, OwnedRollbackDevice device)
{
    if (!open(ReadWrite)) {
        return false;
    }
    m_device = std::move(device);
    m_key = m_device ? m_device->addFile(QFileInfo(name)) : 0;
    if (m_key == 0) {
        setErrorString(journal::message::openFailed(name));
        close();
        return false;
    }
    // QIODevice keeps a position of its own, which the file's may be ahead of.
    return QIODevice::seek(pos());
}

bool SecuredFile::open(OpenMode)
{
    return QIODevice::open(ReadWrite | Unbuffered);
}

void SecuredFile::close()
{
    // Not QFileDevice::close(), which wants an engine of its own to flush.
    if (isOpen()) {
        QIODevice::close();
    }
    m_device.reset();
    m_device.get_deleter() = &keepDevice;
    m_key = 0;
}

bool SecuredFile::isSequential() const
{
    return false;
}

qint64 SecuredFile::pos() const
{
    return m_device ? m_device->filePos(m_key) : 0;
}

bool SecuredFile::seek(qint64 position)
{
    return m_device && m_device->fileSeek(m_key, position) && QIODevice::seek(position);
}

bool SecuredFile::atEnd() const
{
    return pos() >= size();
}

qint64 SecuredFile::size() const
{
    return m_device ? m_device->fileSize(m_key) : QFileDevice::size();
}

bool SecuredFile::resize(qint64 size)
{
    if (!m_device || !m_device->fileResize(m_key, size)) {
        setErrorString(journal::message::fileResizeFailed(fileName(), static_cast<quint64>(size)));
        return false;
    }
    return QIODevice::seek(pos());
}

QString SecuredFile::fileName() const
{
    return m_device ? m_device->fileName(m_key) : QString();
}

qint64 SecuredFile::readData(char* data, qint64 length)
{
    if (!data || length <= 0) {
        return 0;
    }
    return m_device ? m_device->readFromFile(m_key, data, length) : -1;
}

qint64 SecuredFile::writeData(const char* data, qint64 length)
{
    if (!m_device || length <= 0) {
        return 0;
    }
    const auto written = static_cast<int>(std::min<qint64>(length, std::numeric_limits<int>::max()));
    if (m_device->writeBlock(m_key, QByteArray::fromRawData(data, written))) {
        return written;
    }
    setErrorString(journal::message::fileWriteFailed(fileName(), static_cast<quint64>(pos())));
    return -1;
}

} // namespace veltor::utils
