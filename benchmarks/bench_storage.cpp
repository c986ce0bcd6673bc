// Protected writes beside plain ones and beside SQLite, which with synchronous=OFF makes the same
// promise: the files survive the death of the process. Every contender writes the same pages in the same
// order, and what it wrote is read back.

#include "StorageBench.h"
#include "platform/FileIo.h"

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace veltor;
using namespace veltor::benchmarks;
using namespace veltor::utils;

namespace {

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

/// Each transaction starts a journal and protects the files it meets; commit deletes the journal, or keeps
/// its file as a spare.
class ProtectedPages
{
public:
    Updates& updates = fileUpdates();

    explicit ProtectedPages(RollbackFile::Spare spare = RollbackFile::Spare::None,
                            Durability durability = Durability::None)
    {
        m_journal.setSpare(spare);
        m_journal.setDurability(durability);
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
        return bool(m_journal.commit());
    }

    bool read(unsigned page, Page& data)
    {
        return readPage(m_names[page / PagesPerFile], page % PagesPerFile, data);
    }

protected:
    RollbackFile::Key keyOf(unsigned page)
    {
        return m_journal.addFile(QFileInfo(m_names[page / PagesPerFile]));
    }
    RollbackFile& journal() { return m_journal; }

private:
    const QFileInfo m_journalName{workFile(QStringLiteral("pages.rollback"))};
    RollbackFile m_journal;
    std::array<QString, Files> m_names;
    std::array<SecuredFile, Files> m_files;
};

/// The same with all pages of a transaction written by one call.
class BatchedPages : public ProtectedPages
{
public:
    using ProtectedPages::ProtectedPages;

    bool write(unsigned page)
    {
        RollbackFile::Key& key = m_keys[page / PagesPerFile];
        key = key != 0 ? key : keyOf(page);
        m_writes.push_back(
            {key, quint64(page % PagesPerFile) * quint64(PageSize), QByteArray(updates.data(), PageSize)});
        return key != 0;
    }

    bool commit()
    {
        const bool written = journal().writeBlocks(m_writes);
        m_writes.clear();
        m_keys.fill(0);
        return written && ProtectedPages::commit();
    }

private:
    std::array<RollbackFile::Key, Files> m_keys{};
    std::vector<RollbackFile::BlockWrite> m_writes;
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
benchmark::internal::Benchmark* addUpdates(const char* name, Setup... setup)
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
    return benchmark::RegisterBenchmark(name, run)->Arg(100)->Arg(1)->Unit(benchmark::kMicrosecond);
}

void addAll()
{
    addUpdates<ProtectedPages>("update/protected");
    addUpdates<BatchedPages>("update/protected_batch");
    addUpdates<ProtectedPages>("update/protected_spare", RollbackFile::Spare::Held);
    addUpdates<BatchedPages>("update/protected_spare_batch", RollbackFile::Spare::Held);
    addUpdates<BareCalls>("update/bare_calls");
    addUpdates<PlainPages>("update/plain", QIODevice::OpenMode(QIODevice::Unbuffered));
    addUpdates<PlainPages>("update/plain_buffered", QIODevice::OpenMode());
    addUpdates<SqlitePages>("update/sqlite_default", "PRAGMA synchronous = OFF");
    addUpdates<SqlitePages>("update/sqlite_best", "PRAGMA synchronous = OFF; PRAGMA journal_mode = PERSIST;"
                                                  "PRAGMA locking_mode = EXCLUSIVE");
    addUpdates<SqlitePages>("update/sqlite_mmap",
                            "PRAGMA synchronous = OFF; PRAGMA journal_mode = PERSIST;"
                            "PRAGMA locking_mode = EXCLUSIVE; PRAGMA mmap_size = 1000000000");
}

/// Those that wait for the disk, by the clock: the folder of the files has to be on one.
template <typename Contender, typename... Setup>
void addDurable(const char* name, Setup... setup)
{
    addUpdates<Contender>(name, setup...)->UseRealTime()->MinTime(0.2);
}

void addAllDurable()
{
    const auto none = RollbackFile::Spare::None;
    addDurable<ProtectedPages>("durable/protected", none, Durability::Durable);
    addDurable<BatchedPages>("durable/protected_batch", none, Durability::Durable);
    addDurable<BatchedPages>("durable/protected_careful_batch", none, Durability::Careful);
    addDurable<SqlitePages>("durable/sqlite_full", "PRAGMA synchronous = FULL");
    addDurable<SqlitePages>("durable/sqlite_extra", "PRAGMA synchronous = EXTRA");
}

} // namespace

int main(int argc, char** argv)
{
    return runInTurns(argc, argv, [] {
        addAll();
        addAllDurable();
    });
}
