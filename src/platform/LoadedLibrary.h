#pragma once

namespace veltor::platform {

/// A library or program of this process, held for good once it was found; null when there is none.
class LoadedLibrary
{
public:
    /// The one that defines @p symbol; where several do, the first for which @p accepts(its address) holds,
    /// what the process itself would be bound to first. Loads nothing. Thread-safe.
    static LoadedLibrary defining(const char* symbol, bool (*accepts)(void* address));

    /// The address of another of its symbols; null when it has none of that name.
    [[nodiscard]] void* symbol(const char* name) const noexcept;

    explicit operator bool() const noexcept { return m_handle != nullptr; }

private:
    explicit LoadedLibrary(void* handle) noexcept
        : m_handle(handle)
    {}

    void* m_handle;
};

} // namespace veltor::platform
