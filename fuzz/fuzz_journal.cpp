// Any bytes as a journal: opened, shown, repaired and rolled back, without a crash, a hang or an
// allocation that the bytes themselves decide.

#include <veltor/logging/Logger.h>
#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QBuffer>

namespace {

using veltor::IOPtr;
using veltor::makeIOPtr;
using veltor::utils::RollbackDevice;

/// A protected file that takes any write but holds nothing: positions in a journal may be astronomical.
class Sponge : public QFileDevice
{
public:
    Sponge() { QIODevice::open(ReadWrite | Unbuffered); }
    ~Sponge() override { QIODevice::close(); }
    bool isSequential() const override { return false; }
    qint64 size() const override { return m_size; }
    qint64 pos() const override { return QIODevice::pos(); }
    bool seek(qint64 position) override { return QIODevice::seek(position); }
    bool resize(qint64 size) override
    {
        m_size = size;
        return true;
    }
    void close() override { QIODevice::close(); }

protected:
    qint64 readData(char* data, qint64 length) override
    {
        memset(data, 0, static_cast<size_t>(length));
        return length;
    }
    qint64 writeData(const char*, qint64 length) override
    {
        m_size = qMax(m_size, QIODevice::pos() + length);
        return length;
    }

private:
    qint64 m_size = 100;
};

class MemoryDevice : public RollbackDevice
{
protected:
    IOPtr openFile(const QString& name) const override
    {
        return name.size() % 7 == 6 ? veltor::nullIOPtr() : makeIOPtr(new Sponge);
    }
    void remove(const IOPtr&) override {}
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const auto quiet = veltor::logging::setLogSink([](const veltor::logging::LogRecord&) {});
    Q_UNUSED(quiet)
    auto* const buffer = new QBuffer;
    buffer->setData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    buffer->open(QIODevice::ReadWrite);
    MemoryDevice device;
    if (!device.open(makeIOPtr(buffer), QIODevice::ReadOnly)) {
        device.repair();
    }
    static_cast<void>(device.protectedFiles());
    static_cast<void>(device.rollback());
    return 0;
}
