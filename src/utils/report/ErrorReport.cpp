// Collected errors as a page, as text and as JSON.

#include "ErrorReport.h"

#include "ShownText.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace veltor::utils {
namespace {

using Entry = err::ErrorTracer::Entry;

class Words
{
    Q_DECLARE_TR_FUNCTIONS(ErrorTracer)
};

struct SeverityRow
{
    const char* name;    ///< in JSON and style sheet
    const char* heading; ///< untranslated
};
constexpr std::array<SeverityRow, ErrorReport::severities> severityRows{{
    {"note", QT_TRANSLATE_NOOP("ErrorTracer", "Замечания: %1")},
    {"warning", QT_TRANSLATE_NOOP("ErrorTracer", "Предупреждения: %1")},
    {"error", QT_TRANSLATE_NOOP("ErrorTracer", "Ошибки: %1")},
    {"fatal", QT_TRANSLATE_NOOP("ErrorTracer", "Прервало работу: %1")},
}};

// What browsers alone understand has a sheet of its own: Qt drops a whole one over a rule that it cannot
// read.
constexpr char pageBegin[] = R"(<!DOCTYPE html>
<html lang="%1">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>%2</title>
<style>
body { font-family: sans-serif; }
h2 { font-size: large; }
.text { white-space: pre-wrap; }
.count { font-weight: bold; }
.fatal, .error { color: #c62828; }
.warning { color: #b45309; }
.note { color: #2f6fbd; }
.more { font-style: italic; }
</style>
<style>
:root { color-scheme: light dark; }
body { line-height: 1.45; margin: 0 auto; max-width: 60rem; padding: 1rem; overflow-wrap: anywhere; }
h1 { font-size: 1.5rem; }
h2 { border-bottom: 2px solid; padding-bottom: .2rem; }
ul { padding-left: 1.4rem; }
h2 + ul > li { margin-bottom: .6rem; }
li ul { font-size: .92em; }
@media (prefers-color-scheme: dark) {
  .fatal, .error { color: #ff8a80; }
  .warning { color: #ffb74d; }
  .note { color: #90caf9; }
}
</style>
</head>
<body>
<h1>%2</h1>
)";

QString titleOr(const QString& title)
{
    return title.isEmpty() ? Words::tr("Что пошло не так") : title;
}

QString escaped(const QString& text)
{
    // Text that is written from the right does not turn what stands behind it.
    return QStringLiteral("<bdi>%1</bdi>").arg(shownText(text).toHtmlEscaped());
}

QString causesAsHtml(const QStringList& causes)
{
    QString html;
    for (const QString& cause : causes) {
        html += QStringLiteral("\n<ul class=\"causes\"><li>%1 <span class=\"text\">")
                    .arg(Words::tr("причина:").toHtmlEscaped()) +
                escaped(cause) + QStringLiteral("</span>");
    }
    for (int i = 0; i < causes.size(); ++i) {
        html += QStringLiteral("</li></ul>");
    }
    return html;
}

QString more(quint64 count)
{
    return Words::tr("и ещё %1").arg(count);
}

QString moreAsHtml(const QString& text)
{
    return QStringLiteral("<li class=\"more\">%1</li>\n").arg(text.toHtmlEscaped());
}

QString sourcesAsHtml(const Entry& entry)
{
    if (entry.sources.empty() && entry.moreSources == 0) {
        return {};
    }
    QString html = QStringLiteral("\n<ul class=\"sources\">\n");
    for (const err::ErrorSource& source : entry.sources) {
        html += QStringLiteral("<li>") + escaped(source.text()) + QStringLiteral("</li>\n");
    }
    if (entry.moreSources > 0) {
        html += moreAsHtml(more(entry.moreSources));
    }
    return html + QStringLiteral("</ul>");
}

QString entryAsHtml(const Entry& entry)
{
    QString html =
        QStringLiteral("<li><span class=\"text\">") + escaped(entry.text) + QStringLiteral("</span>");
    if (entry.count > 1) {
        html += QStringLiteral(" <span class=\"count\">×%1</span>").arg(entry.count);
    }
    return html + causesAsHtml(entry.causes) + sourcesAsHtml(entry) + QStringLiteral("</li>\n");
}

/// The text with each line but the first behind so many blanks.
QString indented(const QString& text, int blanks)
{
    return shownText(text).replace(QLatin1Char('\n'), QLatin1Char('\n') + QString(blanks, QLatin1Char(' ')));
}

QString entryAsText(const Entry& entry)
{
    QString text = QStringLiteral("- ") + indented(entry.text, 2);
    if (entry.count > 1) {
        text += QStringLiteral(" (×%1)").arg(entry.count);
    }
    int depth = 2;
    for (const QString& cause : entry.causes) {
        text += QLatin1Char('\n') + QString(depth, QLatin1Char(' ')) + Words::tr("причина:") +
                QLatin1Char(' ') + indented(cause, depth + 2);
        depth += 2;
    }
    for (const err::ErrorSource& source : entry.sources) {
        text += QStringLiteral("\n  * ") + indented(source.text(), 4);
    }
    if (entry.moreSources > 0) {
        text += QStringLiteral("\n  * ") + more(entry.moreSources);
    }
    return text + QLatin1Char('\n');
}

/// A section's heading, its entries, and what is said of those that were not kept.
struct Section
{
    const SeverityRow& row;
    QString heading;
    QString rest;
};

/// Calls for each severity that occurred, the worst first: begin(section), entry(entry)..., end(section).
template <typename Begin, typename EntryText, typename End>
void forEachSection(const ErrorReport& report, const Begin& begin, const EntryText& entryText, const End& end)
{
    for (std::size_t i = ErrorReport::severities; i-- > 0;) {
        if (report.counts[i] == 0) {
            continue;
        }
        const quint64 rest = report.notKept[i];
        const Section section{severityRows[i], Words::tr(severityRows[i].heading).arg(report.counts[i]),
                              rest > 0 ? Words::tr("и ещё %1, которые не показаны").arg(rest) : QString()};
        begin(section);
        for (const Entry& entry : report.entries) {
            if (static_cast<std::size_t>(entry.severity) == i) {
                entryText(entry);
            }
        }
        end(section);
    }
}

bool isClean(const ErrorReport& report)
{
    return report.counts == std::array<quint64, ErrorReport::severities>{};
}

QJsonObject asJson(const std::array<quint64, ErrorReport::severities>& counts)
{
    QJsonObject object;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        object.insert(QLatin1String(severityRows[i].name), static_cast<double>(counts[i]));
    }
    return object;
}

QJsonObject asJson(const Entry& entry)
{
    QJsonArray sources;
    for (const err::ErrorSource& source : entry.sources) {
        QJsonObject object;
        if (!source.file.isEmpty()) {
            object.insert(QStringLiteral("file"), source.file);
        }
        if (source.line > 0) {
            object.insert(QStringLiteral("line"), source.line);
        }
        if (!source.feature.isEmpty()) {
            object.insert(QStringLiteral("feature"), source.feature);
        }
        sources.append(object);
    }
    return {{QStringLiteral("severity"),
             QLatin1String(severityRows[static_cast<std::size_t>(entry.severity)].name)},
            {QStringLiteral("text"), entry.text},
            {QStringLiteral("causes"), QJsonArray::fromStringList(entry.causes)},
            {QStringLiteral("count"), static_cast<double>(entry.count)},
            {QStringLiteral("sources"), sources},
            {QStringLiteral("moreSources"), static_cast<double>(entry.moreSources)}};
}

} // namespace

void ErrorReport::writeHtml(QIODevice& device, const QString& title) const
{
    const auto write = [&device](const QString& text) { device.write(text.toUtf8()); };
    //: The language of these texts, as the attribute lang of HTML has it
    const QString language = Words::tr("ru");
    write(QString::fromUtf8(pageBegin).arg(language.toHtmlEscaped(),
                                           shownText(titleOr(title)).toHtmlEscaped()));
    if (isClean(*this)) {
        write(QStringLiteral("<p>%1</p>\n").arg(Words::tr("Ошибок нет.").toHtmlEscaped()));
    }
    forEachSection(
        *this,
        [&](const Section& section) {
            write(QStringLiteral("<h2 class=\"%1\">%2</h2>\n<ul>\n")
                      .arg(QLatin1String(section.row.name), section.heading.toHtmlEscaped()));
        },
        [&](const Entry& entry) { write(entryAsHtml(entry)); },
        [&](const Section& section) {
            if (!section.rest.isEmpty()) {
                write(moreAsHtml(section.rest));
            }
            write(QStringLiteral("</ul>\n"));
        });
    write(QStringLiteral("</body>\n</html>\n"));
}

void ErrorReport::writeText(QIODevice& device, const QString& title) const
{
    const auto write = [&device](const QString& text) { device.write(text.toUtf8()); };
    write(shownText(titleOr(title)) + QLatin1Char('\n'));
    if (isClean(*this)) {
        write(QLatin1Char('\n') + Words::tr("Ошибок нет.") + QLatin1Char('\n'));
    }
    forEachSection(
        *this,
        [&](const Section& section) { write(QLatin1Char('\n') + section.heading + QLatin1Char('\n')); },
        [&](const Entry& entry) { write(entryAsText(entry)); },
        [&](const Section& section) {
            if (!section.rest.isEmpty()) {
                write(QStringLiteral("- %1\n").arg(section.rest));
            }
        });
}

void ErrorReport::writeJson(QIODevice& device, const json::Format& format) const
{
    QJsonArray list;
    for (const Entry& entry : entries) {
        list.append(asJson(entry));
    }
    json::JsonFormatter(IOPtr(&device, [](QIODevice*) {}), format)
        .write(QJsonObject{{QStringLiteral("counts"), asJson(counts)},
                           {QStringLiteral("notKept"), asJson(notKept)},
                           {QStringLiteral("entries"), list}});
}

} // namespace veltor::utils
