// Where crash files go, which of them is the newest, and what their frames mean.

#include <veltor/utils/CrashReport.h>

#include "CrashReportParser.h"
#include "platform/CrashFile.h"
#include "platform/FileSymbols.h"

#include <veltor/Version.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <mutex>

namespace veltor::utils {
namespace {

constexpr qint64 maxFileBytes = 1 << 20;

std::mutex templateLock; // guards currentTemplate and its order with the platform's plan

QString& currentTemplate() // an absolute path
{
    static QString path;
    return path;
}

std::filesystem::path::string_type toNative(const QString& path)
{
#ifdef Q_OS_WIN
    return QDir::toNativeSeparators(path).toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

/// Why no file can have such names; empty when they are right.
QString faultOf(const QString& name)
{
    constexpr int longestName = 255;
    constexpr int longestNumber = 20; // or time
    static const QRegularExpression form(QStringLiteral("\\A([^%]|%[pt%])+\\z"));
    if (!form.match(name).hasMatch() || name == QLatin1String(".") || name == QLatin1String("..") ||
        name.contains(QChar::Null)) {
        return QCoreApplication::translate("CrashReport", "в имени файла допустимы только %p, %t и %%");
    }
    const auto length = static_cast<int>(toNative(name).size());
    if (length + longestNumber * name.count(QLatin1Char('%')) > longestName) {
        return QCoreApplication::translate("CrashReport", "имя файла слишком длинное");
    }
    return {};
}

/// All names that the template stands for, with the number of a further file of the same name.
QRegularExpression namesOf(const QString& nameTemplate)
{
    QString pattern;
    for (int i = 0; i < nameTemplate.size(); ++i) {
        if (nameTemplate[i] != QLatin1Char('%')) {
            pattern += QRegularExpression::escape(nameTemplate.mid(i, 1));
        } else if (const QChar kind = nameTemplate[++i]; kind == QLatin1Char('p')) {
            pattern += QLatin1String("[0-9]+");
        } else if (kind == QLatin1Char('t')) {
            pattern += QLatin1String("[0-9]{8,}T[0-9]{6}Z");
        } else {
            pattern += QLatin1String("%");
        }
    }
    return QRegularExpression(
        QRegularExpression::anchoredPattern(pattern + QLatin1String("(\\.[0-9]{1,2})?")));
}

/// Takes it into use; otherwise tells why not.
QString useTemplate(const QString& pathTemplate)
{
    const QFileInfo target(pathTemplate);
    platform::CrashFilePlan plan;
    if (!pathTemplate.isEmpty()) {
        if (QString fault = faultOf(target.fileName()); !fault.isEmpty()) {
            return fault;
        }
        plan = {toNative(target.absolutePath()), toNative(target.fileName()),
                QCoreApplication::applicationName().toStdString(),
                QCoreApplication::applicationVersion().toStdString(), versionText()};
    }
    const std::lock_guard lock(templateLock);
    if (const std::error_code error = platform::setCrashFile(std::move(plan))) {
        return QString::fromLocal8Bit(error.message().c_str());
    }
    currentTemplate() = pathTemplate.isEmpty() ? QString() : target.absoluteFilePath();
    return {};
}

void setError(QString* error, const QString& file, const QString& reason)
{
    if (error) {
        *error =
            QCoreApplication::translate("CrashReport", "Отчёт о сбое %1 не прочитан: %2").arg(file, reason);
    }
}

} // namespace

bool setCrashReportFile(const QString& pathTemplate)
{
    const QString reason = useTemplate(pathTemplate);
    if (!reason.isEmpty()) {
        logging::LoggerFacade::write(
            logging::LogLevel::Error,
            QCoreApplication::translate("CrashReport", "Отчёты о сбоях не могут записываться в %1: %2")
                .arg(pathTemplate, reason));
    }
    return reason.isEmpty();
}

std::optional<CrashReport> lastCrash(QString* error)
{
    if (error) {
        error->clear();
    }
    const QFileInfo target = [] {
        const std::lock_guard lock(templateLock);
        return QFileInfo(currentTemplate());
    }();
    if (target.fileName().isEmpty()) {
        return {};
    }
    const QRegularExpression names = namesOf(target.fileName());
    const QDir directory(target.absolutePath());
    if (!directory.isReadable()) {
        setError(error, target.filePath(), QCoreApplication::translate("CrashReport", "каталог недоступен"));
        return {};
    }
    const QFileInfoList files =
        directory.entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Time);
    for (const QFileInfo& file : files) {
        if (names.match(file.fileName()).hasMatch() && platform::isOwnFile(toNative(file.filePath()))) {
            return readCrashReport(file.filePath(), error);
        }
    }
    return {};
}

std::optional<CrashReport> readCrashReport(const QString& path, QString* error)
{
    QString reason;
    QFile file(path);
    std::optional<CrashReport> report;
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        reason = QCoreApplication::translate("CrashReport", "это не обычный файл");
    } else if (!file.open(QIODevice::ReadOnly)) {
        reason = file.errorString();
    } else {
        const QByteArray bytes = file.read(maxFileBytes + 1);
        if (file.error() != QFileDevice::NoError) {
            reason = file.errorString();
        } else if (bytes.size() > maxFileBytes) {
            reason = QCoreApplication::translate("CrashReport", "файл слишком велик");
        } else {
            report = parseCrashReport(bytes, reason);
        }
    }
    if (report) {
        report->file = path;
    } else {
        setError(error, path, reason);
    }
    return report;
}

QStringList resolveCrash(const CrashReport& report, const QStringList& debugDirectories)
{
    std::vector<platform::ForeignFrame> frames;
    for (const CrashFrame& frame : report.frames) {
        // A return address may be the next function's first.
        const quint64 atCall = frames.empty() || frame.address == 0 ? 0 : 1;
        frames.push_back({toNative(frame.module),
                          frame.loadAddress,
                          frame.address - atCall,
                          {frame.buildId.begin(), frame.buildId.end()}});
    }
    std::vector<std::filesystem::path> directories;
    for (const QString& directory : debugDirectories) {
        directories.emplace_back(toNative(QDir(directory).absolutePath()));
    }
    const std::vector<platform::ForeignLocation> locations = platform::locateForeignCode(frames, directories);
    QStringList lines;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const CrashFrame& frame = report.frames[static_cast<int>(i)];
        const platform::ForeignLocation& location = locations[i];
        QString line =
            location.symbol.empty()
                ? QStringLiteral("[0x%1]").arg(frame.module.isEmpty() ? frame.address : frame.offset, 0, 16)
                : QString::fromStdString(location.symbol);
        if (!location.source.empty()) {
            line +=
                QStringLiteral(" (%1:%2)").arg(QString::fromStdString(location.source)).arg(location.line);
        }
        lines << line + QLatin1String(": ") +
                     (frame.module.isEmpty() ? QStringLiteral("[unknown file]") : frame.module);
    }
    return lines;
}

} // namespace veltor::utils
