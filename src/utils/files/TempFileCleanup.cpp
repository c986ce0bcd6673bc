// Finds and removes the temporary folders of processes that are gone.
#include <veltor/utils/TempFileCleanup.h>

#include "utils/files/NativeText.h"
#include "utils/files/TempFolder.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <utility>

namespace veltor::utils {

using platform::Directory;
using platform::FolderLock;

namespace {

constexpr std::size_t RefusedKept = 100;

/// One run over one place.
class CleanupRun
{
public:
    CleanupRun(QString basePath, const RemovalProgress& progress, TempCleanupReport& report)
        : m_basePath(std::move(basePath))
        , m_progress(progress)
        , m_report(report)
    {}

    /// @param program  empty for every one
    void run(const QString& program);

private:
    void take(const platform::NativeString& name, const QString& text);
    void refuse(const QString& text, const QString& reason);

    QString m_basePath;
    const RemovalProgress& m_progress;
    TempCleanupReport& m_report;
    Directory m_base;
};

void CleanupRun::run(const QString& program)
{
    m_report.error = openTempBase(m_basePath, m_base);
    if (!m_report.error.isEmpty()) {
        return;
    }
    Directory names;
    std::error_code error = names.openIn(m_base, nativeName(QStringLiteral(".")), platform::Links::Refuse);
    Directory::Name name;
    std::vector<platform::NativeString> found; // first, since what is moved aside would be met again
    while (!error && names.next(name, error)) {
        const auto parts = isExactName(name.text) ? TempName::read(fromNative(name.text)) : std::nullopt;
        if (parts && (program.isEmpty() || parts->program == program) &&
            parts->machine == TempName::machineMark()) {
            found.push_back(std::move(name.text));
        }
    }
    names.close();
    for (const platform::NativeString& one : found) {
        if (!m_report.contents.canceled) {
            take(one, fromNative(one));
        }
    }
    if (error) {
        m_report.error = QCoreApplication::translate("TemporaryDir", "Не удалось открыть папку '%1': %2")
                             .arg(m_basePath, reasonText(error));
    }
}

void CleanupRun::refuse(const QString& text, const QString& reason)
{
    if (m_report.refused.size() < RefusedKept) {
        m_report.refused.push_back({m_basePath + QLatin1Char('/') + text, reason});
    }
}

void CleanupRun::take(const platform::NativeString& name, const QString& text)
{
    FolderLock lock;
    std::error_code error;
    switch (lock.take(m_base, name, error)) {
    case FolderLock::Outcome::Taken:
        break;
    case FolderLock::Outcome::InUse:
        ++m_report.inUse;
        return;
    case FolderLock::Outcome::Exists:
    case FolderLock::Outcome::Gone:
        return;
    case FolderLock::Outcome::Foreign:
        refuse(text, QCoreApplication::translate("TemporaryDir", "не папка этого пользователя"));
        return;
    case FolderLock::Outcome::Failed:
        refuse(text, reasonText(error));
        return;
    }
    Directory folder;
    error = lock.open(folder);
    if (error || !folder.hasMark(nativeName(QString::fromLatin1(TempMark)))) {
        folder.close();
        // Ended while it was made, or nearly removed: then it is empty, and nothing is lost by trying.
        if (!lock.removeEmpty(m_base, name)) {
            ++m_report.removed;
            ++m_report.contents.removed;
        } else {
            refuse(text, QCoreApplication::translate("TemporaryDir", "в папке нет отметки временной"));
        }
        return;
    }
    folder.close();
    error = removeAside(m_base, lock, m_basePath, text, m_report.contents, m_progress);
    if (error && !platform::isGone(error)) {
        ++m_report.waiting;
    } else if (!lock.isHeld()) {
        ++m_report.removed;
    }
}

} // namespace

TempFileCleanup::TempFileCleanup(const QString& base, const QString& program)
    : m_base(base)
    , m_program(program)
{}

void TempFileCleanup::setAllPrograms(bool all)
{
    m_allPrograms = all;
}

void TempFileCleanup::setProgress(RemovalProgress progress)
{
    m_progress = std::move(progress);
}

TempCleanupReport TempFileCleanup::run()
{
    TempCleanupReport report;
    const QString base = QDir(m_base.isEmpty() ? QDir::tempPath() : m_base).absolutePath();
    CleanupRun(base, m_progress, report).run(m_allPrograms ? QString() : TempName::programMark(m_program));
    return report;
}

} // namespace veltor::utils
