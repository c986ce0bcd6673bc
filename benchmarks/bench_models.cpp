// A table of numbers and texts to a file: by the library, and by the loop that one would write by hand, which
// knows this table: no escapes, no loading, no looks, no errors.

#include <veltor/utils/ItemModelToCsv.h>
#include <veltor/utils/ItemModelToHtml.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdlib>

namespace {

using namespace veltor::utils;

/// Rows that are made as they are asked for.
class Rows : public QAbstractTableModel
{
public:
    explicit Rows(int rows)
        : m_rows(rows)
    {}
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 5; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole) {
            return {};
        }
        switch (index.column()) {
        case 0:
            return index.row();
        case 1:
            return QStringLiteral("Садовая улица");
        case 2:
            return index.row() * 0.125;
        case 3:
            return QStringLiteral("residential");
        default:
            return index.row() % 97;
        }
    }

private:
    int m_rows;
};

QString path()
{
    static const QTemporaryDir directory;
    return directory.filePath(QStringLiteral("table"));
}

/// Runs @p write on an open file; the peak is that of the whole program so far.
template <typename Write>
void toFile(benchmark::State& state, Write write)
{
    Rows rows(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || !write(rows, file)) {
            std::abort();
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["MB"] = static_cast<double>(QFile(path()).size()) / 1e6;
    state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1e3;
}

QByteArray textOf(const QVariant& value)
{
    return value.userType() == QMetaType::Double ? QByteArray::number(value.toDouble(), 'g', 17)
                                                 : value.toString().toUtf8();
}

bool byHand(Rows& rows, QFile& file, const char* before, const char* between, const char* after)
{
    QByteArray line;
    for (int row = 0; row < rows.rowCount({}); ++row) {
        line = before;
        for (int column = 0; column < 5; ++column) {
            line += column > 0 ? between : "";
            line += textOf(rows.data(rows.index(row, column), Qt::DisplayRole));
        }
        line += after;
        file.write(line);
    }
    return true;
}

void Csv_ByHand(benchmark::State& state)
{
    toFile(state, [](Rows& rows, QFile& file) { return byHand(rows, file, "", ",", "\r\n"); });
}

void Csv_Veltor(benchmark::State& state)
{
    toFile(state, [](Rows& rows, QFile& file) { return itemModelToCsv(rows, file).isComplete(); });
}

void Html_ByHand(benchmark::State& state)
{
    toFile(state, [](Rows& rows, QFile& file) {
        return byHand(rows, file, "<tr><td>", "</td><td>", "</td></tr>\n");
    });
}

void Html_Veltor(benchmark::State& state)
{
    toFile(state, [](Rows& rows, QFile& file) { return itemModelToHtml(rows, file).isComplete(); });
}

BENCHMARK(Csv_ByHand)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Csv_Veltor)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Html_ByHand)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Html_Veltor)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace
