// Protected writes beside plain ones and beside SQLite, which with synchronous=OFF makes the same
// promise: the files survive the death of the process. Then the reading of a journal beside a plain
// read of it. Every contender writes the same pages in the same order, and what it wrote is read back.
// The files lie in a temporary directory beneath the current one.
//
// What a random 4 KiB write costs the kernel varies tenfold with how the file entered the page cache:
// large writes leave large folios there, and each small write to one pays for its whole length. So
// every file here is first written in pieces of 4 KiB, as SQLite writes its own.

#include "platform/FileIo.h"
#include "utils/storage/Crc32c.h"

#include <veltor/logging/Logger.h>
#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace veltor;
using namespace veltor::utils;

namespace {

constexpr qint64 PageSize = 4096;
using Page = std::array<char, PageSize>;

QString workFile(const QString& name)
{
    static const QTemporaryDir dir(QDir::current().filePath(QStringLiteral("bench-storage-XXXXXX")));
    return dir.filePath(name);
}

bool writeFile(const QString& name, qint64 pages)
{
    QFile file(name);
    Page page;
    page.fill('x');
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (qint64 at = 0; at < pages && written; ++at) {
        written = file.write(page.data(), PageSize) == PageSize;
    }
    return written;
}

bool readPage(const QString& name, qint64 page, Page& data)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.seek(page * PageSize) &&
           file.read(data.data(), PageSize) == PageSize;
}

/// Which pages to write and with what; remembers what the last write to each was.
class Updates
{
public:
    /// @param length  how much of a page is written
    Updates(unsigned pages, std::size_t length)
        : m_anyPage(0, pages - 1)
        , m_lastStamps(pages)
        , m_length(length)
    {
        m_data.fill('y');
    }

    unsigned next()
    {
        const unsigned page = m_anyPage(m_random);
        m_lastStamps[page] = ++m_stamp;
        stamp(m_stamp);
        return page;
    }

    [[nodiscard]] const char* data() const { return m_data.data(); }
    [[nodiscard]] std::size_t length() const { return m_length; }

    /// True when a thousand pages give what was written to them last.
    template <typename Read>
    bool verify(const Read& read)
    {
        for (int checked = 0; checked < 1000;) {
            const unsigned page = m_anyPage(m_random);
            if (m_lastStamps[page] == 0) {
                continue;
            }
            stamp(m_lastStamps[page]);
            Page found;
            if (!read(page, found) || !std::equal(m_data.begin(), m_data.begin() + m_length, found.begin())) {
                return false;
            }
            ++checked;
        }
        return true;
    }

private:
    /// At both ends, so that half a page is noticed.
    void stamp(quint64 value)
    {
        std::memcpy(m_data.data(), &value, sizeof value);
        std::memcpy(m_data.data() + m_length - sizeof value, &value, sizeof value);
    }

    std::minstd_rand m_random;
    std::uniform_int_distribution<unsigned> m_anyPage;
    std::vector<quint64> m_lastStamps;
    quint64 m_stamp = 0;
    Page m_data;
    std::size_t m_length;
};

// 256 MiB, which all who write to plain files share.
constexpr unsigned Files = 4;
constexpr unsigned PagesPerFile = 16 * 1024;
constexpr unsigned Pages = Files * PagesPerFile;

QString fileName(unsigned number)
{
    return workFile(QStringLiteral("file%1").arg(number));
}

Updates& fileUpdates()
{
    static Updates updates = [] {
        for (unsigned number = 0; number < Files; ++number) {
            writeFile(fileName(number), PagesPerFile);
        }
        return Updates(Pages, PageSize);
    }();
    return updates;
}

/// Each transaction starts a journal and protects the files it meets; commit deletes the journal.
class ProtectedPages
{
public:
    Updates& updates = fileUpdates();

    ProtectedPages()
    {
        for (unsigned number = 0; number < Files; ++number) {
            m_names[number] = fileName(number);
        }
    }

