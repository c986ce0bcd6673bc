// Any bytes as a journal: opened, shown, repaired and rolled back, without a crash, a hang or an
// allocation that the bytes themselves decide; what is accepted is salvaged as it is.

#include "Fuzz.h"

#include <veltor/logging/Logger.h>
#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QBuffer>

#include <algorithm>
#include <set>

namespace {

using veltor::IOPtr;
using veltor::makeIOPtr;
using veltor::fuzz::demand;
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

namespace {

bool openBytes(MemoryDevice& device, const uint8_t* bytes, size_t size)
{
    auto* const buffer = new QBuffer;
    buffer->setData(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    buffer->open(QIODevice::ReadWrite);
    return device.open(makeIOPtr(buffer), QIODevice::ReadOnly);
}

/// What a strict reading accepts, a salvage finds too; but for names that are listed twice.
void checkSalvage(const MemoryDevice& strict, const uint8_t* bytes, size_t size)
{
    MemoryDevice salvaged;
    openBytes(salvaged, bytes, size);
    salvaged.repair();
    const auto files = salvaged.protectedFiles();
    const auto expected = strict.protectedFiles();
    std::set<QString> names;
    if (std::any_of(expected.begin(), expected.end(),
                    [&](const auto& f) { return !names.insert(f.name).second; })) {
        return;
    }
    demand(salvaged.repairedWhole() && files.size() == expected.size(), "a whole journal is salvaged whole");
    for (std::size_t i = 0; i < files.size(); ++i) {
        demand(files[i].name == expected[i].name && files[i].size == expected[i].size &&
                   files[i].blocks == expected[i].blocks && files[i].savedBytes == expected[i].savedBytes,
               "a salvaged file is the journal's", files[i].name);
        demand(files[i].savedBytes <= size, "no more is saved than the journal holds", files[i].name);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const auto quiet = veltor::logging::setLogSink([](const veltor::logging::LogRecord&) {});
    Q_UNUSED(quiet)
    MemoryDevice device;
    if (openBytes(device, bytes, size)) {
        checkSalvage(device, bytes, size);
    } else {
        demand(!device.errorString().isEmpty(), "a refusal has its reason");
        device.repair();
    }
    const bool restored = device.rollback();
    demand(!restored || device.protectedFiles().empty(), "what is restored is no longer protected");
    return 0;
}
