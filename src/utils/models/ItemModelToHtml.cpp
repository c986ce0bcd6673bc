// A model as an HTML document.
#include <veltor/utils/ItemModelToHtml.h>

#include "utils/models/CellLook.h"
#include "utils/models/ExportRun.h"
#include "utils/models/HtmlText.h"

#include <QTextCodec>
#include <QtCore/QAbstractItemModel>
#include <QtCore/QCoreApplication>
#include <QtCore/QSize>

#include <algorithm>

namespace veltor::utils {
namespace {

constexpr int longestWait = 1 << 19;   // characters that wait for the style sheet
constexpr int mostSpannedRows = 65534; // that browsers know
constexpr int mostSpannedColumns = 1000;

/// The classes for an alignment; empty when there is none.
QString alignmentClasses(const QVariant& value)
{
    // Flags of the enumeration, or its number.
    const int flags = value.canConvert<int>() ? value.toInt()
                      : value.isValid()       ? static_cast<int>(value.value<Qt::Alignment>())
                                              : 0;
    QStringList classes;
    const auto add = [flags, &classes](int flag, const char* name) {
        if ((flags & flag) != 0) {
            classes << QLatin1String(name);
        }
    };
    add(Qt::AlignLeft, "al");
    add(Qt::AlignRight, "ar");
    add(Qt::AlignHCenter, "ac");
    add(Qt::AlignJustify, "aj");
    add(Qt::AlignVCenter, "vm");
    add(Qt::AlignBottom, "vb");
    add(Qt::AlignBaseline, "vs");
    return classes.join(QLatin1Char(' '));
}

QTextCodec& utf8()
{
    return *QTextCodec::codecForName("UTF-8");
}

class HtmlWriter
{
public:
    HtmlWriter(QAbstractItemModel& model, QIODevice& device, const HtmlRules& rules)
        : m_rules(rules)
        , m_run(model, device, utf8(), rules, false)
        , m_covered(m_run.columns().size(), 0)
    {}

    ItemModelReport write();

private:
    void openDocument();
    QString title() const;
    void header();
    void row();
    void cell(std::size_t column);
    std::size_t spannedColumns(std::size_t column, int wanted) const;
    QString span(std::size_t column, const QModelIndex& index);
    template <typename DataOf>
    QString attributes(QString classes, DataOf dataOf);

