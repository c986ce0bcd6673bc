// The public walk through a tree: which of the cursor's steps are shown.
#include <veltor/utils/TreeWalker.h>

#include "utils/files/NativeText.h"
#include "utils/files/TreeCursor.h"

#include <QtCore/QRegularExpression>

#include <algorithm>
#include <optional>

namespace veltor::utils {

using platform::Directory;
using platform::FileKind;
using platform::FileStatus;
using platform::Links;
using platform::NativeString;

namespace {

constexpr qint64 NamesPerCall = 100;
constexpr std::size_t FailuresKept = 100;

QByteArray bytesOf(const NativeString& name)
{
#ifdef Q_OS_WIN
    return QString::fromStdWString(name).toUtf8();
#else
    return QByteArray::fromStdString(name);
#endif
}

TreeEntry::Kind shownKind(FileKind kind)
{
    switch (kind) {
    case FileKind::Folder:
        return TreeEntry::Folder;
    case FileKind::File:
        return TreeEntry::File;
    case FileKind::Link:
        return TreeEntry::Link;
    case FileKind::Unknown:
    case FileKind::Other:
        break;
    }
    return TreeEntry::Other;
}

} // namespace

struct TreeWalker::Private
{
    TreeRules rules;
    std::vector<QRegularExpression> patterns;
    std::optional<TreeCursor> cursor; // none when the root cannot be opened, and at the end
    TreeEntry entry;
    bool enters = false;      // the folder of the entry, at the next step
    std::vector<bool> linked; // by depth: the folder was reached through a link
    qint64 seen = 0;
    bool canceled = false;
    std::vector<TreeFailure> failures;
    qint64 failureCount = 0;

    void open(const QString& root);
    bool next();
    bool takeEntry();
    bool enter();
    bool takeLeft();
    bool isShown() const;
    void describe(FileKind kind, const FileStatus& status);
    void fail(const std::error_code& error);
};

void TreeWalker::Private::open(const QString& root)
{
    for (const QString& name : rules.names) {
        patterns.emplace_back(QRegularExpression::wildcardToRegularExpression(name),
                              QRegularExpression::DotMatchesEverythingOption |
                                  (rules.nameCase == Qt::CaseInsensitive
                                       ? QRegularExpression::CaseInsensitiveOption
                                       : QRegularExpression::NoPatternOption));
    }
    Directory folder;
    const std::error_code error = folder.open(toNative(root), Links::Follow);
    if (error) {
        fail(error);
        return;
    }
    TreeCursor::Rules walk;
    walk.followLinks = rules.followLinks;
    walk.crossMounts = rules.crossMounts;
    walk.sorted = rules.order == TreeRules::ByName;
    cursor.emplace(std::move(folder), walk);
    linked.assign(1, false);
}

void TreeWalker::Private::fail(const std::error_code& error)
{
    ++failureCount;
    if (failures.size() < FailuresKept) {
        failures.push_back({cursor ? fromNative(cursor->path()) : QString(), reasonText(error)});
    }
}

bool TreeWalker::Private::isShown() const
{
    if (!rules.kinds.testFlag(entry.kind) || entry.depth < rules.leastDepth ||
        entry.depth > rules.longestDepth) {
        return false;
    }
    return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), [this](const auto& pattern) {
               return pattern.match(entry.name).hasMatch();
           });
}

void TreeWalker::Private::describe(FileKind kind, const FileStatus& status)
{
    entry.name = fromNative(cursor->name().text);
    entry.path = fromNative(cursor->path());
    entry.bytes = bytesOf(cursor->path());
    entry.isText = isExactName(cursor->path());
    entry.kind = shownKind(kind);
    entry.depth = cursor->depth();
    entry.sizeBytes = rules.withStatus ? static_cast<qint64>(status.sizeBytes) : 0;
    entry.modifiedMs = rules.withStatus ? status.modifiedMs : 0;
}

