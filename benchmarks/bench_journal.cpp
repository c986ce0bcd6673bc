// Opening (and so checking) a journal that a killed process left, and rolling it back, beside a plain read
// of it in pieces of 64 KiB, with and without its checksum.

#include "StorageBench.h"
#include "utils/storage/journal/Crc32c.h"

#include <veltor/utils/RollbackFile.h>

#include <benchmark/benchmark.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <algorithm>
#include <string>
#include <vector>

using namespace veltor::benchmarks;
using namespace veltor::utils;

namespace {

/// A journal of blocks of 4 KiB, as a killed process leaves it, with those of all its files in turn.
/// Written once, and copied to the name it is rolled back by as often as needed: a second name of the same
/// file would leave no journal behind.
class LeftJournal
{
public:
    LeftJournal(unsigned files, qint64 pagesPerFile, qint64 blocksPerFile)
        : m_kept(workFile(QStringLiteral("kept%1").arg(files)))
        , m_name(workFile(QStringLiteral("left%1.rollback").arg(files)))
        , m_pagesPerFile(pagesPerFile)
        , m_blocks(files * blocksPerFile)
    {
        RollbackFile journal;
        journal.openByName(QFileInfo(m_kept), QIODevice::WriteOnly);
        std::vector<RollbackDevice::Key> keys;
        for (unsigned number = 0; number < files; ++number) {
            m_files << workFile(QStringLiteral("left%1-%2").arg(files).arg(number));
            writeFile(m_files.back(), pagesPerFile);
            keys.push_back(journal.addFile(QFileInfo(m_files.back())));
        }
        m_made = true;
        for (qint64 block = 0; block < blocksPerFile; ++block) {
            // Leaps about and meets every page.
            const auto position = static_cast<quint64>(block * 7919 % pagesPerFile * PageSize);
            for (const RollbackDevice::Key key : keys) {
                m_made = journal.addBlock(key, position, PageSize) && m_made;
            }
        }
        journal.close();
        m_size = QFileInfo(m_kept).size();
    }

    bool copy()
    {
        m_copy.close();
        QFile::remove(m_name);
        return m_made && QFile::copy(m_kept, m_name);
    }

    /// Copied, and held open, so that who deletes the copy does not wait until its space is free.
    bool copyAndHold()
    {
        m_copy.setFileName(m_name);
        return copy() && m_copy.open(QIODevice::ReadOnly);
    }

    /// Spoils the first page that the files have, and the length of the last.
    void spoil()
    {
        for (const QString& name : m_files) {
            QFile file(name);
            file.open(QIODevice::ReadWrite);
            file.write(QByteArray(PageSize, 'z'));
        }
        QFile last(m_files.back());
        last.resize(last.size() + 1);
    }

    [[nodiscard]] bool isRestored() const
    {
        Page wanted;
        wanted.fill('x');
        return QFileInfo(m_files.back()).size() == m_pagesPerFile * PageSize &&
               std::all_of(m_files.begin(), m_files.end(), [&](const QString& name) {
                   Page found;
                   return readPage(name, 0, found) && found == wanted;
               });
    }

    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] const QString& keptName() const { return m_kept; }
    [[nodiscard]] qint64 size() const { return m_size; }
    [[nodiscard]] qint64 blocks() const { return m_blocks; }

private:
    QString m_kept;
    QString m_name;
    QFile m_copy;
    QStringList m_files;
    qint64 m_pagesPerFile;
    qint64 m_blocks;
    qint64 m_size = 0;
    bool m_made = false;
};

void openJournal(benchmark::State& state, LeftJournal& left)
{
    bool done = left.copy();
    for ([[maybe_unused]] auto _ : state) {
        RollbackFile journal;
        done = journal.openByName(QFileInfo(left.name()), QIODevice::ReadWrite) && done;
    }
    if (!done) {
        state.SkipWithError("the journal was not opened");
    }
}

void rollBack(benchmark::State& state, LeftJournal& left)
{
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        RollbackFile journal;
        bool done = left.copyAndHold() && journal.openByName(QFileInfo(left.name()), QIODevice::ReadWrite);
        left.spoil();
        state.ResumeTiming();
        done = journal.rollback() && done;
        state.PauseTiming();
        if (!done || !left.isRestored()) {
            state.SkipWithError("the files were not restored");
            break;
        }
        state.ResumeTiming();
    }
}

void readJournal(benchmark::State& state, LeftJournal& left, bool checksummed)
{
    std::vector<char> piece(64 * 1024);
    qint64 total = 0;
    for ([[maybe_unused]] auto _ : state) {
        QFile file(left.keptName());
        file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        for (qint64 got = 0; (got = file.read(piece.data(), static_cast<qint64>(piece.size()))) > 0;) {
            total += got;
            if (checksummed) {
                benchmark::DoNotOptimize(crc32c(0, piece.data(), static_cast<std::size_t>(got)));
            }
        }
    }
    if (total != state.iterations() * left.size()) {
        state.SkipWithError("the journal was not read");
    }
}

LeftJournal& leftJournal(bool manyFiles)
{
    if (manyFiles) {
        static LeftJournal many(64, 256, 390);
        return many;
    }
    static LeftJournal one(1, 16 * 1024, 100'000);
    return one;
}

template <typename Run, typename... More>
void addReading(const std::string& name, Run run, More... more)
{
    for (const bool manyFiles : {false, true}) {
        const auto measure = [=](benchmark::State& state) {
            LeftJournal& left = leftJournal(manyFiles);
            run(state, left, more...);
            state.SetBytesProcessed(state.iterations() * left.size());
            state.SetItemsProcessed(state.iterations() * left.blocks());
        };
        const std::string full = name + (manyFiles ? "/files:64" : "/files:1");
        benchmark::RegisterBenchmark(full.c_str(), measure)->Unit(benchmark::kMillisecond);
    }
}

void addAll()
{
    addReading("journal/open", openJournal);
    addReading("journal/rollback", rollBack);
    addReading("journal/read", readJournal, false);
    addReading("journal/read_crc", readJournal, true);
}

} // namespace

int main(int argc, char** argv)
{
    return runInTurns(argc, argv, &addAll);
}
