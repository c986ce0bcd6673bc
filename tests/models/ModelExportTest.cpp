#include <veltor/utils/ItemModelToCsv.h>
#include <veltor/utils/ItemModelToHtml.h>
#include <veltor/utils/NumberToText.h>

#include "models/CsvReader.h"
#include "models/NodeModel.h"
#include "support/Printers.h"
#include "support/Text.h"

#include <QTextCodec>
#include <QtCore/QBuffer>
#include <QtCore/QDate>
#include <QtCore/QFile>
#include <QtCore/QSet>
#include <QtCore/QXmlStreamReader>
#ifdef VELTOR_TEST_LOOKS
#include <QtGui/QBrush>
#include <QtGui/QColor>
#include <QtGui/QFont>
#endif

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>

namespace veltor::utils {
namespace {

using test::Node;
using test::NodeModel;
using test::u;

using Table = test::CsvTable;

class Random
{
public:
    explicit Random(unsigned seed)
        : m_engine(seed)
    {}
    int below(int end) { return static_cast<int>(m_engine() % static_cast<unsigned>(end)); }

    QVariant value()
    {
        QString text;
        switch (below(6)) {
        case 0:
            return {};
        case 1:
            return below(2000000) - 1000000;
        case 2:
            return std::ldexp(static_cast<double>(m_engine()) - 2e9, below(200) - 100);
        default:
            for (int i = below(8); i > 0; --i) {
                text += QStringLiteral("ab;,\"'\n\r =ж<&>\u00e9\t").at(below(16));
            }
            return text;
        }
    }
    void fill(NodeModel& model, Node& parent, int depth)
    {
        for (int i = below(depth == 0 ? 12 : 4); i > 0; --i) {
            std::vector<QVariant> values;
            for (int column = 0; column < model.columns; ++column) {
                values.push_back(value());
            }
            Node& node = model.add(parent, values);
            if (depth < 4 && below(3) == 0) {
                fill(model, node, depth + 1);
            }
        }
    }

private:
    std::mt19937 m_engine;
};

Table linesOf(const QString& text, const CsvRules& rules)
{
    const auto lines = test::readCsv(text, rules.delimiter, rules.quote, QString::fromLatin1(rules.lineEnd));
    EXPECT_TRUE(lines) << text.toStdString();
    return lines.value_or(Table());
}

bool means(const QString& field, const QVariant& value)
{
    return value.userType() == QMetaType::Double ? field.toDouble() == value.toDouble()
                                                 : field == value.toString();
}

/// The rows of a model as they should come, each with its depth; without those of the number @p hidden.
void listRows(const Node& parent, int depth, std::vector<std::pair<int, const Node*>>& rows, int hidden = -1)
{
    for (std::size_t i = 0; i < parent.children.size(); ++i) {
        if (int(i) != hidden) {
            rows.emplace_back(depth, parent.children[i].get());
            listRows(*parent.children[i], depth + 1, rows, hidden);
        }
    }
}

TEST(ItemModelToCsv, IsReadBackAsTheModelWas)
{
    Random random(1);
    for (int round = 0; round < 600; ++round) {
        NodeModel model;
        model.columns = 1 + random.below(4);
        model.batch = random.below(4);
        random.fill(model, model.root, random.below(2) == 0 ? 0 : 5);
        CsvRules rules;
        rules.delimiter = QStringLiteral(",;\t")[random.below(3)];
        rules.quote = QStringLiteral("\"'")[random.below(2)];
        rules.lineEnd = QList<QByteArray>{"\r\n", "\n", "\r"}[random.below(3)];
        rules.quoting = static_cast<CsvRules::Quoting>(random.below(3));
        rules.levels = CsvRules::Always;
        rules.encoding = QList<QByteArray>{"UTF-8", "UTF-16LE", "UTF-32BE"}[random.below(3)];
        rules.mark = random.below(2) == 0;
        rules.header = random.below(2) == 0;
        for (int i = random.below(6); i > 0; --i) {
            rules.columns.push_back({random.below(model.columns), -1, QString()});
        }
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly | QIODevice::Text);
        const ItemModelReport report = itemModelToCsv(model, buffer, rules);
        ASSERT_TRUE(report.isComplete()) << report.error.toStdString();

        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QByteArray bytes = buffer.data();
        QString text =
            QTextCodec::codecForName(rules.encoding)->toUnicode(bytes.data(), bytes.size(), &state);
        ASSERT_EQ(text.startsWith(QChar(QChar::ByteOrderMark)), rules.mark);
        text.remove(QChar(QChar::ByteOrderMark));
        Table lines = linesOf(text, rules);
        lines.erase(lines.begin(), lines.begin() + (rules.header ? 1 : 0));
        std::vector<std::pair<int, const Node*>> rows;
        listRows(model.root, 0, rows);
        ASSERT_EQ(lines.size(), rows.size()) << text.toStdString();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            ASSERT_EQ(lines[i][0], QString::number(rows[i].first));
            for (int k = 1; k < lines[i].size(); ++k) {
                const int column = rules.columns.empty() ? k - 1 : rules.columns[std::size_t(k - 1)].column;
                ASSERT_TRUE(means(lines[i][k], rows[i].second->values[std::size_t(column)]))
                    << text.toStdString();
            }
        }
    }
}

