// The bytes of every record.

#include "utils/storage/journal/JournalFormat.h"

#include <QTextCodec>
#include <QtCore/QtEndian>

#include <algorithm>
#include <array>

namespace veltor::utils::journal {
namespace {

constexpr QUuid ChecksummedVersion{0x9fc29858, 0x1631, 0x44ab, 0x80, 0x89, 0x5f,
                                   0xeb,       0x8d,   0x81,   0x85, 0x5a};
constexpr QUuid PlainVersion{0x454fcf9b, 0xbdf9, 0x45ce, 0x9c, 0x1a, 0x19, 0x5d, 0xa1, 0x34, 0x90, 0xa1};

/// Takes little-endian fields one after the other.
class Source
{
public:
    explicit Source(const char* bytes) noexcept
        : m_at(bytes)
    {}

    template <typename T>
    Source& operator>>(T& value) noexcept
    {
        value = qFromLittleEndian<T>(m_at);
        m_at += sizeof(T);
        return *this;
    }

    Source& operator>>(QUuid& uuid) noexcept
    {
        *this >> uuid.data1 >> uuid.data2 >> uuid.data3;
        std::copy_n(reinterpret_cast<const uchar*>(m_at), 8, uuid.data4);
        m_at += 8;
        return *this;
    }

private:
    const char* m_at;
};

/// Puts little-endian fields one after the other.
class Sink
{
public:
    explicit Sink(char* bytes) noexcept
        : m_at(bytes)
    {}

    template <typename T>
    Sink& operator<<(T value) noexcept
    {
        qToLittleEndian<T>(value, m_at);
        m_at += sizeof(T);
        return *this;
    }

    Sink& operator<<(const QUuid& uuid) noexcept
    {
        *this << uuid.data1 << uuid.data2 << uuid.data3;
        m_at = std::copy_n(reinterpret_cast<const char*>(uuid.data4), 8, m_at);
        return *this;
    }

private:
    char* m_at;
};

QByteArray blank(quint64 size)
{
    return QByteArray(static_cast<int>(size), Qt::Uninitialized);
}

} // namespace

std::optional<Layout> layoutOf(const QUuid& version)
{
    if (version == PlainVersion) {
        return Layout::Plain;
    }
    if (version == ChecksummedVersion) {
        return Layout::Checksummed;
    }
    return std::nullopt;
}

Header freshHeader()
{
    Header header;
    header.version = ChecksummedVersion;
    return header;
}

QUuid decodeVersion(const char* bytes)
{
    QUuid version;
    Source(bytes) >> version;
    return version;
}

Header decodeHeader(const char* bytes)
{
    Header header;
    Source(bytes) >> header.version >> header.firstFile >> header.lastFile >> header.firstFree >>
        header.lastFree;
    return header;
}

FileEntry decodeEntryHead(const char* bytes)
{
    FileEntry entry;
    Source(bytes) >> entry.nextFile >> entry.firstChange >> entry.lastChange >> entry.fileSize >>
        entry.nameLength;
    return entry;
}

ChangeHead decodeChangeHead(const char* bytes, Layout layout)
{
    ChangeHead head;
    Source source(bytes);
    source >> head.next >> head.previous >> head.position >> head.sizeBound;
    if (layout == Layout::Checksummed) {
        source >> head.checksum;
    }
    source >> head.length;
    return head;
}

FreeRecord decodeFreeRecord(const char* bytes)
{
    FreeRecord record;
    Source(bytes) >> record.next >> record.previous >> record.regionOffset >> record.regionSize;
    return record;
}

QByteArray encodeHeader(const Header& header)
{
    QByteArray bytes = blank(HeaderSize);
    Sink(bytes.data()) << header.version << header.firstFile << header.lastFile << header.firstFree
                       << header.lastFree;
    return bytes;
}

QByteArray encodeEntry(const FileEntry& entry, const QByteArray& name)
{
    std::array<char, EntryHeadSize> head{};
    Sink(head.data()) << entry.nextFile << entry.firstChange << entry.lastChange << entry.fileSize
                      << static_cast<quint16>(name.size());
    return QByteArray(head.data(), static_cast<int>(head.size())) + name;
}

void encodeChangeHead(const ChangeHead& head, char* bytes)
{
    Sink(bytes) << head.next << head.previous << head.position << head.sizeBound << head.checksum
                << head.length;
}

std::array<char, 8> encodeLink(quint64 offset)
{
    std::array<char, 8> bytes{};
    Sink(bytes.data()) << offset;
    return bytes;
}

std::array<char, 16> encodeLinks(quint64 first, quint64 last)
{
    std::array<char, 16> bytes{};
    Sink(bytes.data()) << first << last;
    return bytes;
}

std::optional<QString> decodeName(const QByteArray& bytes)
{
    if (bytes.contains('\0')) {
        return std::nullopt;
    }
    // IgnoreHeader: a name that begins with U+FEFF keeps it.
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString name = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(),
                                                                static_cast<int>(bytes.size()), &state);
    if (state.invalidChars != 0 || state.remainingChars != 0) {
        return std::nullopt;
    }
    return name;
}

std::optional<QByteArray> encodeName(const QString& name)
{
    QByteArray bytes = name.toUtf8();
    if (static_cast<quint64>(bytes.size()) > MaxNameLength || decodeName(bytes) != name) {
        return std::nullopt;
    }
    return bytes;
}

void MovedLink::passes(quint64 member) noexcept
{
    int differing = 0; // bytes, the lowest of which is written first
    for (quint64 difference = m_found ^ member; difference != 0; difference >>= 8) {
        ++differing;
    }
    m_newBytes = qMin(m_newBytes, differing);
}

bool MovedLink::mayLeadTo(quint64 last) const noexcept
{
    if (m_newBytes == 0 || m_found == last) {
        return true;
    }
    // A mixture of an older link and a newer one lies before the newer one.
    const quint64 arrived = m_newBytes < 8 ? (quint64(1) << (8 * m_newBytes)) - 1 : ~quint64(0);
    return ((m_found ^ last) & arrived) == 0 && m_found < last;
}

} // namespace veltor::utils::journal
