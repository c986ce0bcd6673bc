#pragma once

#include "platform/FileIo.h"

#include <QtCore/QIODevice>

#include <optional>

namespace veltor::utils {

/// Positioned access to an open random-access device that somebody else owns. Cheap to make; holds no
/// state of its own.
///
/// A plain QFile opened unbuffered (on Windows a file of openStorageFile()) is reached through the operating
/// system's positioned calls: one system call an operation, and QIODevice::pos() kept true without any. Every
/// other device goes through QIODevice's own seek, read and write, and is flushed after a write if it
/// buffers: nothing that was written here ever waits in user space.
class DeviceIo
{
public:
    explicit DeviceIo(QIODevice& device);

    /// Size in bytes, 0 when it cannot be told.
    [[nodiscard]] quint64 size() const;

    /// False for a closed device and for a position that no device has (above 2^63 - 1).
    [[nodiscard]] bool canSeek(quint64 position) const;

    /// Bytes read at @p position; fewer than @p length at the end of the device or after a failure, -1
    /// when the device cannot be positioned there.
    [[nodiscard]] qint64 readAt(quint64 position, char* buffer, qint64 length) const;

    /// Bytes written at @p position; fewer than @p length after a failure.
    [[nodiscard]] qint64 writeAt(quint64 position, const char* data, qint64 length) const;

    /// Cuts or extends the device; false for one that is not a file device.
    [[nodiscard]] bool resize(quint64 size) const;

    /// False when the device is not a file device, or what it buffers cannot be written.
    [[nodiscard]] bool flush() const;

    /// Which file the device is; nothing for one without native access.
    [[nodiscard]] std::optional<platform::FileIdentity> identity() const;

    // The device's own position, which the two calls above do not care for and may move.
    [[nodiscard]] qint64 pos() const { return m_device.pos(); }
    [[nodiscard]] bool seek(qint64 position) const;

private:
    QIODevice& m_device;
    int m_descriptor; // -1: no native access
};

} // namespace veltor::utils
