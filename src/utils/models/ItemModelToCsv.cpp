// A model as comma-separated values.
#include <veltor/utils/ItemModelToCsv.h>

#include <veltor/utils/TextCodecs.h>

#include "utils/models/ExportRun.h"

#include <QTextCodec>
#include <QtCore/QCoreApplication>

#include <stdexcept>
#include <utility>

namespace veltor::utils {
namespace {

/// Begins a formula for some spreadsheet, the wide forms for those of East Asia.
bool beginsFormula(const QString& text)
{
    static const QString beginnings = QStringLiteral("=+-@\t\r\n\uff1d\uff0b\uff0d\uff20");
    return !text.isEmpty() && beginnings.contains(text.at(0));
}

bool isUnicode(const QTextCodec& codec)
{
    return codec.name().startsWith("UTF-");
}

class CsvWriter
{
public:
    CsvWriter(QAbstractItemModel& model, QIODevice& device, QTextCodec& codec, const CsvRules& rules)
        : m_rules(rules)
        , m_run(model, device, codec, rules, true)
        , m_text(m_run.output().text())
        , m_lineEnd(QString::fromLatin1(rules.lineEnd))
    {}

    ItemModelReport write(bool mark);

private:
    void header();
    void row();
    void field(const QString& text, bool isNumber);
    void endLine();

    const CsvRules& m_rules;
    ExportRun m_run;
    QString& m_text;
    const QString m_lineEnd;
    bool m_levels = false;
    int m_fields = 0;      ///< of the line
    bool m_isFirst = true; ///< no text was written yet
    bool m_bare = false;   ///< it has none but an empty one without quotes
};

void CsvWriter::field(const QString& text, bool isNumber)
{
    if (m_fields++ > 0) {
        m_text += m_rules.delimiter;
    }
    const bool isGuarded = m_rules.guardFormulas && !isNumber && beginsFormula(text) && [&text] {
        bool isNumeral = false;
        static_cast<void>(text.toDouble(&isNumeral));
        return !isNumeral;
    }();
    bool quoted =
        isGuarded || m_rules.quoting == CsvRules::All || (m_rules.quoting == CsvRules::Texts && !isNumber);
    if (!quoted && !text.isEmpty()) {
        // A file that begins with ID is taken for one of another format by spreadsheets.
        quoted = std::exchange(m_isFirst, false) && text.startsWith(QLatin1String("ID"));
        quoted = quoted || text.at(0).isSpace() || text.at(text.size() - 1).isSpace();
        for (const QChar c : text) {
            quoted = quoted || c == m_rules.delimiter || c == m_rules.quote || c == QLatin1Char('\n') ||
                     c == QLatin1Char('\r');
        }
    }
    m_bare = m_fields == 1 && text.isEmpty() && !quoted;
    if (!quoted) {
        m_text += text;
        return;
    }
    m_text += m_rules.quote;
    if (isGuarded) {
        m_text += QLatin1Char('\'');
    }
    for (const QChar c : text) {
        m_text += c;
        if (c == m_rules.quote) {
            m_text += c;
        }
    }
    m_text += m_rules.quote;
}

void CsvWriter::endLine()
{
    if (m_bare) {
        m_text += m_rules.quote;
        m_text += m_rules.quote;
    }
    m_text += m_lineEnd;
    m_fields = 0;
    m_bare = false;
}

void CsvWriter::header()
{
    if (m_levels) {
        field(QCoreApplication::translate("veltor::utils::ItemModelExport", "Уровень"), false);
    }
    if (m_rules.rowHeaders) {
        field(QString(), false);
    }
    for (std::size_t i = 0; i < m_run.columns().size(); ++i) {
        field(m_run.title(i), false);
    }
    endLine();
}

void CsvWriter::row()
{
    if (m_levels) {
        field(QString::number(m_run.walk().depth()), true);
    }
    if (m_rules.rowHeaders) {
        field(m_run.rowTitle(), false);
    }
    for (std::size_t i = 0; i < m_run.columns().size(); ++i) {
        const QModelIndex index = m_run.index(i);
        const CellText::Result cell = m_run.cells().of(index, m_run.value(i, index));
        field(cell.text, cell.isNumber);
    }
    endLine();
}

ItemModelReport CsvWriter::write(bool mark)
{
    if (mark) {
        m_text += QChar(QChar::ByteOrderMark);
    }
    m_levels =
        m_rules.levels == CsvRules::Always || (m_rules.levels == CsvRules::OfTrees && m_run.walk().isTree());
    if (m_rules.header) {
        header();
    }
    while (m_run.next()) {
        row();
    }
    return m_run.finish();
}

/// What is wrong with the rules; empty when nothing is.
QString faultOf(const CsvRules& rules)
{
    const QString breaks = QStringLiteral("\r\n");
    if (rules.delimiter.isNull() || rules.quote.isNull() || rules.delimiter == rules.quote ||
        rules.delimiter.isSurrogate() || rules.quote.isSurrogate() || breaks.contains(rules.delimiter) ||
        breaks.contains(rules.quote)) {
        return QCoreApplication::translate("veltor::utils::ItemModelExport",
                                           "разделитель и кавычка CSV не годятся вместе");
    }
    if (rules.lineEnd != "\r\n" && rules.lineEnd != "\n" && rules.lineEnd != "\r") {
        return QCoreApplication::translate("veltor::utils::ItemModelExport", "недопустимый конец строки CSV");
    }
    return {};
}

} // namespace

ItemModelReport itemModelToCsv(QAbstractItemModel& model, QIODevice& device, const CsvRules& rules)
{
    ItemModelReport refused;
    refused.error = faultOf(rules);
    QTextCodec* codec = nullptr;
    try {
        codec = codecForName(QString::fromLatin1(rules.encoding));
    } catch (const std::invalid_argument& unknown) {
        refused.error = QString::fromUtf8(unknown.what());
    }
    if (!refused.error.isEmpty()) {
        return refused;
    }
    return CsvWriter(model, device, *codec, rules).write(rules.mark && isUnicode(*codec));
}

} // namespace veltor::utils
