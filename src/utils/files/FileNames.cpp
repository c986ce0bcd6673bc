// Suffixes and safe names.
#include <veltor/utils/FileNames.h>

#include "base/QtDifferences.h"
#include "platform/FileRules.h"
#include "utils/files/NativeText.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>

namespace veltor::utils {
namespace {

constexpr int LeastBytes = 20; // its half is enough for the longest device's name with a mark behind it

base::Length nameBegin(const QString& path)
{
#ifdef Q_OS_WIN
    const base::Length drive = path.size() > 1 && path[1] == QLatin1Char(':') ? 1 : -1;
    return 1 + std::max({path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')), drive});
#else
    return 1 + path.lastIndexOf(QLatin1Char('/'));
#endif
}

bool isOneOf(const QString& word, std::initializer_list<const char*> words)
{
    return std::any_of(words.begin(), words.end(), [&word](const char* one) {
        return word.compare(QLatin1String(one), Qt::CaseInsensitive) == 0;
    });
}

/// Whether two parts are one suffix.
bool belongTogether(const QString& inner, const QString& outer)
{
    if (isOneOf(outer, {"gz", "bz2", "xz", "zst", "lz4", "lzma", "lz", "br", "z"})) {
        constexpr int longestSuffix = 8;
        return inner.size() <= longestSuffix && inner[0].isLetter() &&
               std::all_of(inner.begin(), inner.end(), [](QChar c) { return c.isLetterOrNumber(); });
    }
    return (isOneOf(outer, {"xml"}) && isOneOf(inner, {"aux", "shp", "tif", "tiff", "img", "jp2", "gdb"})) ||
           (isOneOf(outer, {"ovr", "msk"}) && isOneOf(inner, {"tif", "tiff", "img", "jp2"}));
}

/// Where the dot of the suffix stands; the path's length when there is none.
base::Length suffixDot(const QString& path)
{
    const base::Length begin = nameBegin(path);
    const base::Length dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot <= begin || dot == path.size() - 1 ||
        path.mid(begin, dot - begin).count(QLatin1Char('.')) == dot - begin) {
        return path.size();
    }
    const base::Length before = path.lastIndexOf(QLatin1Char('.'), dot - 1);
    if (before > begin && before < dot - 1 &&
        belongTogether(path.mid(before + 1, dot - before - 1), path.mid(dot + 1))) {
        return before;
    }
    return dot;
}

QString dotted(const QString& suffix)
{
    return suffix.isEmpty() || suffix.startsWith(QLatin1Char('.')) ? suffix : QLatin1Char('.') + suffix;
}

bool isForbidden(uint c)
{
    if (c < 0x20 || (c >= 0x7F && c < 0xA0)) {
        return true;
    }
    if (c < 0x80) {
        return QLatin1String("<>:\"/\\|?*").contains(QLatin1Char(static_cast<char>(c)));
    }
    // Directions of writing, line ends, marks without a picture, and what is no character at all.
    return c == 0x061C || c == 0x200B || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
           (c >= 0xD800 && c < 0xE000) || (c & 0xFFFE) == 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF);
}

QString withoutForbidden(const QString& text, QChar replacement)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const uint c = pair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        if (isForbidden(c)) {
            result += replacement;
        } else {
            result += text.mid(i, pair ? 2 : 1);
        }
        i += pair ? 1 : 0;
    }
    return result;
}

/// Blanks around a name, and dots at its end.
QString trimmedName(const QString& name)
{
    base::Length begin = 0;
    base::Length end = name.size();
    while (end > 0 && (name[end - 1].isSpace() || name[end - 1] == QLatin1Char('.'))) {
        --end;
    }
    while (begin < end && name[begin].isSpace()) {
        ++begin;
    }
    return name.mid(begin, end - begin);
}