    bool open() { return true; }
    bool begin() { return m_journal.openByName(m_journalName, QIODevice::WriteOnly); }

    bool write(unsigned page)
    {
        SecuredFile& file = m_files[page / PagesPerFile];
        return (file.isOpen() || file.open(m_names[page / PagesPerFile], m_journal)) &&
               file.seek(page % PagesPerFile * PageSize) && file.write(updates.data(), PageSize) == PageSize;
    }

    bool commit()
    {
        for (SecuredFile& file : m_files) {
            file.close();
        }
        m_journal.commit();
        return true;
    }

    bool read(unsigned page, Page& data)
    {
        return readPage(m_names[page / PagesPerFile], page % PagesPerFile, data);
    }

private:
    const QFileInfo m_journalName{workFile(QStringLiteral("pages.rollback"))};
    RollbackFile m_journal;
    std::array<QString, Files> m_names;
    std::array<SecuredFile, Files> m_files;
};

/// What protection asks of the system and nothing else, no name, link or checksum worked out: a journal
/// made and deleted, and for each page one read, three writes to the journal and one to the file.
class BareCalls
{
public:
    Updates& updates = fileUpdates();

    bool open()
    {
        bool opened = true;
        for (unsigned number = 0; number < Files; ++number) {
            m_files[number].setFileName(fileName(number));
            opened = m_files[number].open(QIODevice::ReadWrite | QIODevice::Unbuffered) && opened;
        }
        return opened;
    }

    bool begin()
    {
        m_end = HeaderSize;
        return m_journal.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered) &&
               save(0, HeaderSize);
    }

    bool write(unsigned page)
    {
        const int file = m_files[page / PagesPerFile].handle();
        const qint64 position = page % PagesPerFile * PageSize;
        const qint64 block = std::exchange(m_end, m_end + BlockSize);
        return m_io.readAt(file, position, m_block.data() + (BlockSize - PageSize), PageSize) == PageSize &&
               save(block, BlockSize) && save(std::max<qint64>(block - BlockSize, 0), LinkSize) &&
               save(0, LinkSize) && m_io.writeAt(file, position, updates.data(), PageSize) == PageSize;
    }

    bool commit() { return m_journal.remove(); }

    bool read(unsigned page, Page& data)
    {
        return readPage(fileName(page / PagesPerFile), page % PagesPerFile, data);
    }

private:
    static constexpr qint64 HeaderSize = 48;
    static constexpr qint64 BlockSize = 40 + PageSize;
    static constexpr qint64 LinkSize = 8;

    bool save(qint64 position, qint64 length)
    {
        return m_io.writeAt(m_journal.handle(), position, m_block.data(), length) == length;
    }

    platform::FileIo& m_io = platform::fileIo();
    std::array<QFile, Files> m_files;
    QFile m_journal{workFile(QStringLiteral("bare.rollback"))};
    std::array<char, BlockSize> m_block{};
    qint64 m_end = 0;
};

/// No protection at all.
class PlainPages
{
public:
    Updates& updates = fileUpdates();

    explicit PlainPages(QIODevice::OpenMode buffering)
        : m_mode(QIODevice::ReadWrite | QIODevice::ExistingOnly | buffering)
    {}

    bool open()
    {
        bool opened = true;
        for (unsigned number = 0; number < Files; ++number) {
            m_files[number].setFileName(fileName(number));
            opened = m_files[number].open(m_mode) && opened;
        }
        return opened;
    }

    bool begin() { return true; }

    bool write(unsigned page)
    {
        QFile& file = m_files[page / PagesPerFile];
        return file.seek(page % PagesPerFile * PageSize) && file.write(updates.data(), PageSize) == PageSize;
    }

    bool commit()
    {
        return std::all_of(m_files.begin(), m_files.end(), [](QFile& file) { return file.flush(); });
    }

