// veltor measure: the features of a map with their areas, perimeters and lengths.

#include "Command.h"
#include "Language.h"
#include "MapRun.h"
#include "MeasureOptions.h"
#include "MeasureReport.h"
#include "OutputFile.h"
#include "TerminalText.h"
#include "Text.h"
#include "TraceFile.h"

#include <veltor/err/ErrorTracer.h>
#include <veltor/utils/ScopedTimer.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>

#include <cstdio>

namespace veltor::tool {
namespace {

/// A bar on the terminal while a file is read; without the file's size, the bytes.
class ReadProgress
{
public:
    explicit ReadProgress(qint64 size)
        : m_size(size)
        , m_isShown(hasTerminal())
    {
        m_timer.start();
    }
    ~ReadProgress()
    {
        if (m_hasLine) {
            printProgress(QString());
        }
    }
    ReadProgress(const ReadProgress&) = delete;
    ReadProgress& operator=(const ReadProgress&) = delete;

    void show(qint64 bytes)
    {
        if (!m_isShown || m_timer.elapsed() < 200) {
            return;
        }
        m_timer.start();
        m_hasLine = true;
        constexpr int width = 40;
        constexpr qint64 mega = 1000000;
        if (m_size <= 0) {
            printProgress(Text::tr("прочитано %1 МБ").arg(bytes / mega));
            return;
        }
        const int filled = static_cast<int>(std::min(bytes, m_size) * width / m_size);
        const QString bar = QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.'));
        printProgress(Text::tr("[%1] %2 из %3 МБ").arg(bar).arg(bytes / mega).arg(m_size / mega));
    }

private:
    qint64 m_size;
    bool m_isShown;
    bool m_hasLine = false;
    QElapsedTimer m_timer;
};

void openMap(QFile& file, const QString& name)
{
    const bool isOpen = name == QLatin1String("-")
                            ? file.open(stdin, QIODevice::ReadOnly | QIODevice::Unbuffered)
                            : file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    if (!isOpen) {
        throw std::runtime_error(openReason(file).toStdString());
    }
}

/// One line a kind to standard error: the first place, and how often.
void printNotes(const err::ErrorTracer& errors)
{
    for (const err::ErrorTracer::Entry& entry : errors.entries()) {
        if (entry.severity != err::ErrorSeverity::Warning) {
            continue;
        }
        QString line = QStringLiteral("veltor: %1: %2")
                           .arg(shownLine(entry.sources.front().feature), shownLine(entry.text));
        if (entry.count > 1) {
            line += Text::tr(" (всего таких объектов: %1)").arg(entry.count);
        }
        printError(line);
    }
}

void measureFile(const QString& name, const QString& shown, const MeasureOptions& options,
                 err::ErrorTracer& errors)
{
    QFile file(name);
    openMap(file, name);
    MapReading reading;
    reading.geographic = options.mode != core::CalcMode::Cartesian;
    reading.keepText = options.format == OutputFormat::GeoJson;
    reading.nameProperty = options.nameProperty;
    MeasureReport report(options);
    {
        ReadProgress progress(file.isSequential() ? 0 : file.size());
        measureMap(
            file, reading, Surface(options.mode, options.ellipsoid, options.edges),
            [&](MeasuredFeature&& feature) { report.add(std::move(feature)); },
            [&](const Notes& notes) { notes.addTo(errors, shown); },
            [&](qint64 bytes) { progress.show(bytes); });
    }
    const utils::ScopedTimer timer("report");
    printNotes(errors);
    report.finish();
}

/// What was left out of the map of this name, and what ended the work, to the file of --report.
void writeReport(OutputFile& file, const err::ErrorTracer& errors, const QString& shown)
{
    if (file.isOpen()) {
        file.finish(errors.writeHtml(file.device(), Text::tr("Измерение: %1").arg(shown)));
    }
}

} // namespace

int runMeasure(const QStringList& words)
{
    Arguments arguments(
        QStringLiteral("measure"), {Text::tr("ФАЙЛ.geojson [КЛЮЧИ...]")},
        Text::tr("Площади и периметры многоугольников и длины линий карты GeoJSON, и их суммы. Файл любой "
                 "величины читается потоком; - — стандартный ввод; годятся и объекты по одному в строке, и "
                 "последовательность RFC 8142.") +
            QLatin1Char('\n') +
            Text::tr("Метры и квадратные метры, если не задано иное; с --mode cartesian единица файла."));
    addMeasureOptions(arguments);
    if (!arguments.parse(words)) {
        return Done;
    }
    arguments.expectWords(1, 1);
    const QString name = arguments.words()[0];
    const MeasureOptions options = measureOptions(arguments);
    const QString shown = name == QLatin1String("-") ? Text::tr("стандартный ввод") : name;
    OutputFile reportFile(arguments.value("report"), name);
    TraceFile trace(arguments.value("trace"), name);
    err::ErrorTracer errors;
    try {
        const utils::ScopedTimer timer("map");
        measureFile(name, shown, options, errors);
    } catch (const OutputError&) {
        throw;
    } catch (const std::runtime_error& error) {
        errors.addCurrentException({shown, 0, {}}, err::ErrorSeverity::Fatal);
        try {
            writeReport(reportFile, errors, shown);
        } catch (const std::runtime_error& another) {
            printError(QStringLiteral("veltor: ") + QString::fromUtf8(another.what()));
        }
        throw std::runtime_error(
            (shownName(shown) + QStringLiteral(": ") + QString::fromUtf8(error.what())).toStdString());
    }
    writeReport(reportFile, errors, shown);
    trace.write();
    return Done;
}

} // namespace veltor::tool
