#pragma once

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QtEndian>

namespace veltor::test {

/// A journal put together byte by byte, independently of the code under test. Two files, "a" (100 bytes,
/// blocks A1 and A2) and "b" (50 bytes, block B1), and two free records.
struct JournalImage
{
    static constexpr quint64 firstFileAt = 16, lastFileAt = 24, firstFreeAt = 32, lastFreeAt = 40;
    static constexpr quint64 nextFile = 0, firstChange = 8, lastChange = 16, fileSize = 24, nameLength = 32;
    static constexpr quint64 next = 0, previous = 8, position = 16, sizeBound = 24;

    explicit JournalImage(bool checksums = true)
        : headSize(checksums ? 40 : 36)
    {
        bytes = QByteArray::fromHex(checksums ? "5898C29F3116AB4480895FEB8D81855A"
                                              : "9BCF4F45F9BDCE459C1A195DA13490A1");
        bytes += QByteArray(32, '\0');
        fileA = addFile("a", 100);
        blockA1 = addBlock(fileA, 0, 10, 100, QByteArray("saved bytes one"), 0x654E1E42);
        fileB = addFile("b", 50);
        blockA2 = addBlock(fileA, blockA1, 40, 100, QByteArray(), 0);
        blockB1 = addBlock(fileB, 0, 0, 50, QByteArray("b"), 0xD280B0C4);
        free1 = addFree(0, 60, 4);
        free2 = addFree(free1, 64, 4);
    }

    template <typename T>
    void put(quint64 offset, T value)
    {
        if (offset + sizeof value > static_cast<quint64>(bytes.size())) {
            bytes += QByteArray(static_cast<int>(offset + sizeof value) - bytes.size(), '\0');
        }
        qToLittleEndian(value, bytes.data() + offset);
    }

    quint64 at(quint64 offset) const { return qFromLittleEndian<quint64>(bytes.constData() + offset); }
    quint64 end() const { return static_cast<quint64>(bytes.size()); }

    quint64 addFile(const QByteArray& name, quint64 size)
    {
        const quint64 entry = end();
        const quint64 last = at(lastFileAt);
        put<quint64>(last == 0 ? firstFileAt : last + nextFile, entry);
        put<quint64>(lastFileAt, entry);
        put<quint64>(entry + fileSize, size);
        put<quint64>(entry + nextFile, 0);
        put<quint16>(entry + nameLength, static_cast<quint16>(name.size()));
        bytes += name;
        return entry;
    }

    quint64 addBlock(quint64 entry, quint64 before, quint64 from, quint64 bound, const QByteArray& data,
                     quint32 checksum)
    {
        const quint64 block = end();
        put<quint64>(before == 0 ? entry + firstChange : before + next, block);
        put<quint64>(entry + lastChange, block);
        put<quint64>(block + previous, before);
        put<quint64>(block + position, from);
        put<quint64>(block + sizeBound, bound);
        if (headSize == 40) {
            put<quint32>(block + 32, checksum);
        }
        put<quint32>(block + headSize - 4, static_cast<quint32>(data.size()));
        bytes += data;
        return block;
    }

    quint64 addFree(quint64 before, quint64 region, quint32 size)
    {
        const quint64 record = end();
        put<quint64>(before == 0 ? firstFreeAt : before + next, record);
        put<quint64>(lastFreeAt, record);
        put<quint64>(record + previous, before);
        put<quint64>(record + 16, region);
        put<quint32>(record + 24, size);
        return record;
    }

    quint64 headSize;
    QByteArray bytes;
    quint64 fileA, blockA1, fileB, blockA2, blockB1, free1, free2;
};

/// A rollback device on a journal in memory; every file of the journal opens as a buffer of its own,
/// but for those named in `missing`.
class MemoryDevice : public utils::RollbackDevice
{
public:
    bool openImage(const QByteArray& bytes, QIODevice::OpenMode mode = QIODevice::ReadOnly)
    {
        auto* const buffer = new QBuffer;
        buffer->setData(bytes);
        buffer->open(QIODevice::ReadWrite);
        return open(makeIOPtr(buffer), mode);
    }

    QByteArray journal() const { return static_cast<QBuffer*>(journalDevice().get())->data(); }

    using RollbackDevice::addFileImpl;
    using RollbackDevice::existingFile;
    using RollbackDevice::flushList;

    QStringList missing;
    int removed = 0;

protected:
    IOPtr openFile(const QString& name) const override
    {
        auto* const buffer = new QBuffer;
        if (!missing.contains(name)) {
            buffer->setData(QByteArray(100, '.'));
            buffer->open(QIODevice::ReadWrite);
        }
        return makeIOPtr(buffer);
    }
    void remove(const IOPtr&) override { ++removed; }
};

} // namespace veltor::test
