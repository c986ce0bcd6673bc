// Deletes trees: depth first, in whatever order the names come, so that nothing is kept in memory.
#include "utils/files/TreeRemover.h"

#include "utils/files/NativeText.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

namespace veltor::utils {

using platform::Directory;
using platform::FileKind;
using platform::FileStatus;
using platform::Links;
using platform::NativeString;

namespace {

constexpr int NamesPerCall = 100;
constexpr std::size_t FailuresKept = 100;
// Others may add names as fast as they are removed; some file systems forget names when others go.
constexpr int LongestPasses = 10;

} // namespace

void TreeRemover::fail(const QString& path, const QString& reason)
{
    ++m_report.failed;
    if (m_report.failures.size() < FailuresKept) {
        m_report.failures.push_back({path, reason});
    }
}

void TreeRemover::failHere(const QString& reason)
{
    m_levels[static_cast<std::size_t>(m_cursor->depth()) - 1].keeps = true;
    fail(m_shown + QLatin1Char('/') + fromNative(m_cursor->path()), reason);
}

bool TreeRemover::goesOn()
{
    if (m_progress && ++m_untold >= NamesPerCall) {
        m_untold = 0;
        m_report.canceled = !m_progress(m_report);
    }
    return !m_report.canceled;
}

void TreeRemover::takeEntry()
{
    const NativeString& name = m_cursor->name().text;
    if (m_cursor->name().kind == FileKind::Folder) {
        takeFolder(false);
        return;
    }
    const std::error_code error = m_cursor->folder().removeFile(name);
    FileStatus status;
    if (!error) {
        ++m_report.removed;
    } else if (platform::isFolder(error) && !m_cursor->folder().statusOf(name, Links::Refuse, status) &&
               status.kind == FileKind::Folder) {
        takeFolder(false);
    } else if (!platform::isGone(error)) {
        failHere(reasonText(error));
    }
}

void TreeRemover::takeFolder(bool again, int attempt)
{
    const NativeString name = m_cursor->name().text;
    switch (m_cursor->descend()) {
    case TreeCursor::Descent::Done:
        if (!again) {
            m_levels.resize(static_cast<std::size_t>(m_cursor->depth()) - 1);
            m_levels.emplace_back();
        }
        return;
    case TreeCursor::Descent::OtherMount:
        failHere(QCoreApplication::translate("TreeRemoval", "здесь подключена другая папка или другой диск"));
        return;
    case TreeCursor::Descent::Loop:
        return; // only where links are followed
    case TreeCursor::Descent::Failed:
        break;
    }
    const std::error_code error = m_cursor->error();
    if (platform::isGone(error)) {
        return;
    }
    // Replaced by something else meanwhile, or closed to us: an empty folder can be removed all the same.
    Directory& folder = m_cursor->folder();
    const std::error_code left =
        platform::isNoFolder(error) ? folder.removeFile(name) : folder.removeFolder(name);
    if (!left) {
        ++m_report.removed;
    } else if (platform::isNoFolder(error) && platform::isFolder(left) && attempt < LongestPasses) {
        takeFolder(again, attempt + 1); // and put back
    } else if (!platform::isGone(left)) {
        failHere(reasonText(error));
    }
}

void TreeRemover::takeLeft()
{
    const auto depth = static_cast<std::size_t>(m_cursor->depth());
    Level& left = m_levels[depth];
    if (!m_cursor->folder().isOpen()) {
        m_levels[depth - 1].keeps = true;
        return;
    }
    const std::error_code error = m_cursor->folder().removeFolder(m_cursor->name().text);
    if (!error) {
        ++m_report.removed;
    } else if (platform::isNotEmpty(error) && left.keeps) {
        m_levels[depth - 1].keeps = true; // its own entry in the report tells why
    } else if (platform::isNotEmpty(error) && ++left.passes < LongestPasses) {
        takeFolder(true);
    } else if (!platform::isGone(error)) {
        failHere(reasonText(error));
    }
}

bool TreeRemover::walk(const NativeString& keep)
{
    for (;;) {
        switch (m_cursor->next()) {
        case TreeCursor::Step::Entry:
            if (m_cursor->depth() > 1 || m_cursor->name().text != keep) {
                takeEntry();
            }
            break;
        case TreeCursor::Step::Left:
            takeLeft();
            break;
        case TreeCursor::Step::Failed:
            failHere(reasonText(m_cursor->error()));
            break;
        case TreeCursor::Step::End:
            return true;
        }
        if (!goesOn()) {
            return false;
        }
    }
}

bool TreeRemover::empty(Directory folder, const QString& shown, const NativeString& keep)
{
    TreeCursor::Rules rules;
    rules.grantRights = true;
    TreeCursor cursor(std::move(folder), rules);
    m_cursor = &cursor;
    m_shown = shown;
    m_levels.assign(1, Level());
    for (int pass = 0; pass < LongestPasses; ++pass) {
        const qint64 before = m_report.removed;
        if (!walk(keep)) {
            break;
        }
        if (m_levels.front().keeps || m_report.removed == before) {
            break;
        }
        cursor.restart();
    }
    m_cursor = nullptr;
    return !m_levels.front().keeps && !m_report.canceled;
}

void TreeRemover::remove(Directory& base, const NativeString& name, const QString& shown)
{
    std::error_code error;
    for (int pass = 0; pass < LongestPasses; ++pass) {
        Directory folder;
        FileStatus there;
        FileStatus opened;
        error = folder.openIn(base, name, Links::Refuse, true);
        if (!error && !base.status(there) && !folder.status(opened)) {
            if (!opened.isSameMount(there)) {
                fail(shown, QCoreApplication::translate("TreeRemoval",
                                                        "здесь подключена другая папка или другой диск"));
                return;
            }
            if (!empty(std::move(folder), shown)) {
                return;
            }
            error = base.removeFolder(name);
        } else if (platform::isNoFolder(error)) {
            error = base.removeFile(name);
        } else if (!base.removeFolder(name)) {
            error = {};
        }
        // Filled again, or replaced by something of the other kind, since it was looked at.
        if (!platform::isNotEmpty(error) && !platform::isNoFolder(error) && !platform::isFolder(error)) {
            break;
        }
    }
    if (!error) {
        ++m_report.removed;
    } else if (!platform::isGone(error)) {
        fail(shown, reasonText(error));
    }
}

RemovalReport removeTree(const QString& path, const RemovalProgress& progress)
{
    RemovalReport report;
    TreeRemover remover(report, progress);
    const QFileInfo info(path.endsWith(QLatin1Char('/')) ? path.chopped(1) : path);
    const QString name = info.fileName();
    Directory base;
    const std::error_code error = base.open(toNative(info.path()), Links::Follow);
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) {
        remover.fail(path, QCoreApplication::translate("TreeRemoval", "это не имя файла или папки"));
    } else if (!error) {
        // On its own, since toNative() makes paths.
        remover.remove(base, nativeName(name), path);
    } else if (!platform::isGone(error)) {
        remover.fail(path, reasonText(error));
    }
    return report;
}

} // namespace veltor::utils
