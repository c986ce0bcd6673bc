#pragma once

#include <veltor/Export.h>
#include <veltor/utils/ItemModelExport.h>

#include <QtCore/QByteArray>
#include <QtCore/QChar>

class QAbstractItemModel;
class QIODevice;

namespace veltor::utils {

/// How itemModelToCsv() writes. The defaults give what RFC 4180 describes, in UTF-8 without a mark, with
/// numbers of the C locale. A plain value.
struct CsvRules : ItemModelRules
{
    /// Which fields stand in quotes.
    enum Quoting
    {
        WhenNeeded, ///< those that would be misread without
        Texts,      ///< all but numbers
        All,        ///< all
    };
    /// When each line begins with the depth of its row, 0 for the rows directly below the root.
    enum Levels
    {
        OfTrees, ///< when a row has children
        Always,  ///< for trees and tables alike
        Never,   ///< never: what belongs to what is lost
    };

    CsvRules() { locale = QLocale::c(); }

    QChar delimiter = QLatin1Char(',');           ///< neither the quote nor a line break
    QChar quote = QLatin1Char('"');               ///< doubled within a field
    QByteArray lineEnd = QByteArray("\r\n", 2);   ///< one of CR LF, LF and CR, after every line
    Quoting quoting = WhenNeeded;                 ///< which fields stand in quotes
    Levels levels = OfTrees;                      ///< when there is a column of depths
    QByteArray encoding = QByteArray("UTF-8", 5); ///< as codecForName() knows it
    bool mark = false; ///< begin with a byte-order mark, where the encoding is one of Unicode
    /// Put an apostrophe before texts that spreadsheets take for formulas: that begin with `=`, `+`, `-`,
    /// `@`, a tab or a line break, and are no number. Such a text can fetch and send data when the table is
    /// opened. To be set for texts of strangers that go to a spreadsheet; the apostrophe stays in the data.
    bool guardFormulas = false;
};

/// Writes a model as comma-separated values, a row at a time.
///
///     CsvRules rules;
///     rules.delimiter = QLatin1Char(';');
///     rules.locale = QLocale();  // as spreadsheets of the user's country read it
///     rules.mark = true;
///     const ItemModelReport report = itemModelToCsv(model, file, rules);
///
/// Fields with the delimiter, quotes, line breaks or blanks at their ends are quoted; so is the empty field
/// of a line that has no other, which readers would take for an empty line. Numbers have no group separators.
/// Spans are not looked at: every cell has its field.
///
/// Rows of a tree come a parent before its children, each line begun by the depth of its row; the line of
/// headers calls that column "Уровень". Whether a model is a tree is asked of the rows directly below the
/// root, which are all loaded for it; models of Qt's table and list classes are none.
///
/// Memory, models that load on demand, changes of the model meanwhile and the device: as itemModelToHtml()
/// has it. A text device's own line breaks are off for the time.
///
/// @return what was done; rules that contradict each other are an error. Reentrant.
[[nodiscard]] VELTOR_UTILS_EXPORT ItemModelReport itemModelToCsv(QAbstractItemModel& model, QIODevice& device,
                                                                 const CsvRules& rules = {});

} // namespace veltor::utils
