// veltor crash: shows a crash file with the names of its functions.

#include "Arguments.h"
#include "Command.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/CrashReport.h>

namespace veltor::tool {
namespace {

QString hex(quint64 number)
{
    return QLatin1String("0x") + QString::number(number, 16);
}

/// One line of the head; what stands in a report is somebody else's text.
void printFact(const QString& name, QStringList words)
{
    words.removeAll(QString());
    print(name.leftJustified(11) + shownLine(words.join(QLatin1Char(' '))) + QLatin1Char('\n'));
}

void printHead(const utils::CrashReport& report)
{
    printFact(Text::tr("Программа"), {report.application, report.version});
    printFact(Text::tr("Библиотека"), {report.library});
    printFact(Text::tr("Время"), {report.time.toString(Qt::ISODate)});
    printFact(Text::tr("Сигнал"), {QString::number(report.signal), report.signalName,
                                   Text::tr("код %1, адрес %2").arg(report.code).arg(hex(report.address))});
    printFact(Text::tr("Процесс"), {QString::number(report.process)});
    printFact(Text::tr("Поток"), {QString::number(report.thread), report.threadName});
}

} // namespace

int runCrash(const QStringList& words)
{
    Arguments arguments(
        QStringLiteral("crash"), {Text::tr("show ФАЙЛ [--debug-dir КАТАЛОГ]")},
        Text::tr("Показывает файл отчёта о сбое: для каждого кадра стека функцию, исходный файл и "
                 "строку, если файлы его модуля ещё доступны."));
    arguments.addOption("debug-dir", Text::tr("КАТАЛОГ"),
                        Text::tr("сначала искать здесь прежние файлы программы и её библиотек или отдельную "
                                 "отладочную информацию, по идентификатору сборки или по имени"));
    if (!arguments.parse(words)) {
        return Done;
    }
    arguments.expectWords(2, 2);
    if (arguments.words()[0] != QLatin1String("show")) {
        throw UsageError(Text::tr("неизвестное действие: %1").arg(shownName(arguments.words()[0])));
    }
    QString error;
    const auto report = utils::readCrashReport(arguments.words()[1], &error);
    if (!report) {
        throw std::runtime_error(shownLine(error).toStdString());
    }
    const QStringList directories =
        arguments.isSet("debug-dir") ? QStringList{arguments.value("debug-dir")} : QStringList();
    printHead(*report);
    const QStringList lines = utils::resolveCrash(*report, directories);
    for (int i = 0; i < lines.size(); ++i) {
        print(QStringLiteral("#%1 ").arg(i, -2) + shownLine(lines[i]) + QLatin1Char('\n'));
    }
    return Done;
}

} // namespace veltor::tool
