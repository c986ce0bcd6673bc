// veltor crash: shows a crash file with the names of its functions.

#include "Command.h"

#include <veltor/utils/CrashReport.h>

namespace veltor::tool {
namespace {

const char* const usage =
    "Usage: veltor crash show FILE [--debug-dir DIR]...\n"
    "\n"
    "  show              tells what a crash file says, each frame with its function, source and\n"
    "                    line where the files of its module still tell\n"
    "  --debug-dir DIR   look for these files in DIR first: the program and its libraries as they\n"
    "                    were, or separate debug information, by build id or by name; may be\n"
    "                    given several times\n"
    "\n"
    "Exit status: 0 done, 1 the file cannot be read, 2 usage.\n";

struct Request
{
    QString file;
    QStringList debugDirectories;
};

Request parse(QStringList words)
{
    const QString text = QString::fromUtf8(usage);
    if (words.isEmpty() || words.takeFirst() != QLatin1String("show")) {
        throw UsageError(text);
    }
    Request request;
    bool options = true;
    while (!words.isEmpty()) {
        const QString word = words.takeFirst();
        if (options && word == QLatin1String("--")) {
            options = false;
        } else if (options && word == QLatin1String("--debug-dir") && !words.isEmpty()) {
            request.debugDirectories << words.takeFirst();
        } else if (options && word.startsWith(QLatin1String("--debug-dir="))) {
            request.debugDirectories << word.mid(word.indexOf(QLatin1Char('=')) + 1);
        } else if ((options && word.startsWith(QLatin1Char('-'))) || !request.file.isEmpty()) {
            throw UsageError(QStringLiteral("veltor crash: '%1' does not fit here\n\n").arg(word) + text);
        } else {
            request.file = word;
        }
    }
    if (request.file.isEmpty()) {
        throw UsageError(text);
    }
    return request;
}

QString head(const utils::CrashReport& report)
{
    const QString thread = report.threadName.isEmpty()
                               ? QString::number(report.thread)
                               : QStringLiteral("%1 \"%2\"").arg(report.thread).arg(report.threadName);
    return QStringLiteral("program  %1 %2 (veltor-utils %3)\n"
                          "time     %4\n"
                          "signal   %5 (%6), code %7, address 0x%8\n"
                          "process  %9, ")
               .arg(report.application, report.version, report.library, report.time.toString(Qt::ISODate))
               .arg(report.signal)
               .arg(report.signalName)
               .arg(report.code)
               .arg(report.address, 0, 16)
               .arg(report.process) +
           QStringLiteral("thread %1\n\n").arg(thread);
}

} // namespace

int runCrash(const QStringList& arguments)
{
    if (arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"))) {
        print(QString::fromUtf8(usage));
        return Done;
    }
    const Request request = parse(arguments);
    QString error;
    const auto report = utils::readCrashReport(request.file, &error);
    if (!report) {
        printError(QStringLiteral("veltor: ") + error);
        return Failed;
    }
    QString text = head(*report);
    const QStringList lines = utils::resolveCrash(*report, request.debugDirectories);
    for (int i = 0; i < lines.size(); ++i) {
        text += QStringLiteral("#%1 %2\n").arg(i, -2).arg(lines[i]);
    }
    print(text);
    return Done;
}

} // namespace veltor::tool