/// A mark behind the word that is kept for a device.
QString notReserved(const QString& name, QChar mark)
{
    if (!isReservedFileName(name)) {
        return name;
    }
    const base::Length dot = name.indexOf(QLatin1Char('.'));
    const base::Length stem = dot < 0 ? name.size() : dot;
    return name.left(stem).trimmed() + mark + name.mid(stem);
}

/// The longest beginning of at most so many bytes.
QString cut(const QString& text, base::Length bytes)
{
    int size = 0;
    int end = 0;
    for (const uint c : text.toUcs4()) {
        size += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        if (size > bytes) {
            break;
        }
        end += c < 0x10000 ? 1 : 2;
    }
    return text.left(end);
}

} // namespace

QString dottedFileSuffix(const QString& path)
{
    return path.mid(suffixDot(path));
}

QString fileSuffix(const QString& path)
{
    return path.mid(suffixDot(path) + 1);
}

QString withoutFileSuffix(const QString& path)
{
    return path.left(suffixDot(path));
}

QString withFileSuffix(const QString& path, const QString& suffix)
{
    return withoutFileSuffix(path) + dotted(suffix);
}

QString addedFileSuffix(const QString& path, const QString& suffix, Qt::CaseSensitivity cases)
{
    return hasFileSuffix(path, suffix, cases) ? path : path + dotted(suffix);
}

bool hasFileSuffix(const QString& path, const QString& suffix, Qt::CaseSensitivity cases)
{
    const QString end = dotted(suffix);
    return end.size() > 1 && path.size() - nameBegin(path) > end.size() && path.endsWith(end, cases);
}

Qt::CaseSensitivity fileNameCase(const QString& folder)
{
    QFileInfo info(folder.isEmpty() ? QStringLiteral(".") : folder);
    while (!info.isDir() && !info.isRoot() && info.absolutePath() != info.absoluteFilePath()) {
        info.setFile(info.absolutePath());
    }
    return platform::comparesCase(toNative(info.absoluteFilePath())) ? Qt::CaseSensitive
                                                                     : Qt::CaseInsensitive;
}

bool isReservedFileName(const QString& name)
{
    // What stands before the first dot or colon counts, blanks behind it do not.
    const int end = static_cast<int>(
        std::find_if(name.begin(), name.end(),
                     [](QChar c) { return c == QLatin1Char('.') || c == QLatin1Char(':'); }) -
        name.begin());
    const QString word = name.left(end).trimmed();
    if (isOneOf(word, {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"})) {
        return true;
    }
    // With the raised digits too, which Windows takes for those they look like.
    return word.size() == 4 && isOneOf(word.left(3), {"com", "lpt"}) &&
           ((word[3] >= QLatin1Char('0') && word[3] <= QLatin1Char('9')) || word[3] == QChar(0xB9) ||
            word[3] == QChar(0xB2) || word[3] == QChar(0xB3));
}

QString safeFileName(const QString& text, const SafeNameRules& rules)
{
    const int longest = std::max(rules.longestBytes, LeastBytes);
    const bool replaces = !isForbidden(rules.replacement.unicode()) && !rules.replacement.isSpace() &&
                          rules.replacement != QLatin1Char('.');
    const QChar replacement = replaces ? rules.replacement : QLatin1Char('_');
    QString name = trimmedName(withoutForbidden(text.normalized(QString::NormalizationForm_C), replacement));
    name = notReserved(name, replacement);
    if (name.toUtf8().size() > longest) {
        QString suffix = rules.keepSuffix ? dottedFileSuffix(name) : QString();
        if (suffix.toUtf8().size() > longest / 2) {
            suffix.clear();
        }
        const QString stem = name.left(name.size() - suffix.size());
        // Cut first, so that the blank or dot that comes to stand at the end goes too.
        name = trimmedName(trimmedName(cut(stem, longest - suffix.toUtf8().size())) + suffix);
        name = notReserved(name, replacement);
    }
    return name.isEmpty() ? rules.fallback : name;
}

} // namespace veltor::utils
