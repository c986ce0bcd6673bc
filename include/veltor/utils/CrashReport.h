#pragma once

#include <veltor/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

/// Crash files: what the handler of Tracer.h leaves for the next start, whatever else broke.
namespace veltor::utils {

/// One frame of the crashed thread's stack.
struct CrashFrame
{
    quint64 address = 0;     ///< of the instruction, in further frames of the one to return to
    QString module;          ///< the program or library file; empty when the address was in none
    quint64 offset = 0;      ///< the address as that file counts it
    quint64 loadAddress = 0; ///< address - offset
    QByteArray buildId;      ///< of the module, as its file and its debug information carry it; may be empty
};

/// What a crash file says.
struct CrashReport
{
    QString file;               ///< it was read from
    QDateTime time;             ///< UTC, to the second
    QString application;        ///< QCoreApplication::applicationName() at setCrashReportFile()
    QString version;            ///< QCoreApplication::applicationVersion() at setCrashReportFile()
    QString library;            ///< version of this library
    int signal = 0;             ///< number
    QString signalName;         ///< such as "SIGSEGV"
    qint64 code = 0;            ///< the system's reason, `si_code`; on Windows the exception's code or 0
    quint64 address = 0;        ///< that could not be used, or 0
    qint64 process = 0;         ///< number
    qint64 thread = 0;          ///< number, as the system counts threads
    QString threadName;         ///< may be empty
    QVector<CrashFrame> frames; ///< innermost first, at most 64
};

/// From now on each crash of this process that Tracer::registerSignalHandler() watches for is also written to
/// a file of its own, as one JSON object, before anything is done that the crash may have broken. Only its
/// owner may read it. A file that is there already is never touched: ".1" to ".99" are added to the name.
/// @param pathTemplate  its directory, which must exist, and its name, in which "%p" stands for the process's
///     number, "%t" for the time of the crash in UTC ("20261121T183000Z") and "%%" for a percent sign; empty
///     writes no files any more
/// @return false, with a line in the log and the former template in force, where the template does not fit or
///     no file can be made in the directory
///
/// On Linux room for the file is reserved here, where the file system has files without names: then a full
/// disk costs no report, and a process that does not crash leaves nothing. A process forked off makes its own
/// file at its crash. Thread-safe.
VELTOR_UTILS_EXPORT bool setCrashReportFile(const QString& pathTemplate);

/// The newest file, by its time of change, that the template of setCrashReportFile() may have named: at the
/// start of a program, what ended it the last time. Links and others' files are passed over. The file stays:
/// remove it when it was dealt with.
/// @param error  gets why the newest one cannot be read; emptied when there is none
/// @return none when there is no such file, no template, or an error
///
/// Thread-safe.
VELTOR_UTILS_EXPORT std::optional<CrashReport> lastCrash(QString* error = nullptr);

/// Reads one crash file, from wherever. Its bytes are not trusted: what does not fit is an error.
/// @param path   the file
/// @param error  gets the file's name and what is wrong
///
/// Reentrant.
VELTOR_UTILS_EXPORT std::optional<CrashReport> readCrashReport(const QString& path, QString* error = nullptr);

/// One line per frame with its function and place in the source, as far as files with the frame's build id
/// tell: "function (source.cpp:12): module". Where none is found: "[0x1234]: module", with the address in the
/// module. Callers are looked up at their call, not at the instruction behind it.
/// @param report  from this process's system
/// @param debugDirectories  are searched for the modules' files and for separate debug information, by build
///     id (".build-id/ab/cdef.debug") and by name; the modules' own places and the system's come after them
///
/// Reads the files that the report names, so not for a report from a stranger. Thread-safe.
VELTOR_UTILS_EXPORT QStringList resolveCrash(const CrashReport& report,
                                             const QStringList& debugDirectories = {});

} // namespace veltor::utils
