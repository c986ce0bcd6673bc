#pragma once

#include <veltor/utils/NumberFormat.h>

#include <QtCore/QLocale>
#include <QtCore/QModelIndex>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace veltor::utils {

/// One column of what is written. A plain value.
struct ItemModelColumn
{
    int column = 0; ///< of the model; one that the model lacks is an error
    int role = -1;  ///< what of its items; -1 for ItemModelRules::role
    QString title;  ///< its header; a null one for the model's own
};

/// What an export of an item model did, or has done so far. A plain value.
struct ItemModelReport
{
    qint64 rows = 0;       ///< written, children included and headers not
    double share = 0.0;    ///< of the rows directly below the root that are known and done, 0 to 1
    qint64 untold = 0;     ///< values whose type has no text; their fields are empty
    qint64 replaced = 0;   ///< characters that the encoding lacks; a question mark stands in their place
    bool canceled = false; ///< the progress function wanted no more
    QString error;         ///< why it ended early, for the user, with the file and the system's reason

    /// All rows were written and taken by the device.
    [[nodiscard]] bool isComplete() const { return !canceled && error.isEmpty(); }
};

/// What of an item model is written, and how its values become text; common to itemModelToHtml() and
/// itemModelToCsv(). A plain value.
///
/// Texts stay as they are. Numbers with fractions are written by @ref numberFormat, or by @ref locale: to be
/// shown as toLocalizedString() has them, as data with all digits by which the same number is read back.
/// Dates and times are written by the locale too, in the C locale by ISO 8601. Lists are joined by commas;
/// points, sizes and rectangles look as toLocalizedString() has them; other types as Qt converts them to
/// text. A value without such a conversion leaves its field empty and is counted.
struct ItemModelRules
{
    QModelIndex root;                     ///< what lies below it is written; the whole model at first
    int role = Qt::DisplayRole;           ///< what is written of an item
    std::vector<ItemModelColumn> columns; ///< in this order; those that the root has when it is empty
    std::vector<int> hiddenColumns;       ///< of the model, left out of either
    /// Rows to leave out with all below them, such as QTreeView::isRowHidden(); may be empty.
    std::function<bool(int row, const QModelIndex& parent)> isRowHidden;
    bool children = true;    ///< all levels of a tree; else only the rows directly below the root
    bool header = true;      ///< a line with the titles of the columns
    bool rowHeaders = false; ///< the model's headers of rows, before the first column

    QLocale locale;                           ///< of numbers, dates and times
    std::optional<NumberFormat> numberFormat; ///< of numbers with fractions, and by its locale of others

    /// A text for a value in place of the one described above; nothing to keep that. May be empty.
    std::function<std::optional<QString>(const QModelIndex& index, const QVariant& value)> text;
    /// Called now and then, every thousand fields or so, in the thread of the export. May be empty.
    /// @return false to stop. An exception stops as well, and passes
    std::function<bool(const ItemModelReport& soFar)> progress;
};

} // namespace veltor::utils
