// The bytes of a transaction's manifest, and what its records make of the names.

#include "utils/storage/journal/Manifest.h"

#include "utils/storage/journal/Crc32c.h"
#include "utils/storage/journal/JournalFormat.h"

#include <QtCore/QStringList>
#include <QtCore/QtEndian>

#include <algorithm>
#include <utility>

namespace veltor::utils::journal {
namespace {

// A record: checksum of what follows it (4), kind (1), zero (1), lengths of the two names (2, 2), the two
// numbers (4, 4), the names. All little-endian.
constexpr int KindAt = 4;
constexpr int LengthsAt = 6;
constexpr int NumbersAt = 10;
constexpr int RecordHeadSize = 18;

/// {c1f0a2d6-5b0e-4f7a-9d43-6a8e0f21b7c4}, as a journal's version is stored.
constexpr char Head[] = "\xd6\xa2\xf0\xc1\x0e\x5b\x7a\x4f\x9d\x43\x6a\x8e\x0f\x21\xb7\xc4";
constexpr int HeadSize = sizeof(Head) - 1;

quint32 checksumOf(const char* record, qsizetype size)
{
    return crc32c(0, record + KindAt, static_cast<std::size_t>(size - KindAt));
}

bool isPart(const QString& part)
{
    return !part.isEmpty() && part != QLatin1String(".") && part != QLatin1String("..");
}

/// Reads one record after the other.
class Reader
{
public:
    explicit Reader(const QByteArray& bytes)
        : m_bytes(bytes)
        , m_at(HeadSize)
    {}

    [[nodiscard]] bool atEnd() const { return m_at == m_bytes.size(); }
    [[nodiscard]] int at() const { return m_at; }

