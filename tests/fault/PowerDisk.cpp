// What a disk may hold when the power goes.

#include "PowerDisk.h"

#include <optional>

namespace veltor::test {
namespace {

using Kind = DiskStep::Kind;

constexpr qint64 Sector = 512;

/// Decides what of the steps the disk has.
class Chance
{
public:
    Chance(const std::vector<DiskStep>& steps, std::size_t at, DiskOrder order, Barrier deaf,
           std::mt19937& random)
        : m_steps(steps)
        , m_at(at)
        , m_order(order)
        , m_random(random)
        , m_keep(below(5) * 25)
    {
        std::size_t named = 0;
        for (std::size_t i = 0; i < at; ++i) {
            const DiskStep& step = steps[i];
            if (step.barrier == Barrier::None || step.barrier == deaf) {
                continue;
            }
            step.kind == Kind::Sync ? m_synced[step.file] = i : m_syncedFolders[step.name] = i;
            named = i;
        }
        m_metadata = std::max<std::size_t>(named, below(at + 1));
        if (order == DiskOrder::SizesBefore) {
            m_metadata = at;
        }
    }

    /// Whether a size that this step set, or one later, is there.
    bool hasSize(std::size_t i)
    {
        const int file = m_steps[i].file;
        if (m_order != DiskOrder::None) {
            return i < std::max(m_metadata, synced(file));
        }
        return i < version(m_sizes[file], file);
    }
    bool hasSector(std::size_t i, qint64 sector)
    {
        const int file = m_steps[i].file;
        return i < version(m_sectors[{file, sector}], file);
    }
    bool hasName(std::size_t i)
    {
        const DiskStep& step = m_steps[i];
        const auto known = [&](const QString& name) {
            const auto found = m_syncedFolders.find(folderOf(name));
            return found != m_syncedFolders.end() && found->second > i;
        };
        if (known(step.name) && (step.kind != Kind::Move || known(step.target))) {
            return true;
        }
        return m_order != DiskOrder::None ? i < m_metadata : below(100) < m_keep;
    }

private:
    std::size_t below(std::size_t limit) { return m_random() % limit; }
    std::size_t synced(int file) const
    {
        const auto found = m_synced.find(file);
        return found == m_synced.end() ? 0 : found->second;
    }
    /// Up to which step something is that the disk writes whenever it likes.
    std::size_t version(std::optional<std::size_t>& drawn, int file)
    {
        if (!drawn) {
            const std::size_t from = synced(file);
            drawn = below(100) < m_keep ? m_at : from + (below(3) == 0 ? below(m_at - from + 1) : 0);
        }
        return *drawn;
    }

    const std::vector<DiskStep>& m_steps;
    std::size_t m_at;
    DiskOrder m_order;
    std::mt19937& m_random;
    std::size_t m_keep; // of a hundred
    std::size_t m_metadata = 0;
    std::map<int, std::size_t> m_synced;
    std::map<QString, std::size_t> m_syncedFolders;
    std::map<int, std::optional<std::size_t>> m_sizes;
    std::map<std::pair<int, qint64>, std::optional<std::size_t>> m_sectors;
};

void put(QByteArray& bytes, qint64 position, const QByteArray& piece)
{
    const qint64 end = position + piece.size();
    bytes.append(static_cast<int>(std::max<qint64>(end - bytes.size(), 0)), '\0');
    bytes.replace(static_cast<int>(position), piece.size(), piece);
}

/// The disk while the steps that it has are done to it.
class Replay
{
public:
    Replay(const DiskState& first, Chance& chance)
        : m_disk(first)
        , m_chance(chance)
    {
        for (const auto& [file, bytes] : m_disk.contents) {
            m_sizes[file] = bytes.size();
        }
    }

    void apply(const DiskStep& step, std::size_t i)
    {
        switch (step.kind) {
        case Kind::Write:
            write(step, i);
            [[fallthrough]];
        case Kind::Resize:
            if (m_chance.hasSize(i)) {
                m_sizes[step.file] = step.size;
                if (step.kind == Kind::Resize) {
                    m_disk.contents[step.file].truncate(static_cast<int>(step.size));
                }
            }
            break;
        case Kind::Sync:
        case Kind::SyncFolder:
            break;
        default:
            if (m_chance.hasName(i)) {
                name(step);
            }
        }
    }

    /// Folders have a slash at the end.
    Files files()
    {
        Files files;
        for (const auto& [name, file] : m_disk.names) {
            if (name.contains(QLatin1Char('/')) && m_disk.folders.count(folderOf(name)) == 0) {
                continue;
            }
            QByteArray& bytes = files[name] = m_disk.contents[file];
            const auto size = static_cast<int>(m_sizes[file]);
            bytes.append(std::max<base::Length>(size - bytes.size(), 0), '\0');
            bytes.truncate(size);
        }
        for (const QString& folder : m_disk.folders) {
            files[folder + u("/")] = {};
        }
        return files;
    }

private:
    void write(const DiskStep& step, std::size_t i)
    {
        for (qint64 from = 0; from < step.bytes.size();) {
            const qint64 sector = (step.position + from) / Sector;
            const qint64 length =
                std::min((sector + 1) * Sector - step.position, qint64(step.bytes.size())) - from;
            if (m_chance.hasSector(i, sector)) {
                put(m_disk.contents[step.file], step.position + from,
                    step.bytes.mid(static_cast<int>(from), static_cast<int>(length)));
            }
            from += length;
        }
    }

    void name(const DiskStep& step)
    {
        auto& names = m_disk.names;
        switch (step.kind) {
        case Kind::Create:
            names[step.name] = step.file;
            break;
        case Kind::Folder:
            m_disk.folders.insert(step.name);
            break;
        case Kind::Move:
            if (names.count(step.name) != 0) {
                names[step.target] = names[step.name];
                names.erase(step.name);
            }
            break;
        default:
            names.erase(step.name);
            m_disk.folders.erase(step.name);
        }
    }

    DiskState m_disk;
    Chance& m_chance;
    std::map<int, qint64> m_sizes;
};

} // namespace

Files PowerDisk::cut(std::size_t at, DiskOrder order, Barrier deaf, std::mt19937& random) const
{
    Chance chance(m_steps, at, order, deaf, random);
    Replay replay(m_first, chance);
    for (std::size_t i = 0; i < at; ++i) {
        replay.apply(m_steps[i], i);
    }
    return replay.files();
}

} // namespace veltor::test
