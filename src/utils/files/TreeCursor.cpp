// The walk through a tree on which searching and deleting stand.
#include "utils/files/TreeCursor.h"

#include <algorithm>
#include <utility>

namespace veltor::utils {

using platform::Directory;
using platform::FileKind;
using platform::FileStatus;
using platform::Links;
using platform::NativeString;

namespace {

constexpr std::size_t OpenLevels = 32;
constexpr NativeString::value_type Separator = '/';

} // namespace

TreeCursor::TreeCursor(Directory root, Rules rules)
    : m_rules(rules)
{
    FileStatus status;
    m_error = root.status(status);
    enter(std::move(root), status);
    m_levels.back().error = m_error;
    m_levels.back().ended = static_cast<bool>(m_error);
}

void TreeCursor::setPath(std::size_t length, const NativeString& name)
{
    m_path.resize(length);
    if (length != 0) {
        m_path += Separator;
    }
    m_path += name;
}

void TreeCursor::enter(Directory folder, const FileStatus& status)
{
    Level level;
    level.folder = std::move(folder);
    level.status = status;
    level.name = m_name.text;
    level.pathLength = m_path.size();
    if (m_rules.sorted) {
        list(level);
        std::sort(level.names.begin(), level.names.end(),
                  [](const Directory::Name& a, const Directory::Name& b) { return a.text > b.text; });
    }
    m_levels.push_back(std::move(level));
    closeUpperLevels();
}

void TreeCursor::list(Level& level)
{
    if (level.listed) {
        return;
    }
    Directory::Name name;
    while (level.folder.next(name, level.error)) {
        level.names.push_back(std::move(name));
    }
    level.listed = true;
}

void TreeCursor::closeUpperLevels()
{
    while (m_levels.size() - 1 - m_closed > OpenLevels) {
        Level& level = m_levels[++m_closed];
        list(level);
        level.folder.close();
    }
}

/// Sets the next name of a level.
bool TreeCursor::fetch(Level& level)
{
    if (level.ended) {
        return false;
    }
    if (!level.listed) {
        if (level.folder.next(m_name, level.error)) {
            return true;
        }
    } else if (!level.names.empty()) {
        m_name = std::move(level.names.back());
        level.names.pop_back();
        return true;
    }
    level.ended = true;
    return false;
}

TreeCursor::Step TreeCursor::next()
{
    Level& level = m_levels.back();
    if (fetch(level)) {
        setPath(level.pathLength, m_name.text);
        FileStatus status;
        if (m_name.kind == FileKind::Unknown && !level.folder.statusOf(m_name.text, Links::Refuse, status)) {
            m_name.kind = status.kind;
        }
        return Step::Entry;
    }
    m_path.resize(level.pathLength);
    if (level.error) {
        m_error = std::exchange(level.error, {});
        m_name = {level.name, FileKind::Folder};
        return Step::Failed;
    }
    return m_levels.size() == 1 ? Step::End : leave();
}

TreeCursor::Step TreeCursor::leave()
{
    Level left = std::move(m_levels.back());
    m_levels.pop_back();
    m_name = {std::move(left.name), FileKind::Folder};
    const std::size_t above = m_levels.size() - 1;
    if (above == 0 || m_closed < above) {
        return Step::Left;
    }
    m_closed = above - 1;
    Level& level = m_levels.back();
    m_error = reopen(above, left.folder);
    if (!m_error) {
        return Step::Left;
    }
    // It was moved away: what it holds is no longer of this tree.
    level.ended = true;
    level.names.clear();
    m_path.resize(level.pathLength);
    m_name = {level.name, FileKind::Folder};
    return Step::Failed;
}

std::error_code TreeCursor::reopen(std::size_t index, const Directory& child)
{
    Level& level = m_levels[index];
    FileStatus status;
    Directory folder;
    if (child.isOpen() && !folder.openAbove(child) && !folder.status(status) &&
        status.isSameFile(level.status)) {
        level.folder = std::move(folder);
        return {};
    }
    // The way down from the root, as it was come.
    const Links links = m_rules.followLinks ? Links::Follow : Links::Refuse;
    const Directory* parent = &m_levels.front().folder;
    for (std::size_t i = 1; i <= index; ++i) {
        Directory next;
        if (const std::error_code error = next.openIn(*parent, m_levels[i].name, links)) {
            return error;
        }
        folder = std::move(next);
        parent = &folder;
    }
    if (const std::error_code error = folder.status(status)) {
        return error;
    }
    if (!status.isSameFile(level.status)) {
        return std::make_error_code(std::errc::no_such_file_or_directory);
    }
    level.folder = std::move(folder);
    return {};
}

TreeCursor::Descent TreeCursor::checkEntry(const FileStatus& status)
{
    if (!m_rules.crossMounts && !status.isSameMount(m_levels.front().status)) {
        return Descent::OtherMount;
    }
    if (m_rules.followLinks) {
        const bool inside = std::any_of(m_levels.begin(), m_levels.end(),
                                        [&](const Level& level) { return level.status.isSameFile(status); });
        if (inside ||
            (m_name.kind == FileKind::Link && !m_linkTargets.insert({status.volume, status.number}).second)) {
            return Descent::Loop;
        }
    }
    return Descent::Done;
}

TreeCursor::Descent TreeCursor::descend()
{
    Directory entered;
    FileStatus status;
    m_error = entered.openIn(folder(), m_name.text, m_rules.followLinks ? Links::Follow : Links::Refuse,
                             m_rules.grantRights);
    if (!m_error) {
        m_error = entered.status(status);
    }
    if (m_error) {
        return Descent::Failed;
    }
    const Descent descent = checkEntry(status);
    if (descent == Descent::Done) {
        enter(std::move(entered), status);
    }
    return descent;
}

void TreeCursor::restart()
{
    Level& root = m_levels.front();
    root.folder.rewind();
    root.listed = root.ended = false;
    root.names.clear();
    m_path.clear();
}

} // namespace veltor::utils
