// Crashes, and leaves a report of it in a log file, and a crash file LOG.crash-* that the next start finds.
//
//     crash_report LOG

#include <veltor/logging/Logger.h>
#include <veltor/utils/CrashReport.h>
#include <veltor/utils/Tracer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

using veltor::logging::LogLevel;
using veltor::logging::LogRecord;
using veltor::utils::Tracer;

namespace {

//! [sink]
/// Sends the library's log to a file. Unbuffered: what is in it survives the process.
bool logTo(const QString& path)
{
    const auto file = std::make_shared<QFile>(path);
    if (!file->open(QIODevice::Append | QIODevice::Unbuffered)) {
        return false;
    }
    const auto mutex = std::make_shared<std::mutex>(); // any thread may log
    veltor::logging::setLogSink([file, mutex](const LogRecord& record) {
        const QString line = QStringLiteral("%1 %2\n").arg(int(record.level)).arg(record.text);
        const std::lock_guard lock(*mutex);
        file->write(line.toUtf8());
    });
    return true;
}
//! [sink]

} // namespace

//! [ask]
// Never inlined, so that its name stands in the report.
Q_NEVER_INLINE int readLayerCount(const std::string& text)
{
    Tracer::logBacktrace(LogLevel::Info, 0); // who called this? No crash needed.
    return std::stoi(text);                  // throws what nobody here catches
}
//! [ask]

Q_NEVER_INLINE void openProject()
{
    std::printf("%d layers\n", readLayerCount("rivers"));
}

//! [last]
/// Tells how the program ended the last time, if it was by a crash.
void tellOfLastCrash()
{
    QString error;
    if (const auto crash = veltor::utils::lastCrash(&error)) {
        std::printf("It crashed at %s with %s:\n%s\n", qPrintable(crash->time.toString(Qt::ISODate)),
                    qPrintable(crash->signalName),
                    qPrintable(veltor::utils::resolveCrash(*crash).join(QLatin1Char('\n'))));
        QFile::remove(crash->file);
    } else if (!error.isEmpty()) {
        std::printf("%s\n", qPrintable(error)); // there is one, but it cannot be read
    }
}
//! [last]

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    //! [install]
    const QString log = QCoreApplication::arguments().value(1);
    if (!logTo(log)) {
        std::fputs("Usage: crash_report LOG\n", stderr);
        return 2;
    }
    Tracer::registerSignalHandler(); // early, on the main thread
    veltor::utils::setCrashReportFile(log + QLatin1String(".crash-%t-%p"));
    tellOfLastCrash();
    std::fflush(stdout);
    //! [install]
    openProject();
    return 0;
}
