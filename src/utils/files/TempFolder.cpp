// What making and cleaning up temporary folders have in common: names, the place, and moving aside.
#include "utils/files/TempFolder.h"

#include "utils/files/NativeText.h"
#include "utils/files/TreeRemover.h"

#include <veltor/logging/Logger.h>
#include <veltor/utils/FileNames.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtCore/QSysInfo>

namespace veltor::utils {

using platform::Directory;
using platform::FolderLock;

namespace {

constexpr int LongestProgram = 100; // bytes; the rest of a name takes some fifty

QString chance()
{
    static const char digits[] = "0123456789abcdefghijklmnopqrstuv";
    QString text;
    for (int i = 0; i < 16; ++i) {
        text += QLatin1Char(digits[QRandomGenerator::system()->bounded(32)]);
    }
    return text;
}

} // namespace

QString TempName::machineMark()
{
    static const QString mark = [] {
        QByteArray id = QSysInfo::machineUniqueId();
        if (id.isEmpty()) {
            id = QSysInfo::machineHostName().toUtf8();
        }
        return QString::fromLatin1(QCryptographicHash::hash(id, QCryptographicHash::Sha256).toHex().left(8));
    }();
    return mark;
}

QString TempName::programMark(const QString& program)
{
    SafeNameRules rules;
    rules.longestBytes = LongestProgram;
    rules.keepSuffix = false;
    rules.fallback = QStringLiteral("program");
    return safeFileName(program.isEmpty() ? QCoreApplication::applicationName() : program, rules);
}

QString TempName::make(const QString& program, bool aside)
{
    return QStringLiteral("%1-%2-%3-%4.%5")
        .arg(program, machineMark(), QString::number(QCoreApplication::applicationPid()), chance(),
             aside ? QStringLiteral("old") : QStringLiteral("tmp"));
}

std::optional<TempName> TempName::read(const QString& name)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(.+)-([0-9a-f]{8})-[0-9]{1,20}-[0-9a-v]{16}\\.(tmp|old)\\z"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(name);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return TempName{match.captured(1), match.captured(2), match.captured(3) == QLatin1String("old")};
}

QString openTempBase(const QString& base, Directory& directory)
{
    std::error_code error;
    const platform::NativeString path = toNative(base);
    if (platform::isOpenToReplacement(path, error) && !error) {
        return QCoreApplication::translate("TemporaryDir",
                                           "Папка '%1' не годится для временных файлов: любой пользователь "
                                           "может подменить в ней чужие файлы")
            .arg(base);
    }
    if (!error) {
        error = directory.open(path, platform::Links::Follow);
    }
    return error ? QCoreApplication::translate("TemporaryDir", "Не удалось открыть папку '%1': %2")
                       .arg(base, reasonText(error))
                 : QString();
}

std::error_code removeAside(Directory& base, FolderLock& lock, const QString& basePath, const QString& name,
                            RemovalReport& report, const RemovalProgress& progress)
{
    const TempName parts = TempName::read(name).value_or(TempName());
    QString aside = name;
    std::error_code error;
    // One that lies aside already keeps its name; another user may have taken the new one.
    for (int attempt = 0; attempt == 0 || (platform::isTaken(error) && attempt < 100); ++attempt) {
        if (!parts.aside) {
            aside = TempName::make(parts.program, true);
            error = lock.rename(base, nativeName(name), nativeName(aside));
        }
    }
    if (error) {
        return error;
    }
    const QString shown = basePath + QLatin1Char('/') + aside;
    TreeRemover remover(report, progress);
    Directory folder;
    error = lock.open(folder);
    if (error) {
        remover.fail(shown, reasonText(error));
        return {};
    }
    if (!remover.empty(std::move(folder), shown, nativeName(QString::fromLatin1(TempMark)))) {
        return {}; // the mark stays, for the next cleanup
    }
    if (!lock.open(folder) && !folder.removeFile(nativeName(QString::fromLatin1(TempMark)))) {
        ++report.removed;
    }
    folder.close();
    error = lock.removeEmpty(base, nativeName(aside));
    if (!error) {
        ++report.removed;
    } else if (!platform::isGone(error)) {
        remover.fail(shown, reasonText(error));
        // Somebody has put something into it since: the next cleanup must know it again.
        if (lock.isHeld() && !lock.open(folder)) {
            static_cast<void>(folder.makeMark(nativeName(QString::fromLatin1(TempMark)), TempMarkText));
        }
    }
    return {};
}

void logTemp(const QString& text)
{
    logging::LoggerMessager(logging::LogLevel::Error, "TemporaryDir.cpp", 0, "").write(text);
}

} // namespace veltor::utils