/// Looks at a new name; true when it is to be shown now.
bool TreeWalker::Private::takeEntry()
{
    if (!rules.hidden && (cursor->name().hidden || cursor->name().text.front() == '.')) {
        return false;
    }
    FileKind kind = cursor->name().kind;
    const bool isLink = kind == FileKind::Link;
    FileStatus status;
    std::error_code error;
    if (isLink && rules.followLinks) {
        FileStatus target;
        if (!cursor->folder().statusOf(cursor->name().text, Links::Follow, target)) {
            kind = target.kind;
            status = target;
        } else {
            error = cursor->folder().statusOf(cursor->name().text, Links::Refuse, status);
        }
    } else if (rules.withStatus) {
        error = cursor->folder().statusOf(cursor->name().text, Links::Refuse, status);
    }
    if (error && platform::isGone(error)) {
        return false;
    }
    if (error) {
        fail(error);
    }
    describe(kind, status);
    entry.isLinked = isLink || linked[static_cast<std::size_t>(entry.depth) - 1];
    enters = kind == FileKind::Folder && entry.depth < rules.longestDepth;
    return isShown() && !(enters && rules.foldersLast);
}

/// A folder after what is in it; true when it is to be shown.
bool TreeWalker::Private::takeLeft()
{
    FileStatus status;
    if (rules.withStatus && cursor->folder().statusOf(cursor->name().text, Links::Follow, status)) {
        return false; // gone
    }
    describe(FileKind::Folder, status);
    entry.isLinked = linked[static_cast<std::size_t>(entry.depth)];
    return isShown();
}

/// Enters the folder of the entry; true when that cannot be, and it is still to be shown.
bool TreeWalker::Private::enter()
{
    enters = false;
    const auto depth = static_cast<std::size_t>(entry.depth);
    switch (cursor->descend()) {
    case TreeCursor::Descent::Done:
        linked.resize(depth + 1);
        linked[depth] = entry.isLinked;
        return false;
    case TreeCursor::Descent::Failed:
        if (!platform::isGone(cursor->error())) {
            fail(cursor->error());
        }
        break;
    case TreeCursor::Descent::OtherMount:
    case TreeCursor::Descent::Loop:
        break;
    }
    return rules.foldersLast && isShown();
}

bool TreeWalker::Private::next()
{
    while (cursor && !canceled) {
        if (enters && enter()) {
            return true;
        }
        switch (cursor->next()) {
        case TreeCursor::Step::Entry:
            ++seen;
            if (rules.progress && seen % NamesPerCall == 0 && !rules.progress(seen)) {
                canceled = true;
                return false;
            }
            if (takeEntry()) {
                return true;
            }
            break;
        case TreeCursor::Step::Left:
            if (rules.foldersLast && takeLeft()) {
                return true;
            }
            break;
        case TreeCursor::Step::Failed:
            fail(cursor->error());
            break;
        case TreeCursor::Step::End:
            cursor.reset();
            break;
        }
    }
    return false;
}

TreeWalker::TreeWalker(const QString& root, TreeRules rules)
    : m_d(std::make_unique<Private>())
{
    m_d->rules = std::move(rules);
    m_d->open(root);
}

TreeWalker::~TreeWalker() = default;
TreeWalker::TreeWalker(TreeWalker&& other) noexcept = default;
TreeWalker& TreeWalker::operator=(TreeWalker&& other) noexcept = default;

bool TreeWalker::next()
{
    return m_d->next();
}

const TreeEntry& TreeWalker::entry() const
{
    return m_d->entry;
}

void TreeWalker::skipFolder()
{
    m_d->enters = false;
}

bool TreeWalker::isCanceled() const
{
    return m_d->canceled;
}

const std::vector<TreeFailure>& TreeWalker::failures() const
{
    return m_d->failures;
}

qint64 TreeWalker::failureCount() const
{
    return m_d->failureCount;
}

} // namespace veltor::utils
