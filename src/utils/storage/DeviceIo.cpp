#include "utils/storage/DeviceIo.h"

#include "utils/storage/StorageFile.h"

#include <QtCore/QFileDevice>

#include <limits>

namespace veltor::utils {
namespace {

constexpr auto MaxOffset = static_cast<quint64>(std::numeric_limits<qint64>::max());

bool fits(quint64 position, qint64 length)
{
    return length >= 0 && position <= MaxOffset - static_cast<quint64>(length);
}

} // namespace

DeviceIo::DeviceIo(QIODevice& device)
    : m_device(device)
    , m_descriptor(nativeDescriptor(device))
{}

quint64 DeviceIo::size() const
{
    const qint64 size = m_descriptor >= 0 ? platform::fileIo().size(m_descriptor) : m_device.size();
    return size > 0 ? static_cast<quint64>(size) : 0;
}

bool DeviceIo::canSeek(quint64 position) const
{
    return m_device.isOpen() && position <= MaxOffset;
}

qint64 DeviceIo::readAt(quint64 position, char* buffer, qint64 length) const
{
    if (!fits(position, length)) {
        return -1;
    }
    if (m_descriptor >= 0) {
        return qMax<qint64>(
            0, platform::fileIo().readAt(m_descriptor, static_cast<qint64>(position), buffer, length));
    }
    if (position >= size()) {
        return 0; // some devices grow when they are positioned beyond their end
    }
    if (!m_device.seek(static_cast<qint64>(position))) {
        return -1;
    }
    qint64 done = 0;
    while (done < length) {
        const qint64 got = m_device.read(buffer + done, length - done);
        if (got <= 0) {
            break;
        }
        done += got;
    }
    return done;
}

qint64 DeviceIo::writeAt(quint64 position, const char* data, qint64 length) const
{
    if (!fits(position, length)) {
        return 0;
    }
    if (m_descriptor >= 0) {
        return platform::fileIo().writeAt(m_descriptor, static_cast<qint64>(position), data, length);
    }
    if (!m_device.seek(static_cast<qint64>(position))) {
        return 0;
    }
    const qint64 written = qMax<qint64>(0, m_device.write(data, length));
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    return !file || flush() ? written : 0;
}

bool DeviceIo::resize(quint64 size) const
{
    if (size > MaxOffset) {
        return false;
    }
    if (m_descriptor >= 0) {
        return platform::fileIo().resize(m_descriptor, static_cast<qint64>(size));
    }
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    return file && file->resize(static_cast<qint64>(size));
}

bool DeviceIo::flush() const
{
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    return file && (file->openMode().testFlag(QIODevice::Unbuffered) || file->flush());
}

std::optional<platform::FileIdentity> DeviceIo::identity() const
{
    platform::FileIdentity identity;
    if (m_descriptor < 0 || !platform::fileIo().identity(m_descriptor, identity)) {
        return std::nullopt;
    }
    return identity;
}

bool DeviceIo::seek(qint64 position) const
{
    // The base's seek sets the position and leaves the descriptor's alone, which nobody uses.
    return m_descriptor >= 0 ? m_device.QIODevice::seek(position) : m_device.seek(position);
}

} // namespace veltor::utils
