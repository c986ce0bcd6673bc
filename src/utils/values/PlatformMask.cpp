// Names of platforms and their bits.

#include <veltor/utils/PlatformMask.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace veltor::utils {
namespace {

struct PlatformName
{
    PlatformMask::Platform platform;
    const char* name;      // written, and read as a prefix
    const char* otherName; // read as a prefix; null when there is none
};

// In the order in which the names are written.
constexpr PlatformName platformNames[] = {
    {PlatformMask::Apple, "mac", "apple"},
    {PlatformMask::Windows, "win", nullptr},
    {PlatformMask::Linux, "linux", "unix"},
    {PlatformMask::Android, "android", nullptr},
};

unsigned platformOfWord(const QString& word)
{
    for (const PlatformName& entry : platformNames) {
        const auto begins = [&word](const char* prefix) {
            return prefix != nullptr && word.startsWith(QLatin1String(prefix), Qt::CaseInsensitive);
        };
        if (begins(entry.name) || begins(entry.otherName)) {
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
            names << QLatin1String(entry.name);
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
