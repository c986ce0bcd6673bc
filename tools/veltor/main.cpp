// veltor: the command-line tool. main() knows the table of commands and the exit codes; each command is
// a source of its own.

#include "Command.h"
#include "Terminal.h"

#include <veltor/Version.h>
#include <veltor/logging/Logger.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <array>

namespace veltor::tool {
namespace {

constexpr std::array commands{
    Command{"crash", "show the report that a crashed program left", &runCrash},
    Command{"distance", "measure between two positions by every formula", &runDistance},
    Command{"journal", "show, roll back, repair or discard a rollback journal", &runJournal},
    Command{"measure", "areas, perimeters and lengths of a GeoJSON file", &runMeasure},
};

QString overview()
{
    QString text = QStringLiteral("Usage: veltor COMMAND [ARGUMENTS...]\n\nCommands:\n");
    for (const Command& command : commands) {
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -10)
                    .arg(QLatin1String(command.summary));
    }
    return text +
           QStringLiteral("\nveltor COMMAND --help tells more.\n"
                          "Exit status: 0 done, 1 refused or failed, 2 the command line does not fit.\n");
}

/// Lines of the library that tell of a fault go to standard error as they stand; the informational ones
/// are for developers.
void showErrors(const logging::LogRecord& record)
{
    if (record.level == logging::LogLevel::Error || record.level == logging::LogLevel::Warning) {
        printError(record.text);
    }
}

/// LC_ALL decides alone, on every system, so that scripts can have the same texts everywhere.
QLocale userLocale()
{
    const QString all = qEnvironmentVariable("LC_ALL");
    return all.isEmpty() ? QLocale::system() : QLocale(all);
}

int run(QStringList arguments)
{
    arguments.removeFirst();
    if (arguments.isEmpty()) {
        throw UsageError(overview());
    }
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        print(overview());
        return Done;
    }
    if (name == QLatin1String("--version")) {
        print(QStringLiteral("veltor %1\n").arg(QLatin1String(versionText())));
        return Done;
    }
    const auto* const command = std::find_if(commands.begin(), commands.end(), [&](const Command& candidate) {
        return name == QLatin1String(candidate.name);
    });
    if (command == commands.end()) {
        throw UsageError(QStringLiteral("veltor: there is no command '%1'\n\n").arg(name) + overview());
    }
    return command->run(arguments);
}

} // namespace
} // namespace veltor::tool

int main(int argc, char** argv)
{
    using namespace veltor::tool;
    terminal::prepareStreams();
    const QCoreApplication application(argc, argv);
    veltor::logging::setLogSink(&showErrors);
    // The tool itself speaks English; the library's messages follow the user's language.
    veltor::utils::installTranslation(userLocale());
    try {
        return run(QCoreApplication::arguments());
    } catch (const UsageError& error) {
        printError(QString::fromUtf8(error.what()).trimmed());
        return Usage;
    } catch (const std::exception& error) {
        printError(QStringLiteral("veltor: ") + QString::fromUtf8(error.what()));
        return Failed;
    }
}