    bool read(unsigned page, Page& data)
    {
        return readPage(m_files[page / PagesPerFile].fileName(), page % PagesPerFile, data);
    }

private:
    QIODevice::OpenMode m_mode;
    std::array<QFile, Files> m_files;
};

// The longest blob that fits a row into a page of 4 KiB without a second one. Pages of 1, 2 and 8 KiB
// with rows of 4 KiB are slower.
constexpr std::size_t RowLength = 4050;

QByteArray databaseName()
{
    return workFile(QStringLiteral("pages.sqlite")).toLocal8Bit();
}

Updates& databaseUpdates()
{
    static Updates updates = [] {
        sqlite3* database = nullptr;
        sqlite3_open(databaseName().constData(), &database);
        const std::string script =
            "PRAGMA page_size = 4096; PRAGMA synchronous = OFF;"
            "CREATE TABLE page(id INTEGER PRIMARY KEY, data BLOB NOT NULL);"
            "WITH RECURSIVE number(n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM number LIMIT " +
            std::to_string(Pages) + ") INSERT INTO page SELECT n, zeroblob(" + std::to_string(RowLength) +
            ") FROM number;";
        sqlite3_exec(database, script.c_str(), nullptr, nullptr, nullptr);
        sqlite3_close(database);
        return Updates(Pages, RowLength);
    }();
    return updates;
}

/// One row a page, prepared statements.
class SqlitePages
{
public:
    Updates& updates = databaseUpdates();

    explicit SqlitePages(const char* pragmas)
        : m_pragmas(pragmas)
    {}

    ~SqlitePages()
    {
        for (sqlite3_stmt* statement : {m_begin, m_update, m_commit, m_select}) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(m_database);
    }

    SqlitePages(const SqlitePages&) = delete;
    SqlitePages& operator=(const SqlitePages&) = delete;

    bool open()
    {
        return sqlite3_open(databaseName().constData(), &m_database) == SQLITE_OK &&
               sqlite3_exec(m_database, m_pragmas, nullptr, nullptr, nullptr) == SQLITE_OK &&
               prepare("BEGIN", m_begin) && prepare("UPDATE page SET data = ?2 WHERE id = ?1", m_update) &&
               prepare("COMMIT", m_commit) && prepare("SELECT data FROM page WHERE id = ?1", m_select);
    }

    bool begin() { return run(m_begin); }

    bool write(unsigned page)
    {
        sqlite3_bind_int64(m_update, 1, page);
        sqlite3_bind_blob(m_update, 2, updates.data(), RowLength, SQLITE_STATIC);
        return run(m_update);
    }

    bool commit() { return run(m_commit); }

    bool read(unsigned page, Page& data)
    {
        sqlite3_bind_int64(m_select, 1, page);
        const bool found = sqlite3_step(m_select) == SQLITE_ROW &&
                           sqlite3_column_bytes(m_select, 0) == static_cast<int>(RowLength);
        if (found) {
            std::memcpy(data.data(), sqlite3_column_blob(m_select, 0), RowLength);
        }
        sqlite3_reset(m_select);
        return found;
    }

private:
    bool prepare(const char* text, sqlite3_stmt*& statement)
    {
        return sqlite3_prepare_v2(m_database, text, -1, &statement, nullptr) == SQLITE_OK;
    }

    static bool run(sqlite3_stmt* statement)
    {
        const bool done = sqlite3_step(statement) == SQLITE_DONE;
        return sqlite3_reset(statement) == SQLITE_OK && done;
    }

    const char* m_pragmas;
    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_begin = nullptr;
    sqlite3_stmt* m_update = nullptr;
    sqlite3_stmt* m_commit = nullptr;
    sqlite3_stmt* m_select = nullptr;
};

template <typename Contender>
bool transaction(Contender& contender, qint64 pages)
{
    bool done = contender.begin();
    for (qint64 i = 0; i < pages && done; ++i) {
        done = contender.write(contender.updates.next());
    }
    return done && contender.commit();
}

