// Shows a table to a user: as a page for the browser, and as a file for the spreadsheet.
//
//     show_table DIRECTORY

#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/utils/ItemModelToCsv.h>
#include <veltor/utils/ItemModelToHtml.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QCoreApplication>
#include <QtCore/QDate>
#include <QtCore/QDir>
#include <QtCore/QSaveFile>
#include <QtCore/QStringList>

#include <array>
#include <cstdio>

using veltor::utils::ItemModelReport;

namespace {

struct Bridge
{
    const char* name;
    const char* river;
    double lengthMetres;
    QDate checked;
};

const std::array<Bridge, 5> bridges{{
    {"Old bridge", "Bystraya", 112.5, QDate(2024, 5, 17)},
    {"Railway bridge, \"upper\" <1>", "Bystraya", 1240.25, QDate(2025, 9, 2)},
    {"Footbridge", "Tikhaya", 38.0, QDate(2019, 3, 30)},
    {"Ring road bridge", "Tikhaya", 645.125, QDate(2026, 1, 12)},
    {"=HYPERLINK(\"http://example.org\")", "Tikhaya", 12.0, QDate(2023, 7, 8)},
}};

/// The bridges, those last looked at before 2022 in red.
class BridgeModel : public QAbstractTableModel
{
public:
    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(bridges.size());
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : 4;
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        const Bridge& bridge = bridges.at(static_cast<std::size_t>(index.row()));
        if (role == Qt::ForegroundRole && bridge.checked.year() < 2022) {
            return QStringLiteral("#c00000");
        }
        if (role != Qt::DisplayRole) {
            return {};
        }
        const std::array<QVariant, 4> values{QString::fromUtf8(bridge.name), QString::fromUtf8(bridge.river),
                                             bridge.lengthMetres, bridge.checked};
        return values.at(static_cast<std::size_t>(index.column()));
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        const QStringList titles{QStringLiteral("Name"), QStringLiteral("River"), QStringLiteral("Length, m"),
                                 QStringLiteral("Checked")};
        return orientation == Qt::Horizontal && role == Qt::DisplayRole ? titles.at(section) : QVariant();
    }
};

int tell(const QString& error)
{
    std::fprintf(stderr, "%s\n", error.toUtf8().constData());
    return 1;
}

//! [page]
QString writePage(QAbstractItemModel& model, const QString& path,
                  veltor::concurrent::ProgressHandler& handler)
{
    veltor::utils::HtmlRules rules;
    rules.title = QStringLiteral("Bridges");
    rules.locale = QLocale(QLocale::English, QLocale::UnitedKingdom);
    rules.progress = [&handler](const ItemModelReport& soFar) {
        handler.setProgress(100.0 * soFar.share);
        return !handler.isCanceled();
    };
    QSaveFile file(path); // no half of a page under its name, whatever happens
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    const ItemModelReport report = veltor::utils::itemModelToHtml(model, file, rules);
    if (!report.isComplete()) {
        return report.error;
    }
    return file.commit() ? QString() : file.errorString();
}
//! [page]

//! [table]
QString writeTable(QAbstractItemModel& model, const QString& path)
{
    veltor::utils::CsvRules rules;
    rules.delimiter = QLatin1Char(';');
    rules.mark = true; // by which spreadsheets know UTF-8
    rules.locale = QLocale(QLocale::German);
    rules.guardFormulas = true;                                           // the names come from strangers
    rules.columns = {{0, -1, {}}, {2, -1, QStringLiteral("Length (m)")}}; // two of the four
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    const ItemModelReport report = veltor::utils::itemModelToCsv(model, file, rules);
    if (!report.isComplete()) {
        return report.error;
    }
    return file.commit() ? QString() : file.errorString();
}
//! [table]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    veltor::utils::installTranslation(QLocale(QLocale::English));
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 2) {
        std::fputs("Usage: show_table DIRECTORY\n", stderr);
        return 2;
    }
    const QDir directory(words[1]);
    BridgeModel model;
    veltor::concurrent::ProgressHandler handler;
    for (const QString& error :
         {writePage(model, directory.filePath(QStringLiteral("bridges.html")), handler),
          writeTable(model, directory.filePath(QStringLiteral("bridges.csv")))}) {
        if (!error.isEmpty()) {
            return tell(error);
        }
    }
    return 0;
}
