#pragma once

#include "platform/Directory.h"

#include <set>
#include <system_error>
#include <vector>

namespace veltor::utils {

/// A walk through a folder and all below it, a step at a time, by open folders and single names: what is
/// renamed or replaced on the way meanwhile cannot lead it out of the tree.
///
/// Memory: one level for each folder on the way, with its stream of names. Beyond some levels the upper ones
/// are closed, and hold the names not yet seen; sorted, every level holds its names. The number of open
/// descriptors is bounded.
class TreeCursor
{
public:
    struct Rules
    {
        bool followLinks = false; ///< links to folders are folders; each target is entered once
        bool crossMounts = false;
        bool sorted = false;      ///< by the code units of the names
        bool grantRights = false; ///< the own user's folders are made accessible
    };
    enum class Step
    {
        Entry,  ///< the next name; descend() may be called
        Left,   ///< all of a folder that was entered was seen; its name stands for it again
        Failed, ///< a folder could not be read to its end, see error(); name() and path() are its own
        End,
    };
    enum class Descent
    {
        Done,
        OtherMount,
        Loop,   ///< a link to a folder that the walk is in, or that another link led to
        Failed, ///< see error()
    };

    TreeCursor(platform::Directory root, Rules rules);

    Step next();
    /// Enters the folder that the last step was about: an entry, or one that was left.
    Descent descend();
    /// At the end: once more from the start.
    void restart();

    /// The folder that holds the entry.
    [[nodiscard]] platform::Directory& folder() { return m_levels.back().folder; }
    [[nodiscard]] const platform::Directory::Name& name() const { return m_name; }
    /// From the root, separated by '/'.
    [[nodiscard]] const platform::NativeString& path() const { return m_path; }
    /// 1 for the entries of the root.
    [[nodiscard]] int depth() const { return static_cast<int>(m_levels.size()); }
    [[nodiscard]] const std::error_code& error() const { return m_error; }

private:
    struct Level
    {
        platform::Directory folder;
        platform::FileStatus status;
        platform::NativeString name;
        std::size_t pathLength = 0; // of the folder's own path
        bool listed = false;        // the names are in the vector, and the folder gives no more
        bool ended = false;
        std::vector<platform::Directory::Name> names; // the next one last
        std::error_code error;                        // of the listing, told after the names
    };

    bool fetch(Level& level);
    void list(Level& level);
    Step leave();
    Descent checkEntry(const platform::FileStatus& status);
    void enter(platform::Directory folder, const platform::FileStatus& status);
    std::error_code reopen(std::size_t level, const platform::Directory& child);
    void setPath(std::size_t length, const platform::NativeString& name);
    void closeUpperLevels();

    Rules m_rules;
    std::vector<Level> m_levels;
    std::size_t m_closed = 0; // levels 1 to this are closed; the root never is
    platform::Directory::Name m_name;
    platform::NativeString m_path;
    std::error_code m_error;
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_linkTargets; // when links are followed
};

} // namespace veltor::utils
