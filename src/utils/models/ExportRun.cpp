// What the exports of a model to HTML and CSV share.
#include "utils/models/ExportRun.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QCoreApplication>

#include <algorithm>

namespace veltor::utils {
namespace {

constexpr std::size_t fieldsPerReport = 1024;

} // namespace

ExportRun::ExportRun(QAbstractItemModel& model, QIODevice& device, QTextCodec& codec,
                     const ItemModelRules& rules, bool isData)
    : m_model(model)
    , m_rules(rules)
    , m_walk(model, rules)
    , m_cells(rules, isData)
    , m_output(device, codec)
{
    m_report.error = m_output.error();
    chooseColumns();
}

void ExportRun::chooseColumns()
{
    const int count = m_model.columnCount(m_rules.root);
    m_columns = m_rules.columns;
    for (int i = 0; m_rules.columns.empty() && i < count; ++i) {
        m_columns.push_back({i, -1, QString()});
    }
    const auto& hidden = m_rules.hiddenColumns;
    const auto isHidden = [&hidden](const ItemModelColumn& column) {
        return std::find(hidden.begin(), hidden.end(), column.column) != hidden.end();
    };
    m_columns.erase(std::remove_if(m_columns.begin(), m_columns.end(), isHidden), m_columns.end());
    for (const ItemModelColumn& column : m_columns) {
        if ((column.column < 0 || column.column >= count) && m_report.error.isEmpty()) {
            m_report.error =
                QCoreApplication::translate("veltor::utils::ItemModelExport", "в таблице нет столбца %1")
                    .arg(column.column);
        }
    }
}

QString ExportRun::title(std::size_t column) const
{
    const ItemModelColumn& chosen = m_columns[column];
    return chosen.title.isNull()
               ? m_model.headerData(chosen.column, Qt::Horizontal, Qt::DisplayRole).toString()
               : chosen.title;
}

QVariant ExportRun::value(std::size_t column, const QModelIndex& index) const
{
    const int role = m_columns[column].role;
    return index.isValid() ? m_model.data(index, role < 0 ? m_rules.role : role) : QVariant();
}

QString ExportRun::rowTitle() const
{
    return m_model.headerData(m_walk.row(), Qt::Vertical, Qt::DisplayRole).toString();
}

/// Tells the progress function. @return it wants more
bool ExportRun::report()
{
    m_unreported = 0;
    if (!m_rules.progress) {
        return true;
    }
    m_report.share = m_walk.share();
    m_report.untold = m_cells.untold();
    m_report.replaced = m_output.replaced();
    m_report.canceled = !m_rules.progress(m_report);
    return !m_report.canceled;
}

bool ExportRun::next()
{
    m_unreported += m_columns.size() + 1;
    if (!m_report.error.isEmpty() || !m_output.flushMuch() || (m_unreported > fieldsPerReport && !report()) ||
        !m_walk.next()) {
        return false;
    }
    ++m_report.rows;
    return true;
}

ItemModelReport ExportRun::finish()
{
    if (m_report.error.isEmpty()) {
        m_output.finish(); // after a fault of the model too: what was read is written
        m_report.error = m_output.error().isEmpty() ? m_walk.error() : m_output.error();
    }
    m_report.share = m_walk.share();
    m_report.untold = m_cells.untold();
    m_report.replaced = m_output.replaced();
    return m_report;
}

} // namespace veltor::utils
