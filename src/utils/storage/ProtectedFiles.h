#pragma once

#include "platform/FileIo.h"
#include "utils/storage/journal/FileChain.h"

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QHash>

#include <map>
#include <optional>

namespace veltor::utils {

/// One protected file: its chain in the journal, and what callers see of it, which holds the open device. No
/// device: closed to spare a descriptor, to be opened again when needed.
struct StoredFile
{
    journal::FileChain chain;
    RollbackFileInfo info;
    std::optional<platform::FileIdentity> identity;

    StoredFile() = default;
    StoredFile(journal::FileChain journalChain, const QString& name, IOPtr device)
        : chain(std::move(journalChain))
    {
        info.name = name;
        info.device = std::move(device);
        mirror();
    }

    [[nodiscard]] const QString& name() const noexcept { return info.name; }
    [[nodiscard]] IOPtr& device() noexcept { return info.device; }
    [[nodiscard]] const IOPtr& device() const noexcept { return info.device; }

    /// Lets callers see the chain as it is now.
    void mirror() noexcept
    {
        info.nextFile = chain.nextFile;
        info.firstChange = chain.firstChange;
        info.lastChange = chain.lastChange;
        info.fileSize = chain.fileSize;
        info.blockCount = chain.blockCount;
        info.savedBytes = chain.savedBytes;
    }

    /// Whether @p other is the same file, as far as that can be told.
    [[nodiscard]] bool isSameAs(const std::optional<platform::FileIdentity>& other) const
    {
        return !identity || identity == other;
    }
};

/// The protected files of one journal, by key: so in the order in which they were added.
class ProtectedFiles
{
public:
    using Key = RollbackDevice::Key;
    using Map = std::map<Key, StoredFile>;

    /// Files that a journal which was read back keeps open at once.
    static constexpr std::size_t MaxKeptOpen = 16;

    /// Takes a file in, and keeps it open if @p mayClose is false or few are. False, and nothing taken, when
    /// the key is known already.
    bool add(StoredFile file, bool mayClose);

    Map::iterator forget(Map::iterator file);
    void clear() noexcept;

    [[nodiscard]] StoredFile* find(Key key);
    [[nodiscard]] const StoredFile* find(Key key) const;
    /// The key of a name, 0 when unknown.
    [[nodiscard]] Key keyOf(const QString& name) const;
    /// The key of a file by what it is, 0 when unknown.
    [[nodiscard]] Key keyOf(const std::optional<platform::FileIdentity>& identity) const;

    [[nodiscard]] Map& all() noexcept { return m_files; }
    [[nodiscard]] const Map& all() const noexcept { return m_files; }
    [[nodiscard]] bool isEmpty() const noexcept { return m_files.empty(); }

private:
    Map m_files;
    QHash<QString, Key> m_keys; // by stored name
    std::map<platform::FileIdentity, Key> m_identities;
    std::size_t m_keptOpen = 0; // of those that may be closed
};

} // namespace veltor::utils
