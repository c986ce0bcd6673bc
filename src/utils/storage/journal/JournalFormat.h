#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QUuid>

#include <array>
#include <optional>

/// The rollback journal's records as bytes: little-endian, no padding, no files. docs/journal.md
/// describes the format; nothing outside this pair of files knows a field's place.
namespace veltor::utils::journal {

constexpr quint64 HeaderSize = 48;
constexpr quint64 EntryHeadSize = 34;
constexpr quint64 FreeRecordSize = 28;
constexpr quint64 VersionSize = 16;
constexpr quint64 MaxNameLength = 0xFFFF;

// Places of the links that are rewritten after their record was.
constexpr quint64 HeaderFirstFileAt = 16;
constexpr quint64 HeaderLastFileAt = 24;
constexpr quint64 EntryNextFileAt = 0;
constexpr quint64 EntryFirstChangeAt = 8;
constexpr quint64 EntryLastChangeAt = 16;
constexpr quint64 ChangeNextAt = 0;

/// How change blocks are laid out; told by the header's version identifier.
enum class Layout
{
    Checksummed, ///< 40-byte head with a CRC-32C of the data; the only one ever created
    Plain,       ///< 36-byte head, no checksum; read, never written
};

struct Header
{
    QUuid version;
    quint64 firstFile = 0;
    quint64 lastFile = 0;
    quint64 firstFree = 0;
    quint64 lastFree = 0;
};

struct FileEntry
{
    quint64 nextFile = 0;
    quint64 firstChange = 0;
    quint64 lastChange = 0;
    quint64 fileSize = 0;
    quint16 nameLength = 0;
};

struct ChangeHead
{
    quint64 next = 0;
    quint64 previous = 0;
    quint64 position = 0;
    quint64 sizeBound = 0;
    quint32 checksum = 0; ///< stays 0 in the plain layout
    quint32 length = 0;
};

struct FreeRecord
{
    quint64 next = 0;
    quint64 previous = 0;
    quint64 regionOffset = 0;
    quint32 regionSize = 0;
};

/// A non-zero offset into the header, which no record can have.
constexpr bool pointsIntoHeader(quint64 offset) noexcept
{
    return offset - 1 <= HeaderSize - 2;
}

constexpr quint64 changeHeadSize(Layout layout) noexcept
{
    return layout == Layout::Checksummed ? 40 : 36;
}

/// The layout of a known version, nothing for an unknown one.
std::optional<Layout> layoutOf(const QUuid& version);

/// The header of a journal that protects nothing yet.
Header freshHeader();

// Each decoder reads exactly its record's size from `bytes`.
QUuid decodeVersion(const char* bytes);
Header decodeHeader(const char* bytes);
FileEntry decodeEntryHead(const char* bytes);
ChangeHead decodeChangeHead(const char* bytes, Layout layout);
FreeRecord decodeFreeRecord(const char* bytes);

QByteArray encodeHeader(const Header& header);
/// Entry head and name; the entry's name length is taken from @p name.
QByteArray encodeEntry(const FileEntry& entry, const QByteArray& name);
/// Writes the 40 bytes of a checksummed head to @p bytes.
void encodeChangeHead(const ChangeHead& head, char* bytes);
std::array<char, 8> encodeLink(quint64 offset);
std::array<char, 16> encodeLinks(quint64 first, quint64 last);

/// A stored name as text; nothing when it holds a zero byte or is not whole, valid UTF-8.
std::optional<QString> decodeName(const QByteArray& bytes);

/// The bytes to store for a name; nothing when they are too long or would not read back as the same name.
std::optional<QByteArray> encodeName(const QString& name);

/// The last link of a chain as it was found, and whether it was just being moved on to the chain's end when
/// the process died: some leading bytes new, the others of where it led before, none and all included.
class MovedLink
{
public:
    explicit MovedLink(quint64 found) noexcept
        : m_found(found)
    {}

    /// The chain has this member, or 0 before the first: there the link may have led.
    void passes(quint64 member) noexcept;
    /// True when the link may have been on its way to @p last.
    [[nodiscard]] bool mayLeadTo(quint64 last) const noexcept;

private:
    quint64 m_found;
    int m_newBytes = 8; ///< as many must have arrived, at least
};

} // namespace veltor::utils::journal
