#pragma once

#include "platform/FileIo.h"

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <optional>

namespace veltor::utils::io {

/// Positioned access to an open random-access device that somebody else owns. Cheap to make.
///
/// A StorageFile, or a plain QFile opened unbuffered, is reached through the operating system's positioned
/// calls: one system call an operation, and QIODevice::pos() kept true without any. Every other device goes
/// through QIODevice's own seek, read and write, and is flushed after a write if it buffers: nothing that was
/// written here ever waits in user space.
///
/// Nothing that failed reads as a number: a size has a value or none, and reason() says why.
class DeviceIo
{
public:
    explicit DeviceIo(QIODevice& device);

    /// Size in bytes, nothing when it cannot be told.
    [[nodiscard]] std::optional<quint64> size() const;

    /// False for a closed device and for a position that no device has (above 2^63 - 1).
    [[nodiscard]] bool canSeek(quint64 position) const;

    /// Bytes read at @p position; fewer than @p length at the end of the device or after a failure, which
    /// has a reason(); -1 when the device cannot be positioned there.
    [[nodiscard]] qint64 readAt(quint64 position, char* buffer, qint64 length) const;

    /// Bytes written at @p position; fewer than @p length after a failure.
    [[nodiscard]] qint64 writeAt(quint64 position, const char* data, qint64 length) const;

    /// True for a file device: others have no length to set.
    [[nodiscard]] bool canResize() const;
    /// Cuts or extends the device.
    [[nodiscard]] bool resize(quint64 size) const;

    /// False when the device is not a file device, or what it buffers cannot be written.
    [[nodiscard]] bool flush() const;

    /// Waits until what was written is on the disk; a device that is no file has nothing to wait for.
    [[nodiscard]] bool sync() const;

    /// What file the device is; nothing for one without native access.
    [[nodiscard]] std::optional<platform::FileStatus> status() const;

    /// Why the last operation of this object failed, in the system's or the device's words; empty while none
    /// did.
    [[nodiscard]] const QString& reason() const noexcept { return m_reason; }

    // The device's own position, which the calls above do not care for and may move.
    [[nodiscard]] qint64 pos() const { return m_device.pos(); }
    [[nodiscard]] bool seek(qint64 position) const;

private:
    void noteFailure() const;

    QIODevice& m_device;
    int m_descriptor; // -1: no native access
    mutable QString m_reason;
};

} // namespace veltor::utils::io
