#include <veltor/utils/PlatformMask.h>

#include <QtCore/QLatin1String>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <iterator>

namespace veltor::utils {
namespace {

struct PlatformName
{
    PlatformMask::Platform platform;
    QLatin1String name;      // written, and read as a prefix
    QLatin1String otherName; // read as a prefix; null when there is none
};

// In the order in which the names are written.
constexpr PlatformName platformNames[] = {
    {PlatformMask::Apple, QLatin1String("mac"), QLatin1String("apple")},
    {PlatformMask::Windows, QLatin1String("win"), QLatin1String()},
    {PlatformMask::Linux, QLatin1String("linux"), QLatin1String("unix")},
    {PlatformMask::Android, QLatin1String("android"), QLatin1String()},
};

unsigned platformOfWord(const QString& word)
{
    for (const PlatformName& entry : platformNames) {
        if (word.startsWith(entry.name, Qt::CaseInsensitive) ||
            (!entry.otherName.isNull() && word.startsWith(entry.otherName, Qt::CaseInsensitive))) {
            return entry.platform;
        }
    }
    return 0;
}

} // namespace

QString fromPlatformMask(PlatformMask mask)
{
    QStringList names;
    for (const PlatformName& entry : platformNames) {
        if ((mask & entry.platform) != 0) {
            names << entry.name;
        }
    }
    return names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1Char(';'));
}

PlatformMask toPlatformMask(const QString& text)
{
    if (text.isEmpty()) {
        return PlatformMask::All;
    }
    static const QRegularExpression separator(QStringLiteral("\\W+"));
    unsigned bits = 0;
    for (const QString& word : text.split(separator, Qt::SkipEmptyParts)) {
        bits |= platformOfWord(word);
    }
    return bits;
}

} // namespace veltor::utils
