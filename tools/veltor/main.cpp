// veltor: the command-line tool. main() knows the table of commands and the exit codes; each command is
// a source of its own.

#include "Command.h"
#include "Console.h"
#include "Language.h"
#include "Terminal.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/Version.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <iterator>

namespace veltor::tool {
namespace {

constexpr Command commands[] = {
    {"crash", QT_TRANSLATE_NOOP("veltor", "показать отчёт о сбое, оставшийся от программы"), &runCrash},
    {"distance", QT_TRANSLATE_NOOP("veltor", "расстояния между двумя точками по всем формулам"),
     &runDistance},
    {"geodesic", QT_TRANSLATE_NOOP("veltor", "прямая и обратная геодезические задачи, точки вдоль линии"),
     &runGeodesic},
    {"journal", QT_TRANSLATE_NOOP("veltor", "показать журнал отката, откатить, исправить, убрать"),
     &runJournal},
    {"locks", QT_TRANSLATE_NOOP("veltor", "кто использует файлы и почему их нельзя записать"), &runLocks},
    {"measure", QT_TRANSLATE_NOOP("veltor", "площади, периметры и длины объектов карты GeoJSON"),
     &runMeasure},
};

QString overview()
{
    QString text = Text::tr("Вызов: veltor КОМАНДА [АРГУМЕНТЫ...]") + QStringLiteral("\n\n") +
                   Text::tr("Команды:") + QLatin1Char('\n');
    for (const Command& command : commands) {
        text +=
            QStringLiteral("  %1 %2\n").arg(QLatin1String(command.name), -10).arg(Text::tr(command.summary));
    }
    return text + QLatin1Char('\n') +
           Text::tr("Подробно: veltor help КОМАНДА или veltor КОМАНДА --help; версия: veltor --version") +
           QLatin1Char('\n') +
           Text::tr("Код завершения: 0 — сделано, 1 — отказ или ошибка, 2 — неверная командная строка, 130 — "
                    "прервано") +
           QLatin1Char('\n');
}

/// Lines of the library that tell of a fault go to standard error; the informational ones are for developers.
void showErrors(const logging::LogRecord& record)
{
    if (record.level == logging::LogLevel::Error || record.level == logging::LogLevel::Warning) {
        printError(shownLine(record.text));
    }
}

int runCommand(const QString& name, const QStringList& words)
{
    const auto* const command =
        std::find_if(std::begin(commands), std::end(commands),
                     [&](const Command& candidate) { return name == QLatin1String(candidate.name); });
    if (command == std::end(commands)) {
        throw UsageError(Text::tr("нет такой команды: '%1'").arg(shownLine(name)));
    }
    return command->run(words);
}

int run(QStringList words)
{
    if (words.isEmpty()) {
        throw UsageError(Text::tr("не названа команда"));
    }
    const QString name = words.takeFirst();
    const bool isHelp = name == QLatin1String("--help") || name == QLatin1String("-h");
    if (name == QLatin1String("help") && !words.isEmpty()) {
        return runCommand(words[0], {QStringLiteral("--help")});
    }
    if (isHelp || name == QLatin1String("help")) {
        print(overview());
        return Done;
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-V")) {
        print(QStringLiteral("veltor %1\n").arg(QLatin1String(versionText())));
        return Done;
    }
    if (name.startsWith(QLatin1Char('-'))) {
        throw UsageError(Text::tr("нет такого ключа: '%1'").arg(shownLine(name)));
    }
    return runCommand(name, words);
}

/// "veltor measure", or "veltor" alone where there is no such command.
QString calledName(const QStringList& words)
{
    for (const Command& command : commands) {
        if (words.value(0) == QLatin1String(command.name)) {
            return QStringLiteral("veltor ") + words[0];
        }
    }
    return QStringLiteral("veltor");
}

int runSafely(const QStringList& words)
{
    try {
        const int code = run(words);
        finishOutput();
        return code;
    } catch (const UsageError& error) {
        const QString name = calledName(words);
        printError(name + QStringLiteral(": ") + QString::fromUtf8(error.what()));
        printError(Text::tr("смотрите %1 --help").arg(name));
        return Usage;
    } catch (const OutputError& error) {
        if (!error.isClosedPipe()) {
            printError(QStringLiteral("veltor: ") + QString::fromUtf8(error.what()));
        }
        return Failed;
    } catch (const std::exception& error) {
        printError(QStringLiteral("veltor: ") + QString::fromUtf8(error.what()));
        return Failed;
    }
}

} // namespace
} // namespace veltor::tool

int main(int argc, char** argv)
{
    using namespace veltor::tool;
    terminal::prepareStreams();
    const QCoreApplication application(argc, argv);
    prepareInterrupt();
    prepareLanguage();
    veltor::logging::setLogSink(&showErrors);
    return runSafely(QCoreApplication::arguments().mid(1));
}
