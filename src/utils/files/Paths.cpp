// Relative, common and resolved paths, and what is said of a file that does not open.
#include <veltor/utils/Paths.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace veltor::utils {
namespace {

#ifdef Q_OS_WIN
constexpr Qt::CaseSensitivity NameCase = Qt::CaseInsensitive;
#else
constexpr Qt::CaseSensitivity NameCase = Qt::CaseSensitive;
#endif

constexpr int LongestLinks = 40; // as the system has it

QString join(const QString& folder, const QString& name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

/// A path's root and the names on the way. On Windows the root is the drive or the share.
QStringList parts(const QString& path)
{
    int root = 1;
#ifdef Q_OS_WIN
    if (path.startsWith(QLatin1String("//"))) {
        const int share = path.indexOf(QLatin1Char('/'), 2);
        const int end = share < 0 ? -1 : path.indexOf(QLatin1Char('/'), share + 1);
        root = end < 0 ? path.size() : end;
    } else {
        root = path.mid(1, 1) == QLatin1String(":") ? std::min(3, path.size()) : 1;
    }
#endif
    return QStringList(path.left(root)) + path.mid(root).split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

int commonParts(const QStringList& a, const QStringList& b)
{
    const auto most = static_cast<int>(std::min(a.size(), b.size()));
    int count = 0;
    while (count < most && a[count].compare(b[count], NameCase) == 0) {
        ++count;
    }
    return count;
}

QString joined(const QStringList& parts)
{
    QString path = parts.front();
    for (int i = 1; i < parts.size(); ++i) {
        path = join(path, parts[i]);
    }
    return path;
}

} // namespace

QString typedFilePath(const QDir& folder, const QString& path, PathType type)
{
    if (type == PathType::Canonical) {
        return QFileInfo(path).canonicalFilePath();
    }
    const QString relative = folder.relativeFilePath(path);
    const bool outside = relative.contains(QLatin1String(".."));
    return type != PathType::Relative && outside ? QFileInfo(path).canonicalFilePath() : relative;
}

QString pathOpenError(const QString& text, const QString& path, const QString& error)
{
    return text.arg(path, error.isEmpty() ? error : QLatin1String(": ") + error);
}

QString resolvedPath(const QString& path)
{
    // Not QFileInfo::absoluteFilePath() of the whole: it takes "link/.." for nothing.
    QStringList ahead =
        parts(QDir::isAbsolutePath(path) ? QDir::fromNativeSeparators(path)
                                         : join(QDir::currentPath(), QDir::fromNativeSeparators(path)));
    QStringList way(ahead.takeFirst());
    int links = 0;
    while (!ahead.isEmpty()) {
        const QString name = ahead.takeFirst();
        if (name == QLatin1String("..")) {
            if (way.size() > 1) {
                way.removeLast();
            }
            continue;
        }
        if (name == QLatin1String(".")) {
            continue;
        }
        way << name;
        const QFileInfo info(joined(way));
        // Not isSymLink(), which takes a shortcut file of Windows for a link too.
        if ((info.isSymbolicLink() || info.isJunction()) && links < LongestLinks) {
            ++links;
            way.removeLast();
            const QStringList next = parts(info.symLinkTarget());
            way = QStringList(next.front());
            ahead = next.mid(1) + ahead;
        }
    }
    return joined(way);
}

std::optional<QString> relativePath(const QString& folder, const QString& path)
{
    const QStringList from = parts(resolvedPath(folder));
    const QFileInfo info(path.endsWith(QLatin1Char('/')) ? path.chopped(1) : path);
    const QString name = info.fileName();
    const bool named = !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
    const QStringList to = parts(named ? join(resolvedPath(info.path()), name) : resolvedPath(path));
    const int common = commonParts(from, to);
    if (common == 0) {
        return std::nullopt;
    }
    QStringList way;
    for (int i = common; i < from.size(); ++i) {
        way << QStringLiteral("..");
    }
    way += to.mid(common);
    return way.isEmpty() ? QStringLiteral(".") : way.join(QLatin1Char('/'));
}

QString commonPath(const QStringList& paths)
{
    QStringList common;
    for (int i = 0; i < paths.size(); ++i) {
        const QStringList one = parts(resolvedPath(paths[i]));
        common = i == 0 ? one : QStringList(common.mid(0, commonParts(common, one)));
    }
    return common.isEmpty() ? QString() : joined(common);
}

} // namespace veltor::utils