    std::optional<NameRecord> next()
    {
        if (m_bytes.size() - m_at < RecordHeadSize) {
            return std::nullopt;
        }
        const char* const at = m_bytes.constData() + m_at;
        const int nameLength = qFromLittleEndian<quint16>(at + LengthsAt);
        const int targetLength = qFromLittleEndian<quint16>(at + LengthsAt + 2);
        const int size = RecordHeadSize + nameLength + targetLength;
        if (m_bytes.size() - m_at < size || qFromLittleEndian<quint32>(at) != checksumOf(at, size)) {
            return std::nullopt;
        }
        const auto kind = static_cast<quint8>(at[KindAt]);
        const auto name = decodeName(QByteArray(at + RecordHeadSize, nameLength));
        const auto target = decodeName(QByteArray(at + RecordHeadSize + nameLength, targetLength));
        if (kind < 1 || kind > static_cast<quint8>(NameRecord::Kind::Moved) || at[KindAt + 1] != 0 || !name ||
            !target) {
            return std::nullopt;
        }
        m_at += size;
        return NameRecord{static_cast<NameRecord::Kind>(kind), qFromLittleEndian<quint32>(at + NumbersAt),
                          qFromLittleEndian<quint32>(at + NumbersAt + 4), *name, *target};
    }

private:
    const QByteArray& m_bytes;
    int m_at;
};

} // namespace

bool isNameBeneath(const QString& name)
{
#ifdef Q_OS_WIN
    if (name.contains(QLatin1Char('\\')) || name.contains(QLatin1Char(':'))) {
        return false;
    }
#endif
    if (!encodeName(name)) {
        return false;
    }
    const QStringList parts = name.split(QLatin1Char('/'));
    return std::all_of(parts.begin(), parts.end(), &isPart);
}

QByteArray manifestHead()
{
    return {Head, HeadSize};
}

QByteArray encodeRecord(const NameRecord& record)
{
    const QByteArray name = record.name.toUtf8();
    const QByteArray target = record.target.toUtf8();
    QByteArray bytes(RecordHeadSize, '\0');
    bytes[KindAt] = static_cast<char>(record.kind);
    qToLittleEndian(static_cast<quint16>(name.size()), bytes.data() + LengthsAt);
    qToLittleEndian(static_cast<quint16>(target.size()), bytes.data() + LengthsAt + 2);
    qToLittleEndian(record.number, bytes.data() + NumbersAt);
    qToLittleEndian(record.replaced, bytes.data() + NumbersAt + 4);
    bytes += name + target;
    qToLittleEndian(checksumOf(bytes.constData(), bytes.size()), bytes.data());
    return bytes;
}

NameMap::Found NameMap::find(const QString& name) const
{
    const auto found = m_names.find(name);
    if (found == m_names.end()) {
        return {};
    }
    if (!found->second) {
        return {Meaning::Nothing, {}};
    }
    const File& file = m_files[*found->second];
    return {Meaning::File, file.original.isEmpty() ? Place{file.hidden, {}} : Place{0, file.original}};
}

bool NameMap::canTake(const NameRecord& record) const
{
    // A file met for the first time brings the number of its hidden place, every other has one.
    const auto fits = [this](Meaning meaning, quint32 number) {
        return meaning == Meaning::Untouched ? isFree(number) : number == 0;
    };
    const Meaning name = find(record.name).meaning;
    switch (record.kind) {
    case NameRecord::Kind::Create:
        return name != Meaning::File && isFree(record.number) && isNameBeneath(record.name);
    case NameRecord::Kind::Remove:
        return name != Meaning::Nothing && fits(name, record.number) && isNameBeneath(record.name);
    case NameRecord::Kind::Rename: {
        const Meaning target = find(record.target).meaning;
        const bool replaces = target == Meaning::Untouched && record.replaced != 0;
        return record.name != record.target && name != Meaning::Nothing && fits(name, record.number) &&
               (record.replaced == 0 || (replaces && isFree(record.replaced))) &&
               (record.replaced == 0 || record.replaced != record.number) && isNameBeneath(record.name) &&
               isNameBeneath(record.target);
    }
    default:
        return false;
    }
}

std::size_t NameMap::add(File file)
{
    m_hidden.insert(file.hidden);
    m_files.push_back(std::move(file));
    return m_files.size() - 1;
}

/// Takes the name from its file, which is then without one.
std::size_t NameMap::take(const QString& name, quint32 hidden)
{
    std::optional<std::size_t>& meaning = m_names[name];
    const std::size_t index = meaning ? *meaning : add({name, hidden, {}});
    m_files[index].target.clear();
    meaning.reset();
    return index;
}

bool NameMap::apply(const NameRecord& record)
{
    if (!canTake(record)) {
        return false;
    }
    if (record.kind == NameRecord::Kind::Create) {
        m_names[record.name] = add({{}, record.number, record.name});
        return true;
    }
    const std::size_t file = take(record.name, record.number);
    if (record.kind == NameRecord::Kind::Rename) {
        if (record.replaced != 0 || find(record.target).meaning == Meaning::File) {
            take(record.target, record.replaced);
        }
        m_files[file].target = record.target;
        m_names[record.target] = file;
    }
    return true;
}

NameMap::Plan NameMap::plan() const
{
    Plan plan;
    std::set<QString> replaced;
    for (const File& file : m_files) {
        const bool namesake = find(file.original).meaning == Meaning::File;
        const bool keeps = file.original.isEmpty() || file.target == file.original;
        // Aside go the files that give their name to another one, lest that overwrites them, and those that
        // are removed, unless overwriting them is all that is wanted.
        if (!keeps && namesake == !file.target.isEmpty()) {
            plan.aside.emplace_back(file.original, file.hidden);
        } else if (!keeps && namesake) {
            replaced.insert(file.original);
        }
        if (!file.target.isEmpty() && file.target != file.original) {
            const bool hidden = file.original.isEmpty() || namesake;
            plan.moves.push_back({hidden ? Place{file.hidden, {}} : Place{0, file.original}, file.target});
        }
    }
    for (Move& move : plan.moves) {
        move.replaces = replaced.count(move.to) != 0;
    }
    return plan;
}

std::optional<Manifest> Manifest::parse(const QByteArray& bytes)
{
    Manifest manifest;
    if (bytes.isEmpty()) {
        return manifest;
    }
    if (!bytes.startsWith(manifestHead())) {
        return std::nullopt;
    }
    for (Reader reader(bytes); !reader.atEnd();) {
        const std::optional<NameRecord> record = reader.next();
        if (manifest.sealed) {
            manifest.moved = record && record->kind == NameRecord::Kind::Moved;
            break;
        }
        if (!record) {
            return std::nullopt;
        }
        if (record->kind == NameRecord::Kind::Sealed) {
            manifest.sealed = true;
            if (record->number != manifest.records.size()) {
                return std::nullopt;
            }
        } else if (manifest.names.apply(*record)) {
            manifest.records.push_back(*record);
        } else {
            return std::nullopt;
        }
        manifest.size = reader.at();
    }
    return manifest;
}

} // namespace veltor::utils::journal
