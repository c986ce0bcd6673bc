// A temporary folder: made, locked and marked; removed or kept at the end.
#include <veltor/utils/TemporaryDir.h>

#include "utils/files/NativeText.h"
#include "utils/files/TempFolder.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <utility>

namespace veltor::utils {

using platform::Directory;
using platform::FolderLock;

struct TemporaryDir::Private
{
    QString basePath;
    Directory base;
    FolderLock lock;
    QString name;
    QString error;

    void make(const QString& program);
    void refuse(const QString& reason)
    {
        error = reason;
        logTemp(reason);
    }
};

void TemporaryDir::Private::make(const QString& program)
{
    // Others may be cleaning up, or guess names: a name more costs nothing.
    constexpr int longestAttempts = 100;
    std::error_code failure;
    for (int attempt = 0; attempt < longestAttempts; ++attempt) {
        name = TempName::make(program, false);
        const FolderLock::Outcome outcome = lock.make(base, nativeName(name), failure);
        if (outcome == FolderLock::Outcome::Failed) {
            break;
        }
        if (outcome == FolderLock::Outcome::Taken) {
            Directory folder;
            failure = lock.open(folder);
            if (!failure) {
                failure = folder.makeMark(nativeName(QString::fromLatin1(TempMark)), TempMarkText);
            }
            if (!failure) {
                return;
            }
            static_cast<void>(folder.removeFile(nativeName(QString::fromLatin1(TempMark))));
            folder.close();
            static_cast<void>(lock.removeEmpty(base, nativeName(name)));
            lock.release();
            break;
        }
    }
    refuse(QCoreApplication::translate("TemporaryDir", "Не удалось создать временную папку в '%1': %2")
               .arg(basePath, reasonText(failure)));
}

TemporaryDir::TemporaryDir()
    : TemporaryDir(QString())
{}

TemporaryDir::TemporaryDir(const QString& base, const QString& program)
    : m_d(std::make_unique<Private>())
{
    m_d->basePath = QDir(base.isEmpty() ? QDir::tempPath() : base).absolutePath();
    const QString reason = openTempBase(m_d->basePath, m_d->base);
    if (reason.isEmpty()) {
        m_d->make(TempName::programMark(program));
    } else {
        m_d->refuse(reason);
    }
}

TemporaryDir::~TemporaryDir()
{
    try {
        remove();
    } catch (const std::exception&) {
        // No memory: the next cleanup has more.
    }
}

TemporaryDir::TemporaryDir(TemporaryDir&& other) noexcept = default;

TemporaryDir& TemporaryDir::operator=(TemporaryDir&& other) noexcept
{
    if (this != &other) {
        const TemporaryDir former(std::move(*this));
        m_d = std::move(other.m_d);
    }
    return *this;
}

bool TemporaryDir::isValid() const
{
    return m_d && m_d->lock.isHeld();
}

QString TemporaryDir::errorString() const
{
    return m_d ? m_d->error : QString();
}

QString TemporaryDir::path() const
{
    return isValid() ? QDir(m_d->basePath).filePath(m_d->name) : QString();
}

QString TemporaryDir::filePath(const QString& name) const
{
    return isValid() && !QDir::isAbsolutePath(name) ? QDir(path()).filePath(name) : QString();
}

RemovalReport TemporaryDir::remove(const RemovalProgress& progress)
{
    RemovalReport report;
    if (!isValid()) {
        return report;
    }
    const QString folder = path();
    // Whatever becomes of it, it is no longer this object's; what stays is for the next cleanup.
    FolderLock lock = std::move(m_d->lock);
    const std::error_code error = removeAside(m_d->base, lock, m_d->basePath, m_d->name, report, progress);
    if (error && !platform::isGone(error)) { // what is gone by that name, others have moved or removed
        ++report.failed;
        report.failures.push_back({folder, reasonText(error)});
    }
    for (const RemovalFailure& failure : report.failures) {
        logTemp(QCoreApplication::translate("TemporaryDir", "Не удалось удалить '%1': %2")
                    .arg(failure.path, failure.reason));
    }
    return report;
}

bool TemporaryDir::keepAs(const QString& path)
{
    if (!isValid()) {
        return false;
    }
    const std::error_code error = m_d->lock.moveOut(m_d->base, nativeName(m_d->name), toNative(path));
    if (error) {
        m_d->refuse(QCoreApplication::translate("TemporaryDir", "Не удалось переименовать '%1' в '%2': %3")
                        .arg(this->path(), path, reasonText(error)));
        return false;
    }
    Directory folder;
    if (!m_d->lock.open(folder)) {
        static_cast<void>(folder.removeFile(nativeName(QString::fromLatin1(TempMark))));
    }
    m_d->lock.release();
    return true;
}

} // namespace veltor::utils