/// The cells of an HTML table by rows and columns, what spans cover included as "^".
Table readHtml(const QByteArray& html)
{
    Table lines;
    std::vector<int> covered;
    QXmlStreamReader xml(html);
    while (!xml.atEnd()) {
        xml.readNext();
        const bool isCell = xml.isStartElement() && (xml.name() == u("td") || xml.name() == u("th"));
        if (xml.isStartElement() && xml.name() == u("tr")) {
            lines.emplace_back();
        }
        const auto skipCovered = [&] {
            QStringList& line = lines.back();
            covered.resize(std::max(covered.size(), std::size_t(line.size()) + 1));
            while (covered[std::size_t(line.size())] > 0) {
                --covered[std::size_t(line.size())];
                line << u("^");
                covered.resize(std::max(covered.size(), std::size_t(line.size()) + 1));
            }
        };
        if (isCell || (xml.isEndElement() && xml.name() == u("tr"))) {
            skipCovered();
        }
        if (isCell) {
            const int width = std::max(1, xml.attributes().value(u("colspan")).toInt());
            const int height = std::max(1, xml.attributes().value(u("rowspan")).toInt());
            covered.resize(std::max(covered.size(), std::size_t(lines.back().size() + width)));
            for (int i = 0; i < width; ++i) {
                const auto at = std::size_t(lines.back().size());
                EXPECT_EQ(covered[at], 0);
                covered[at] = height - 1;
                lines.back() << (i == 0 ? xml.readElementText() : u("^"));
            }
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString() << html.toStdString();
    EXPECT_THAT(covered, testing::Each(0)) << "a span leads below the table";
    return lines;
}

TEST(ItemModelToHtml, IsWellFormedAndHoldsEveryCellThatNoSpanCovers)
{
    Random random(2);
    for (int round = 0; round < 600; ++round) {
        NodeModel model;
        model.columns = 1 + random.below(4);
        model.batch = random.below(4);
        random.fill(model, model.root, random.below(2) == 0 ? 0 : 5);
        for (int i = random.below(4); i > 0; --i) {
            model.spans[{random.below(8), random.below(4)}] = QSize(1 + random.below(4), 1 + random.below(4));
        }
        const int hidden = random.below(6);
        HtmlRules rules;
        rules.locale = QLocale::c();
        rules.isRowHidden = [hidden](int row, const QModelIndex&) { return row == hidden; };
        rules.wholeDocument = random.below(2) == 0;
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const ItemModelReport report = itemModelToHtml(model, buffer, rules);
        ASSERT_TRUE(report.isComplete()) << report.error.toStdString();
        Table lines = readHtml(buffer.data());
        ASSERT_EQ(lines.size(), std::size_t(report.rows) + 1);
        ASSERT_EQ(lines.front().front(), u("H<0>"));

        std::vector<std::pair<int, const Node*>> rows;
        listRows(model.root, 0, rows, hidden);
        ASSERT_EQ(lines.size(), rows.size() + 1);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            ASSERT_EQ(lines[i + 1].size(), model.columns) << buffer.data().toStdString();
            for (int k = 0; k < model.columns; ++k) {
                QVariant value = rows[i].second->values[std::size_t(k)];
                if (value.userType() == QMetaType::QString) {
                    value = value.toString().replace(u("\r\n"), u("\n")).replace(u("\r"), u("\n"));
                }
                const QString shown = lines[i + 1][k];
                ASSERT_TRUE((shown == u("^") && !model.spans.isEmpty()) || means(shown, value) ||
                            shown == toString(value.toDouble()))
                    << buffer.data().toStdString();
            }
        }
    }
}

/// Rows come and go while the progress function runs: those that stay are written once.
TEST(ItemModelExport, CopesWithRowsThatComeAndGo)
{
    Random random(3);
    for (int round = 0; round < 300; ++round) {
        NodeModel model;
        model.columns = 600; // so that each row is reported
        int number = 0;
        std::vector<Node*> nodes{&model.root};
        for (int i = 0; i < 20; ++i) {
            nodes.push_back(&model.add(*nodes[std::size_t(random.below(int(nodes.size())))], {++number}));
        }
        QSet<QString> gone;
        QSet<QString> news;
        CsvRules rules;
        rules.levels = CsvRules::Never;
        rules.columns.assign(600, {599, -1, QString()});
        rules.columns[0].column = 0;
        rules.progress = [&](const ItemModelReport&) {
            QModelIndex parent;
            while (random.below(2) == 0 && model.rowCount(parent) > 0) {
                parent = model.index(random.below(model.rowCount(parent)), 0, parent);
            }
            const int rows = model.rowCount(parent);
            if (rows > 0 && random.below(2) == 0) {
                const int row = random.below(rows);
                std::vector<std::pair<int, const Node*>> below;
                const Node& node = model.nodeOf(model.index(row, 0, parent));
                listRows(node, 0, below);
                below.emplace_back(0, &node);
                for (const auto& lost : below) {
                    gone << lost.second->values[0].toString();
                }
                model.remove(parent, row);
            } else {
                news << QString::number(++number);
                model.insert(parent, random.below(rows + 1), {number});
            }
            return true;
        };
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const ItemModelReport report = itemModelToCsv(model, buffer, rules);
        ASSERT_TRUE(report.isComplete()) << report.error.toStdString();
        QHash<QString, int> seen;
        for (const QStringList& line : linesOf(QString::fromUtf8(buffer.data()), rules)) {
            ++seen[line[0]];
        }
        for (int i = 1; i <= number; ++i) {
            const QString name = QString::number(i);
            ASSERT_LE(seen.value(name), 1);
            ASSERT_TRUE(seen.value(name) == 1 || gone.contains(name) || news.contains(name)) << i;
        }
    }
}

TEST(ItemModelExport, TellsWhatEndedIt)
{
    NodeModel model;
    for (int i = 0; i < 5000; ++i) {
        model.add(model.root, {i, u("text"), QVariant::fromValue(QModelIndex())});
    }
    QBuffer buffer;
    EXPECT_THAT(itemModelToCsv(model, buffer).error, testing::Eq(u("'QBuffer' не открыт для записи")));
    buffer.open(QIODevice::WriteOnly);
    CsvRules rules;
    EXPECT_EQ(itemModelToCsv(model, buffer, rules).untold, 5000);
    const auto errorWith = [&](const CsvRules& wrong) { return itemModelToCsv(model, buffer, wrong).error; };
    rules.columns = {{3, -1, QString()}};
    EXPECT_EQ(errorWith(rules), u("в таблице нет столбца 3"));
    rules = {};
    NodeModel other;
    other.add(other.root, {1});
    rules.root = other.index(0, 0);
    EXPECT_EQ(errorWith(rules), u("начальная строка принадлежит другой таблице"));
    rules = {};
    rules.encoding = "none";
    EXPECT_EQ(errorWith(rules), u("Неизвестная кодировка none"));
    rules = {};
    rules.delimiter = rules.quote;
    EXPECT_NE(errorWith(rules), QString());
    rules = {};
    rules.progress = [&](const ItemModelReport&) {
        Q_EMIT model.layoutChanged();
        return true;
    };
    EXPECT_EQ(errorWith(rules), u("таблица изменилась во время записи"));
    rules.progress = [](const ItemModelReport& soFar) { return soFar.share < 0.5; };
    const ItemModelReport stopped = itemModelToCsv(model, buffer, rules);
    EXPECT_TRUE(stopped.canceled && !stopped.isComplete() && stopped.rows > 2000 && stopped.rows < 3500);
    rules.progress = [](const ItemModelReport&) -> bool { throw std::runtime_error("no"); };
    EXPECT_THROW(static_cast<void>(itemModelToCsv(model, buffer, rules)), std::runtime_error);
#ifdef Q_OS_LINUX
    QFile full(u("/dev/full"));
    ASSERT_TRUE(full.open(QIODevice::WriteOnly));
    EXPECT_THAT(itemModelToHtml(model, full).error.toStdString(),
                testing::HasSubstr("/dev/full': No space left"));
#endif
    NodeModel deaf;
    deaf.batch = 1;
    deaf.isDeaf = true;
    deaf.add(deaf.root, {1});
    EXPECT_EQ(itemModelToCsv(deaf, buffer).error, u("источник таблицы не передал всех строк"));
}

TEST(ItemModelToCsv, FollowsItsRules)
{
    NodeModel model;
    model.columns = 2;
    model.add(model.root, {u("=1+1"), 1234567.25});
    model.add(model.root, {u("-5"), -5});
    model.add(model.root, {QDate(2026, 11, 21), 0.1F});
    model.add(model.root, {QStringList{u("a"), u("b")}, u("ж")});
    CsvRules rules;
    rules.guardFormulas = true;
    rules.columns = {{0, -1, u("ID")}, {1, -1, QString()}};
    const auto written = [&] {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        EXPECT_TRUE(itemModelToCsv(model, buffer, rules).isComplete());
        return buffer.data().toStdString();
    };
    EXPECT_EQ(written(), "\"ID\",H<1>\r\n\"'=1+1\",1234567.25\r\n-5,-5\r\n2026-11-21,0.1\r\n\"a, b\",ж\r\n");
    rules = {};
    rules.header = false;
    rules.delimiter = QLatin1Char(';');
    rules.locale = QLocale(QLocale::German);
    rules.lineEnd = "\n";
    rules.encoding = "ISO-8859-1";
    EXPECT_EQ(written(), "=1+1;1234567,25\n-5;-5\n21.11.26;0,1\na, b;?\n");
    rules.numberFormat = NumberFormat(NumberFormat::Exponential);
    rules.hiddenColumns = {0};
    EXPECT_EQ(written(), "1.23456725e6\n-5\n1e-1\n?\n");
}

#ifdef VELTOR_TEST_LOOKS
TEST(ItemModelToHtml, HasTheLooksOfTheModelInLightAndDark)
{
    NodeModel model;
    model.columns = 5;
    QFont bold;
    bold.setBold(true);
    bold.setFamily(u("A, \"B\""));
    Node& node = model.add(model.root, {1, 2, 3, 4, 5});
    node.looks = {
        {{Qt::ForegroundRole, QColor(Qt::yellow)}, {Qt::TextAlignmentRole, Qt::AlignHCenter}},
        {{Qt::BackgroundRole, QBrush(QColor(0, 0, 128))}},
        {{Qt::ForegroundRole, QColor(1, 2, 3)}, {Qt::BackgroundRole, QColor(255, 0, 0, 128)}},
        {{Qt::FontRole, bold}, {Qt::TextAlignmentRole, QVariant::fromValue(Qt::Alignment(Qt::AlignLeft))}},
        {{Qt::ForegroundRole, QColor()}, {Qt::BackgroundRole, QBrush(Qt::DiagCrossPattern)}}};
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(itemModelToHtml(model, buffer).isComplete());
    const std::string html = buffer.data().toStdString();
    const char* const expected[] = {"<td class=\"n ac c0\">1</td>",
                                    "<td class=\"n c1\">2</td>",
                                    "<td class=\"n c2\">3</td>",
                                    "<td class=\"n al c3\">4</td>",
                                    "<td class=\"n\">5</td>",
                                    "\n.c0{color:#737300;}\n.c1{color:#e1e5ea;background:#000080;}\n",
                                    "\n.c2{color:#010203;background:#ff7f7f;}\n",
                                    ".c3{font-family:\"A\\00002c  \\000022 B\\000022 \";font-weight:700;}",
                                    "@media (prefers-color-scheme:dark){\n.c0{color:#ffff00;}\n.c2{color:#"};
    for (const char* const part : expected) {
        EXPECT_THAT(html, testing::HasSubstr(part));
    }
}
#endif

} // namespace
} // namespace veltor::utils
