// A line of settings, then the cells of a table: as CSV and as HTML, read back by small readers, they are
// what the table holds.

#include "Fuzz.h"

#include <veltor/utils/ItemModelToCsv.h>
#include <veltor/utils/ItemModelToHtml.h>

#include "models/CsvReader.h"
#include "models/NodeModel.h"

#include <QTextCodec>
#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamReader>

using namespace veltor::utils;
using veltor::fuzz::demand;
using veltor::test::Node;
using veltor::test::NodeModel;

namespace {

/// Cells are parted by vertical tabs; one that begins with a digit is a number.
void fill(NodeModel& model, const QString& text)
{
    const QStringList cells = text.split(QLatin1Char('\v'));
    Node* parent = &model.root;
    for (int i = 0; i < cells.size(); i += model.columns) {
        std::vector<QVariant> values;
        for (const QString& cell : cells.mid(i, model.columns)) {
            bool isNumber = false;
            const double number = cell.toDouble(&isNumber);
            values.push_back(isNumber && qIsFinite(number) ? QVariant(number) : QVariant(cell));
        }
        Node& node = model.add(*parent, values);
        parent = cells[i].startsWith(QLatin1Char('>'))   ? &node
                 : cells[i].startsWith(QLatin1Char('<')) ? &model.root
                                                         : parent;
    }
}

void list(const Node& parent, std::vector<const Node*>& rows)
{
    for (const auto& child : parent.children) {
        rows.push_back(child.get());
        list(*child, rows);
    }
}

bool means(const QString& field, const QVariant& value)
{
    return value.userType() == QMetaType::Double ? field.toDouble() == value.toDouble()
                                                 : field == value.toString();
}

void checkCsv(NodeModel& model, const QByteArray& settings, const std::vector<const Node*>& rows)
{
    const auto setting = [&settings](int i) { return i < settings.size() ? quint8(settings[i]) : 0; };
    CsvRules rules;
    rules.delimiter = QStringLiteral(",;\t\v|")[setting(0) % 5];
    rules.quote = QStringLiteral("\"'`")[setting(1) % 3];
    rules.lineEnd = QList<QByteArray>{"\r\n", "\n", "\r"}[setting(2) % 3];
    rules.quoting = static_cast<CsvRules::Quoting>(setting(3) % 3);
    rules.levels = CsvRules::Always;
    rules.encoding = QList<QByteArray>{"UTF-8", "UTF-16BE", "GB18030"}[setting(4) % 3];
    rules.mark = setting(5) % 2 != 0;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const ItemModelReport report = itemModelToCsv(model, buffer, rules);
    demand(report.isComplete() && report.replaced == 0, "the table is written", report.error);
    const QString text = QTextCodec::codecForName(rules.encoding)->toUnicode(buffer.data());
    const auto lines =
        veltor::test::readCsv(text, rules.delimiter, rules.quote, QString::fromLatin1(rules.lineEnd));
    demand(lines && lines->size() == rows.size() + 1, "the lines are those of the table", text);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const QStringList& line = (*lines)[i + 1];
        demand(line.size() == model.columns + 1, "a line has a field a column", text);
        for (std::size_t k = 0; k < rows[i]->values.size(); ++k) {
            demand(means(line[static_cast<int>(k) + 1], rows[i]->values[k]), "a field is read as it was",
                   text);
        }
    }
}

void checkHtml(NodeModel& model, const std::vector<const Node*>& rows)
{
    HtmlRules rules;
    rules.locale = QLocale::c();
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    demand(itemModelToHtml(model, buffer, rules).isComplete(), "the page is written");
    QXmlStreamReader xml(buffer.data());
    QStringList cells;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("td")) {
            cells << xml.readElementText();
        }
    }
    demand(!xml.hasError(), "the page is well-formed", xml.errorString() + QString::fromUtf8(buffer.data()));
    demand(cells.size() == static_cast<int>(rows.size()) * model.columns, "the page has every cell");
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t k = 0; k < rows[i]->values.size(); ++k) {
            const QVariant& value = rows[i]->values[k];
            const QString text = value.toString();
            const bool isSimple =
                value.userType() == QMetaType::QString && std::all_of(text.begin(), text.end(), [](QChar c) {
                    return c >= QLatin1Char(' ') && (c < QChar(0x7f) || c.isLetter());
                });
            const QString& cell = cells[static_cast<int>(i) * model.columns + static_cast<int>(k)];
            demand(!isSimple || cell == text, "a cell shows its text", cell);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    std::string_view rest = veltor::fuzz::textOf(bytes, size);
    const std::string_view first = veltor::fuzz::takeLine(rest);
    const QByteArray settings(first.data(), static_cast<int>(first.size()));
    NodeModel model;
    model.columns = settings.isEmpty() ? 1 : 1 + settings.size() % 3;
    fill(model, veltor::fuzz::decoded(rest));
    std::vector<const Node*> rows;
    list(model.root, rows);
    checkCsv(model, settings, rows);
    checkHtml(model, rows);
    return 0;
}