    const HtmlRules& m_rules;
    ExportRun m_run;
    CellLooks m_looks;
    QString m_waiting; ///< the table's beginning, until its looks are known
    QString* m_html = &m_waiting;
    std::vector<int> m_covered; ///< by column: rows below that a span still covers
};

/// Of a cell or a header, whose data by role @p dataOf gives.
template <typename DataOf>
QString HtmlWriter::attributes(QString classes, DataOf dataOf)
{
    if (!m_rules.looks) {
        return classes.isEmpty() ? classes : QStringLiteral(" class=\"%1\"").arg(classes);
    }
    const QString aligned = alignmentClasses(dataOf(Qt::TextAlignmentRole));
    if (!aligned.isEmpty()) {
        classes += classes.isEmpty() ? aligned : QLatin1Char(' ') + aligned;
    }
    return m_looks.attributes(dataOf(Qt::ForegroundRole), dataOf(Qt::BackgroundRole), dataOf(Qt::FontRole),
                              classes);
}

QString HtmlWriter::title() const
{
    if (!m_rules.title.isEmpty()) {
        return m_rules.title;
    }
    const QString name = m_run.model().objectName();
    return name.isEmpty() ? QCoreApplication::translate("veltor::utils::ItemModelExport", "Таблица") : name;
}

/// The looks of what waits are known: what waits may go, and the rest directly.
void HtmlWriter::openDocument()
{
    QString& html = m_run.output().text();
    m_html = &html;
    const QString sheet = m_looks.closeSheet();
    const bool isTitled = m_rules.wholeDocument || !m_rules.title.isEmpty();
    QString title;
    appendEscaped(title, this->title());
    if (m_rules.wholeDocument) {
        const bool isLeftward = m_rules.locale.textDirection() == Qt::RightToLeft;
        html += QStringLiteral(
                    "<!DOCTYPE html>\n<html lang=\"%1\" dir=\"%2\">\n<head>\n<meta charset=\"utf-8\"/>\n"
                    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n")
                    .arg(m_rules.locale.language() == QLocale::C ? QStringLiteral("und")
                                                                 : m_rules.locale.bcp47Name(),
                         isLeftward ? QStringLiteral("rtl") : QStringLiteral("ltr"));
        html += QLatin1String("<title>") + title + QLatin1String("</title>\n<style>\n") + htmlStyleSheet() +
                sheet + QLatin1String("\n</style>\n</head>\n<body>\n<div class=\"sheet\">\n");
    }
    html += QLatin1String("<table>\n");
    if (isTitled) {
        html += QLatin1String("<caption>") + title + QLatin1String("</caption>\n");
    }
    html += m_waiting;
    m_waiting = QString();
}

void HtmlWriter::header()
{
    QString& html = *m_html;
    html += QLatin1String("<thead>\n<tr>");
    if (m_rules.rowHeaders) {
        html += QLatin1String("<td></td>");
    }
    for (std::size_t i = 0; i < m_run.columns().size(); ++i) {
        const int section = m_run.columns()[i].column;
        const auto dataOf = [this, section](int role) {
            return m_run.model().headerData(section, Qt::Horizontal, role);
        };
        html += QLatin1String("<th scope=\"col\"") + attributes({}, dataOf) + QLatin1Char('>');
        appendEscaped(html, m_run.title(i));
        html += QLatin1String("</th>");
    }
    html += QLatin1String("</tr>\n</thead>\n");
}

/// How many columns, from this one on, are shown side by side as in the model: at most @p wanted of it.
std::size_t HtmlWriter::spannedColumns(std::size_t column, int wanted) const
{
    const auto& columns = m_run.columns();
    const int end = columns[column].column + std::min(wanted, mostSpannedColumns);
    std::size_t count = 1;
    while (column + count < columns.size() && m_covered[column + count] == 0 &&
           columns[column + count].column > columns[column + count - 1].column &&
           columns[column + count].column < end) {
        ++count;
    }
    return count;
}

/// Marks what the cell covers. @return the attributes that say so
QString HtmlWriter::span(std::size_t column, const QModelIndex& index)
{
    const QSize size = m_rules.spans && index.isValid() ? m_run.model().span(index) : QSize(1, 1);
    if (size.width() <= 1 && size.height() <= 1) {
        return {};
    }
    const std::size_t columns = spannedColumns(column, size.width());
    const int rows =
        size.height() > 1 ? m_run.walk().rowsTogether(std::min(size.height(), mostSpannedRows)) : 1;
    for (std::size_t i = 0; i < columns; ++i) {
        m_covered[column + i] = i == 0 ? rows - 1 : rows; // the first is counted down with its own row
    }
    return (columns > 1 ? QStringLiteral(" colspan=\"%1\"").arg(columns) : QString()) +
           (rows > 1 ? QStringLiteral(" rowspan=\"%1\"").arg(rows) : QString());
}

void HtmlWriter::cell(std::size_t column)
{
    QString& html = *m_html;
    const QModelIndex index = m_run.index(column);
    const QVariant value = m_run.value(column, index);
    QString classes = CellText::isNumber(value) ? QStringLiteral("n") : QString();
    const int depth = column == 0 ? std::min(m_run.walk().depth(), mostIndents) : 0;
    if (depth > 0) {
        classes +=
            QStringLiteral("%1d%2").arg(classes.isEmpty() ? QString() : QStringLiteral(" ")).arg(depth);
    }
    const auto dataOf = [this, &index](int role) { return m_run.model().data(index, role); };
    html += QLatin1String("<td") + span(column, index) + attributes(classes, dataOf) + QLatin1Char('>');
    appendEscaped(html, m_run.cells().of(index, value).text);
    html += QLatin1String("</td>");
}

void HtmlWriter::row()
{
    QString& html = *m_html;
    const int depth = m_run.walk().depth();
    html += depth > 0 ? QStringLiteral("<tr data-level=\"%1\">").arg(depth) : QStringLiteral("<tr>");
    if (m_rules.rowHeaders) {
        html += QLatin1String("<th scope=\"row\">");
        appendEscaped(html, m_run.rowTitle());
        html += QLatin1String("</th>");
    }
    for (std::size_t i = 0; i < m_covered.size(); ++i) {
        if (m_covered[i] > 0) {
            --m_covered[i];
        } else {
            cell(i);
        }
    }
    html += QLatin1String("</tr>\n");
}

ItemModelReport HtmlWriter::write()
{
    if (!m_run.isPossible()) {
        return m_run.finish();
    }
    if (m_rules.header) {
        header();
    }
    *m_html += QLatin1String("<tbody>\n");
    if (!m_rules.wholeDocument) {
        openDocument(); // no style sheet to wait for
    }
    while (m_run.next()) {
        row();
        if (m_html == &m_waiting && m_waiting.size() >= longestWait) {
            openDocument();
        }
    }
    if (m_html == &m_waiting) {
        openDocument();
    }
    *m_html += QLatin1String("</tbody>\n</table>\n");
    if (m_rules.wholeDocument) {
        *m_html += QLatin1String("</div>\n</body>\n</html>\n");
    }
    return m_run.finish();
}

} // namespace

ItemModelReport itemModelToHtml(QAbstractItemModel& model, QIODevice& device, const HtmlRules& rules)
{
    return HtmlWriter(model, device, rules).write();
}

} // namespace veltor::utils
