#pragma once

#include <veltor/Export.h>
#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QFileDevice>

#include <memory>
#include <vector>

namespace veltor::utils {

/// A file device whose writes can be undone: each one passes through a rollback device, which saves the
/// bytes that it overwrites first.
///
/// It reads and writes as QFile does, always unbuffered and always for reading and writing, and goes wherever
/// a QFileDevice or QIODevice goes: text and data streams, writers of XML. What differs, by its nature:
///
/// - pos() is the protected file's, which several objects on one file share. After peek() it is behind what
///   was peeked; the next read gives that all the same.
/// - handle() is -1, map() gives null and setFileTime() fails: they would pass the rollback device by.
///   fileTime() is invalid; ask QFileInfo(fileName()).
/// - A file outlives its transaction only as an object: after commit(), rollback() or a new open() of the
///   rollback device every operation fails, until the file is opened again.
///
/// Failures are reported as file devices do, by results, error() (after a failed open ResizeError, since the
/// base sets no other; on Windows PermissionsError after a failed read or write) and errorString(); the log
/// has them too.
///
/// Threads: the rollback device's owner thread only.
class VELTOR_UTILS_EXPORT SecuredFile : public QFileDevice
{
    Q_OBJECT

public:
    /// A rollback device with the deleter of whoever made it.
    using OwnedRollbackDevice = std::unique_ptr<RollbackDevice, void (*)(RollbackDevice*)>;

    /// Bytes for a place of the file; see writeBlocks().
    struct Block
    {
        qint64 position; ///< not below 0
        QByteArray data; ///< none: nothing is written
    };

    /// A closed file.
    explicit SecuredFile(QObject* parent = nullptr);
    /// Closes. Changes stay under the rollback device's protection until it commits or rolls back.
    ~SecuredFile() override;

    /// Puts the file @p name under the protection of @p device, which must outlive this object or its
    /// close(), and opens it.
    /// @return false, with the file closed, when the rollback device cannot protect it
    [[nodiscard]] bool open(const QString& name, RollbackDevice& device);

    /// The same for a device that this object owns until it is closed or opened anew.
    [[nodiscard]] bool open(const QString& name, OwnedRollbackDevice device);

    /// Opens the device object alone, always for reading and writing, unbuffered, whatever @p mode says:
    /// a secured file is never buffered and never read-only. Without a rollback device every read and
    /// write fails.
    bool open(OpenMode mode) override;

    /// Releases the rollback device.
    void close() override;

    /// False: a secured file is random-access.
    [[nodiscard]] bool isSequential() const override;
    /// The protected file's position in bytes; 0 without a rollback device.
    [[nodiscard]] qint64 pos() const override;
    /// Moves that position; see RollbackDevice::fileSeek().
    bool seek(qint64 position) override;
    /// Whether the position is at the end or beyond; true without a rollback device.
    [[nodiscard]] bool atEnd() const override;
    /// The protected file's present size in bytes; 0 without a rollback device, -1 when it cannot be told.
    [[nodiscard]] qint64 size() const override;
    /// Sets the length, saving first what that destroys; see RollbackDevice::fileResize().
    bool resize(qint64 size) override;
    /// The protected file's path, empty without a rollback device.
    [[nodiscard]] QString fileName() const override;
    /// The protected file's permissions, none without a rollback device.
    [[nodiscard]] Permissions permissions() const override;
    /// Sets them; no rollback puts them back.
    bool setPermissions(Permissions permissions) override;

    /// Writes to many places at once, faster than one after the other; the position stays.
    /// @return as RollbackDevice::writeBlocks(), and false without a rollback device
    bool writeBlocks(const std::vector<Block>& blocks);

protected:
    /// @return the bytes read, 0 at the end, -1 without a rollback device; see
    ///     RollbackDevice::readFromFile()
    qint64 readData(char* data, qint64 length) override;
    /// As readData(), up to a line's end and no further.
    qint64 readLineData(char* data, qint64 length) override;
    /// Writes at most 2,147,483,647 bytes in one call. @return the bytes written, 0 without a rollback
    /// device or for a length of 0 or less, -1 on failure
    qint64 writeData(const char* data, qint64 length) override;

private:
    friend class Transaction;
    [[nodiscard]] RollbackDevice::Key keyIn(const RollbackDevice& device) const noexcept;
    void fail(FileError error, const QString& reason);

    class Private;
    std::unique_ptr<Private> m_p;
};

} // namespace veltor::utils