template <typename Contender, typename... Setup>
void addUpdates(const char* name, Setup... setup)
{
    const auto run = [setup...](benchmark::State& state) {
        Contender contender(setup...);
        bool done = contender.open();
        for ([[maybe_unused]] auto _ : state) {
            done = done && transaction(contender, state.range(0));
        }
        if (!done || !contender.updates.verify(
                         [&](unsigned page, Page& data) { return contender.read(page, data); })) {
            state.SkipWithError("the pages were not written");
        }
        state.SetItemsProcessed(state.iterations() * state.range(0));
    };
    benchmark::RegisterBenchmark(name, run)->Arg(100)->Arg(1)->Unit(benchmark::kMicrosecond);
}

/// A journal of blocks of 4 KiB, as a killed process leaves it, with those of all its files in turn.
/// Written once, and linked to the name it is rolled back by as often as needed.
class LeftJournal
{
public:
    LeftJournal(unsigned files, qint64 pagesPerFile, qint64 blocksPerFile)
        : m_kept(workFile(QStringLiteral("kept%1").arg(files)))
        , m_name(workFile(QStringLiteral("left%1.rollback").arg(files)))
        , m_pagesPerFile(pagesPerFile)
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
        m_size = QFileInfo(m_kept).size();
    }

    bool link()
    {
        std::error_code error;
        std::filesystem::remove(m_name.toStdString(), error);
        std::filesystem::create_hard_link(m_kept.toStdString(), m_name.toStdString(), error);
        return m_made && !error;
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
    [[nodiscard]] qint64 size() const { return m_size; }

private:
    QString m_kept;
    QString m_name;
    QStringList m_files;
    qint64 m_pagesPerFile;
    qint64 m_size = 0;
    bool m_made = false;
};

void openJournal(benchmark::State& state, LeftJournal& left)
{
    bool done = left.link();
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
        bool done = left.link() && journal.openByName(QFileInfo(left.name()), QIODevice::ReadWrite);
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
    left.link();
    for ([[maybe_unused]] auto _ : state) {
        QFile file(left.name());
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
        };
        const std::string full = name + (manyFiles ? "/files:64" : "/files:1");
        benchmark::RegisterBenchmark(full.c_str(), measure)->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv)
{
    // Contenders take turns, so that what else the machine does meets all of them; a later argument wins.
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, interleaved.data());
    argc = static_cast<int>(arguments.size());
    benchmark::Initialize(&argc, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(argc, arguments.data())) {
        return 1;
    }
    logging::setLogSink([](const logging::LogRecord& record) {
        if (record.level == logging::LogLevel::Error) {
            std::cerr << qUtf8Printable(record.text) << '\n';
        }
    });
    addUpdates<ProtectedPages>("update/protected");
    addUpdates<BareCalls>("update/bare_calls");
    addUpdates<PlainPages>("update/plain", QIODevice::OpenMode(QIODevice::Unbuffered));
    addUpdates<PlainPages>("update/plain_buffered", QIODevice::OpenMode());
    addUpdates<SqlitePages>("update/sqlite_default", "PRAGMA synchronous = OFF");
    addUpdates<SqlitePages>("update/sqlite_best", "PRAGMA synchronous = OFF; PRAGMA journal_mode = PERSIST;"
                                                  "PRAGMA locking_mode = EXCLUSIVE");
    addUpdates<SqlitePages>("update/sqlite_mmap",
                            "PRAGMA synchronous = OFF; PRAGMA journal_mode = PERSIST;"
                            "PRAGMA locking_mode = EXCLUSIVE; PRAGMA mmap_size = 1000000000");
    addReading("journal/open", openJournal);
    addReading("journal/rollback", rollBack);
    addReading("journal/read", readJournal, false);
    addReading("journal/read_crc", readJournal, true);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
