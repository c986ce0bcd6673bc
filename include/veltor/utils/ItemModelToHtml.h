#pragma once

#include <veltor/Export.h>
#include <veltor/utils/ItemModelExport.h>

class QAbstractItemModel;
class QIODevice;

namespace veltor::utils {

/// How itemModelToHtml() writes. A plain value.
struct HtmlRules : ItemModelRules
{
    QString title;             ///< of the document and above the table; the model's object name when empty
    bool wholeDocument = true; ///< else the `<table>` alone, to stand in a document of the caller's
    bool looks = true;         ///< colours, fonts and alignments of the model
    bool spans = true;         ///< QAbstractItemModel::span()
};

/// Writes a model as an HTML document in UTF-8, a row at a time.
///
///     QSaveFile file(path);
///     if (!file.open(QIODevice::WriteOnly)) ...
///     const ItemModelReport report = itemModelToHtml(model, file);
///     if (!report.isComplete() || !file.commit()) ...
///
/// The document is well-formed XML too, needs nothing from elsewhere, has no script, follows the reader's
/// choice of light or dark, and is readable on a narrow screen, where the table scrolls under its headers.
/// All texts are escaped; characters that no document may hold become U+FFFD.
///
/// - Colours come from Qt::ForegroundRole and Qt::BackgroundRole, as colours or as brushes of one colour,
///   fonts from Qt::FontRole, as far as they differ from the application's. Looks that many cells share are
///   classes of the style sheet. Where a model gives one of the two colours alone, the other is chosen, or
///   the given one moved, so that the text can be read on light and on dark.
/// - Numbers stand at the right where Qt::TextAlignmentRole says nothing else.
/// - What a span covers is left out. One that reaches over hidden columns or rows is as much shorter; one
///   over rows ends before a row that follows the children of another.
/// - Rows of a tree are indented by their depth, to 12 levels; the attribute `data-level` has the depth.
///
/// Memory is bounded by a row and by a part of the document of 1 MiB that waits for its style sheet.
/// Models that load their rows on demand are loaded; one that announces more rows and gives none is an
/// error. The model may gain and lose rows meanwhile, in the progress function say; other changes of
/// its structure end the export with an error.
///
/// @param model   used in the thread that it lives in
/// @param device  open for writing. A file is flushed at the end, not synchronised; what was written before
///                an error stays
/// @param rules   what is written, and how
/// @return what was done. Reentrant.
[[nodiscard]] VELTOR_UTILS_EXPORT ItemModelReport itemModelToHtml(QAbstractItemModel& model,
                                                                  QIODevice& device,
                                                                  const HtmlRules& rules = {});

} // namespace veltor::utils
