#pragma once

#include "utils/models/CellText.h"
#include "utils/models/ModelWalk.h"
#include "utils/models/TextOutput.h"

#include <vector>

namespace veltor::utils {

/// What the exports of a model share: columns, the way through the rows and to the device, the report.
class ExportRun
{
public:
    /// @param isData  see CellText
    ExportRun(QAbstractItemModel& model, QIODevice& device, QTextCodec& codec, const ItemModelRules& rules,
              bool isData);

    /// The device, the root and the columns are such that it can begin.
    [[nodiscard]] bool isPossible() const { return m_report.error.isEmpty(); }
    /// Goes to the next row. False at the end, after an error, and when no more is wanted.
    bool next();
    /// Hands over what is left. @return what was done
    ItemModelReport finish();

    [[nodiscard]] const std::vector<ItemModelColumn>& columns() const { return m_columns; }
    /// By its place among columns().
    [[nodiscard]] QString title(std::size_t column) const;
    [[nodiscard]] QModelIndex index(std::size_t column) const
    {
        return m_walk.index(m_columns[column].column);
    }
    [[nodiscard]] QVariant value(std::size_t column, const QModelIndex& index) const;
    /// The model's header of the current row.
    [[nodiscard]] QString rowTitle() const;

    [[nodiscard]] QAbstractItemModel& model() const { return m_model; }
    [[nodiscard]] ModelWalk& walk() { return m_walk; }
    [[nodiscard]] CellText& cells() { return m_cells; }
    [[nodiscard]] TextOutput& output() { return m_output; }

private:
    void chooseColumns();
    bool report();

    QAbstractItemModel& m_model;
    const ItemModelRules& m_rules;
    ModelWalk m_walk;
    CellText m_cells;
    TextOutput m_output;
    std::vector<ItemModelColumn> m_columns;
    ItemModelReport m_report;
    std::size_t m_unreported = 0; ///< fields since the last call of the progress function
};

} // namespace veltor::utils
