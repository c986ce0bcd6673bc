// The file device whose writes can be undone.

#include <veltor/utils/SecuredFile.h>

#include "utils/storage/StorageMessages.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace veltor::utils {
namespace {

void keepDevice(RollbackDevice*) {}

} // namespace

class SecuredFile::Private
{
public:
    RollbackDevice::Key key = 0; // 0: closed
    quint64 generation = 0;      // of the rollback device when it gave the key
    OwnedRollbackDevice device{nullptr, &keepDevice};

    /// The rollback device, null when there is none for this file, or no longer.
    [[nodiscard]] RollbackDevice* protector() const
    {
        return device && key != 0 && device->generation() == generation ? device.get() : nullptr;
    }

    /// Why an operation failed.
    [[nodiscard]] QString reason() const
    {
        return device && key != 0 && !protector() ? message::keyOutdated()
               : device                           ? device->errorString()
                                                  : QString();
    }
};

SecuredFile::SecuredFile(QObject* parent)
    : QFileDevice(parent)
    , m_p(std::make_unique<Private>())
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
    m_p->device = std::move(device);
    m_p->key = m_p->device ? m_p->device->addFile(QFileInfo(name)) : 0;
    if (m_p->key == 0) {
        const QString reason = m_p->device ? m_p->device->errorString() : QString();
        close();
        fail(OpenError, reason.isEmpty() ? message::openFailed(name) : reason);
        return false;
    }
    m_p->generation = m_p->device->generation();
    // QIODevice keeps a position of its own, which the file's may be ahead of.
    return QIODevice::seek(pos());
}

bool SecuredFile::open(OpenMode)
{
    if (!QIODevice::open(ReadWrite | Unbuffered)) {
        return false;
    }
    unsetError();
    // flush(), the base's error() and whoever calls them (QTextStream) want a file engine, which only the
    // base's size() makes. It never opens a file.
    static_cast<void>(QFileDevice::size());
    return true;
}

void SecuredFile::close()
{
    // Not QFileDevice::close(), which wants an engine of its own to flush.
    if (isOpen()) {
        QIODevice::close();
    }
    m_p->device.reset();
    m_p->device.get_deleter() = &keepDevice;
    m_p->key = 0;
}

bool SecuredFile::isSequential() const
{
    return false;
}

qint64 SecuredFile::pos() const
{
    const auto* const protector = m_p->protector();
    return protector ? protector->filePos(m_p->key) : 0;
}

bool SecuredFile::seek(qint64 position)
{
    auto* const protector = m_p->protector();
    if (!protector || !protector->fileSeek(m_p->key, position)) {
        fail(PositionError, m_p->reason());
        return false;
    }
    return QIODevice::seek(position);
}

bool SecuredFile::atEnd() const
{
    return pos() >= size();
}

qint64 SecuredFile::size() const
{
    const auto* const protector = m_p->protector();
    return protector ? protector->fileSize(m_p->key) : 0;
}

bool SecuredFile::resize(qint64 size)
{
    auto* const protector = m_p->protector();
    if (!protector || !protector->fileResize(m_p->key, size)) {
        fail(ResizeError, m_p->reason());
        return false;
    }
    return QIODevice::seek(pos());
}

QString SecuredFile::fileName() const
{
    const auto* const protector = m_p->protector();
    return protector ? protector->fileName(m_p->key) : QString();
}

QFileDevice::Permissions SecuredFile::permissions() const
{
    const QString name = fileName();
    return name.isEmpty() ? Permissions() : QFile::permissions(name);
}

bool SecuredFile::setPermissions(Permissions permissions)
{
    QFile file(fileName());
    if (!m_p->protector() || !file.setPermissions(permissions)) {
        fail(PermissionsError, m_p->protector() ? file.errorString() : m_p->reason());
        return false;
    }
    return true;
}

qint64 SecuredFile::readData(char* data, qint64 length)
{
    if (!data || length <= 0) {
        return 0;
    }
    auto* const protector = m_p->protector();
    const qint64 got = protector ? protector->readFromFile(m_p->key, data, length) : -1;
    if (got < 0) {
        fail(ReadError, m_p->reason());
    }
    return got;
}

qint64 SecuredFile::readLineData(char* data, qint64 length)
{
    const qint64 start = pos();
    qint64 done = 0;
    while (done < length) {
        constexpr qint64 step = 4096;
        const qint64 wanted = std::min(length - done, step);
        const qint64 got = readData(data + done, wanted);
        if (got <= 0) {
            return done > 0 ? done : got;
        }
        if (const void* const end = std::memchr(data + done, '\n', static_cast<std::size_t>(got))) {
            done = static_cast<const char*>(end) - data + 1;
            return m_p->protector()->fileSeek(m_p->key, start + done) ? done : -1;
        }
        done += got;
    }
    return done;
}

qint64 SecuredFile::writeData(const char* data, qint64 length)
{
    if (!m_p->device || length <= 0) {
        return 0;
    }
    const auto written = static_cast<int>(std::min<qint64>(length, std::numeric_limits<int>::max()));
    auto* const protector = m_p->protector();
    if (protector && protector->writeBlock(m_p->key, QByteArray::fromRawData(data, written))) {
        return written;
    }
    fail(WriteError, m_p->reason());
    return -1;
}

bool SecuredFile::writeBlocks(const std::vector<Block>& blocks)
{
    std::vector<RollbackDevice::BlockWrite> writes;
    writes.reserve(blocks.size());
    for (const Block& block : blocks) {
        writes.push_back({m_p->key, static_cast<quint64>(block.position), block.data});
    }
    auto* const protector = m_p->protector();
    if (protector && protector->writeBlocks(writes)) {
        return true;
    }
    fail(WriteError, m_p->reason());
    return false;
}

/// The file's key, 0 when it is not open in that device's present journal.
RollbackDevice::Key SecuredFile::keyIn(const RollbackDevice& device) const noexcept
{
    return m_p->protector() == &device ? m_p->key : 0;
}

/// Sets error() and errorString(). Only the base itself can set the former: by an operation of its own that
/// cannot but fail, since its engine has no file.
void SecuredFile::fail(FileError error, const QString& reason)
{
    char byte = 0;
    switch (error) {
    case ReadError:
        QFileDevice::readData(&byte, 1);
        break;
    case WriteError:
        QFileDevice::writeData(&byte, 1);
        break;
    case PositionError:
        QFileDevice::seek(0);
        break;
    case PermissionsError:
        QFileDevice::setPermissions({});
        break;
    default:
        QFileDevice::resize(0);
    }
    setErrorString(reason);
}

} // namespace veltor::utils
