// One way to bytes at a position, whatever the device.

#include "utils/storage/io/DeviceIo.h"

#include "utils/storage/io/StorageFile.h"

#include <limits>

namespace veltor::utils::io {
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

std::optional<quint64> DeviceIo::size() const
{
    const qint64 size = m_descriptor >= 0 ? platform::fileIo().size(m_descriptor) : m_device.size();
    if (size < 0) {
        noteFailure();
        return std::nullopt;
    }
    return static_cast<quint64>(size);
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
        const qint64 got =
            platform::fileIo().readAt(m_descriptor, static_cast<qint64>(position), buffer, length);
        if (got < 0) {
            noteFailure();
        }
        return qMax<qint64>(0, got);
    }
    const std::optional<quint64> end = size();
    if (!end) {
        return 0;
    }
    if (position >= *end) {
        return 0; // some devices grow when they are positioned beyond their end
    }
    if (!m_device.seek(static_cast<qint64>(position))) {
        noteFailure();
        return -1;
    }
    qint64 done = 0;
    while (done < length) {
        const qint64 got = m_device.read(buffer + done, length - done);
        if (got <= 0) {
            if (got < 0) {
                noteFailure();
            }
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
    qint64 written = 0;
    if (m_descriptor >= 0) {
        written = platform::fileIo().writeAt(m_descriptor, static_cast<qint64>(position), data, length);
    } else if (m_device.seek(static_cast<qint64>(position))) {
        written = qMax<qint64>(0, m_device.write(data, length));
        auto* const file = qobject_cast<QFileDevice*>(&m_device);
        written = !file || flush() ? written : 0;
    }
    if (written != length) {
        noteFailure();
    }
    return written;
}

bool DeviceIo::canResize() const
{
    return m_descriptor >= 0 || qobject_cast<QFileDevice*>(&m_device);
}

bool DeviceIo::resize(quint64 size) const
{
    if (size > MaxOffset) {
        return false;
    }
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    const bool done = m_descriptor >= 0 ? platform::fileIo().resize(m_descriptor, static_cast<qint64>(size))
                                        : file && file->resize(static_cast<qint64>(size));
    if (!done) {
        noteFailure();
    }
    return done;
}

bool DeviceIo::flush() const
{
    if (m_descriptor >= 0) {
        return true;
    }
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    const bool done = file && (file->openMode().testFlag(QIODevice::Unbuffered) || file->flush());
    if (!done) {
        noteFailure();
    }
    return done;
}

bool DeviceIo::sync() const
{
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    if (m_descriptor < 0 && (!file || !flush())) {
        return !file;
    }
    const bool done = platform::fileIo().sync(m_descriptor >= 0 ? m_descriptor : file->handle());
    if (!done) {
        m_reason = qt_error_string();
    }
    return done;
}

std::optional<platform::FileStatus> DeviceIo::status() const
{
    if (auto* const file = dynamic_cast<StorageFile*>(&m_device)) {
        return file->status();
    }
    platform::FileStatus status;
    if (m_descriptor < 0 || !platform::fileIo().status(m_descriptor, status)) {
        return std::nullopt;
    }
    return status;
}

bool DeviceIo::seek(qint64 position) const
{
    // The base's seek sets the position and leaves the descriptor's alone, which nobody uses.
    return m_descriptor >= 0 ? m_device.QIODevice::seek(position) : m_device.seek(position);
}

void DeviceIo::noteFailure() const
{
    // Before anything else is called that might change the system's error.
    m_reason = m_descriptor >= 0 ? qt_error_string() : m_device.errorString();
}

} // namespace veltor::utils::io
