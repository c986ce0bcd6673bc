// The protected files, found by key, by name and by what they are.

#include "utils/storage/ProtectedFiles.h"

#include "utils/storage/io/DeviceIo.h"

namespace veltor::utils {

bool ProtectedFiles::add(StoredFile file, bool mayClose)
{
    const Key key = file.chain.entry;
    const auto [place, isNew] = m_files.try_emplace(key);
    if (!isNew) {
        return false;
    }
    if (file.device()) {
        if (const auto status = io::DeviceIo(*file.device()).status()) {
            file.identity = status->identity;
            m_identities.emplace(status->identity, key);
        }
    }
    if (file.device() && mayClose && ++m_keptOpen > MaxKeptOpen) {
        file.device() = nullIOPtr();
    }
    m_keys.insert(file.name(), key);
    place->second = std::move(file);
    return true;
}

/// The identity stays known: no more files are added after this.
ProtectedFiles::Map::iterator ProtectedFiles::forget(Map::iterator file)
{
    m_keys.remove(file->second.name());
    return m_files.erase(file);
}

void ProtectedFiles::clear() noexcept
{
    m_files.clear();
    m_keys.clear();
    m_identities.clear();
    m_keptOpen = 0;
}

StoredFile* ProtectedFiles::find(Key key)
{
    const auto found = m_files.find(key);
    return found != m_files.end() ? &found->second : nullptr;
}

const StoredFile* ProtectedFiles::find(Key key) const
{
    const auto found = m_files.find(key);
    return found != m_files.end() ? &found->second : nullptr;
}

ProtectedFiles::Key ProtectedFiles::keyOf(const QString& name) const
{
    return m_keys.value(name, 0);
}

ProtectedFiles::Key ProtectedFiles::keyOf(const std::optional<platform::FileIdentity>& identity) const
{
    const auto found = identity ? m_identities.find(*identity) : m_identities.end();
    return found != m_identities.end() ? found->second : 0;
}

} // namespace veltor::utils
