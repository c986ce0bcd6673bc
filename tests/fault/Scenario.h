#pragma once

// A transaction on several files, and devices that stop or fail at a chosen operation.

#include "support/Files.h"
#include "support/Text.h"

#include "platform/FileIo.h"

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <algorithm>
#include <map>

namespace veltor::test {

/// What becomes of one chosen operation on a device, and of all that follow.
enum class Fate
{
    NotApplied, ///< the process dies before it
    Applied,    ///< the process dies right after it
    Torn,       ///< the process dies when half of its bytes have arrived
    Error,      ///< it does nothing and reports an error; the process lives on
    ShortWrite, ///< it does half of its work and reports that; the process lives on
};

/// Counts the operations that reach a device, and lets one of them meet its fate.
struct Plan
{
    int chosen = -1; ///< -1: none
    Fate fate = Fate::NotApplied;
    bool reads = false; ///< count reads instead of writes, resizes and removals
    int count = 0;
    bool dead = false;
    bool metRoom = false; ///< the chosen one wrote room for the journal, without which it goes on

    static inline Plan* inForce = nullptr;

    /// How many of `length` bytes the next operation may move.
    static std::int64_t admit(std::int64_t length, bool isRead = false)
    {
        return inForce ? inForce->admitOne(length, isRead) : length;
    }
    /// Whether the next operation, one without bytes, may be done.
    static bool admitWhole() { return admit(2) == 2; }

private:
    std::int64_t admitOne(std::int64_t length, bool isRead)
    {
        if (isRead != reads) {
            return dead && !isRead ? 0 : length;
        }
        if (dead || count++ != chosen) {
            return dead ? 0 : length;
        }
        dead = fate < Fate::Error;
        return fate == Fate::Applied                            ? length
               : fate == Fate::Torn || fate == Fate::ShortWrite ? length / 2
                                                                : 0;
    }
};

/// Puts a plan in force: for plain files at the system-call layer, for every file that RollbackFile opens
/// through PlannedFile at the QIODevice layer.
class PlanScope : platform::FileIo
{
public:
    explicit PlanScope(Plan& plan)
    {
        Plan::inForce = &plan;
        platform::exchangeFileIo(this);
    }
    ~PlanScope() override
    {
        platform::exchangeFileIo(nullptr);
        Plan::inForce = nullptr;
    }
    PlanScope(const PlanScope&) = delete;
    PlanScope& operator=(const PlanScope&) = delete;

private:
    std::int64_t readAt(int fd, std::int64_t position, char* buffer, std::int64_t length) override
    {
        return FileIo::readAt(fd, position, buffer, Plan::admit(length, true));
    }
    std::int64_t writeAt(int fd, std::int64_t position, const char* data, std::int64_t length) override
    {
        Plan& plan = *Plan::inForce;
        constexpr int least = 4096;
        const bool zeros = length >= least && std::count(data, data + length, '\0') == length;
        plan.metRoom = plan.metRoom || (zeros && !plan.reads && plan.count == plan.chosen);
        return FileIo::writeAt(fd, position, data, Plan::admit(length));
    }
    bool resize(int fd, std::int64_t size) override { return Plan::admitWhole() && FileIo::resize(fd, size); }
    std::int64_t size(int fd) override { return Plan::admit(2, true) == 2 ? FileIo::size(fd) : -1; }
    bool sync(int) override { return Plan::admitWhole(); }
    int removeName(const platform::NativePath& path) override
    {
        return Plan::admitWhole() ? FileIo::removeName(path) : EIO;
    }
    int moveName(const platform::NativePath& from, const platform::NativePath& to) override
    {
        return Plan::admitWhole() ? FileIo::moveName(from, to) : EIO;
    }
};

/// The same for a device that is reached through QIODevice.
class PlannedFile : public QFile
{
public:
    using QFile::QFile;
    bool resize(qint64 size) override { return Plan::admitWhole() && QFile::resize(size); }
    qint64 size() const override { return Plan::admit(2, true) == 2 ? QFile::size() : -1; }

protected:
    qint64 readData(char* data, qint64 length) override
    {
        const qint64 admitted = Plan::admit(length, true);
        return admitted < length ? -1 : QFile::readData(data, admitted);
    }
    qint64 writeData(const char* data, qint64 length) override
    {
        const qint64 admitted = Plan::admit(length);
        return admitted == 0 ? -1 : QFile::writeData(data, admitted);
    }
};

/// Which way to its files a scenario takes.
enum class Path
{
    Native,
    Generic,
    Spare,   ///< the native one, with the journal's file kept between transactions
    Durable, ///< the native one, which waits for the disk
};

/// A RollbackFile whose files, and whose deletion of the journal, obey the plan in force.
class PlannedRollbackFile : public utils::RollbackFile
{
public:
    explicit PlannedRollbackFile(Path path)
        : m_path(path)
    {
        setSpare(path == Path::Spare ? Spare::Left : Spare::None);
        setDurability(path == Path::Durable ? utils::Durability::Careful : utils::Durability::None);
    }

    bool openJournal(const QString& path, QIODevice::OpenMode mode)
    {
        if (m_path != Path::Generic) {
            return openByName(QFileInfo(path), mode);
        }
        // Remembers the journal's place, then replaces the device by one of ours.
        setJournalInfo(QFileInfo(path));
        IOPtr file = makeIOPtr(new PlannedFile(path));
        return (mode == QIODevice::WriteOnly || QFileInfo::exists(path)) &&
               file->open(QIODevice::ReadWrite | QIODevice::Unbuffered) && open(std::move(file), mode);
    }
    [[nodiscard]] IOPtr openFile(const QString& name) const override
    {
        if (m_path != Path::Generic) {
            return RollbackFile::openFile(name);
        }
        IOPtr file = makeIOPtr(new PlannedFile(canonical(name)));
        file->open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered);
        return file;
    }

private:
    Path m_path;
};

inline QByteArray pattern(int size, int seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 31 + seed + i / 251);
    }
    return bytes;
}

/// A chain of changes to one file that goes quiet after the first failure.
class Change
{
public:
    Change(const QString& path, utils::RollbackFile& journal)
        : m_ok(m_file.open(path, journal))
    {}
    Change& write(qint64 position, const QByteArray& bytes)
    {
        m_ok = m_ok && m_file.seek(position) && m_file.write(bytes) == bytes.size();
        return *this;
    }
    Change& resize(qint64 size)
    {
        m_ok = m_ok && m_file.resize(size);
        return *this;
    }
    explicit operator bool() const { return m_ok; }

private:
    utils::SecuredFile m_file;
    bool m_ok;
};

using Contents = std::map<const char*, QByteArray>;

/// Several files and a journal in one directory.
class Workspace
{
public:
    explicit Workspace(QString directory)
        : journal(directory + u("/journal"))
        , m_directory(std::move(directory))
    {}

    const QString journal;

    static const Contents& originals()
    {
        static const Contents contents{{"map", pattern(10000, 1)},
                                       {"index", pattern(5000, 2)},
                                       {"empty", QByteArray()},
                                       {"sub/names", pattern(300, 3)}};
        return contents;
    }

    /// Writes the files as they are before the transaction, and removes a journal and its spare.
    void reset() const
    {
        QDir(m_directory).mkpath(u("sub"));
        QFile::remove(journal);
        QFile::remove(path(".journal.spare"));
        for (const auto& [name, bytes] : originals()) {
            QFile file(path(name));
            if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size()) {
                qFatal("cannot prepare %s", name);
            }
        }
    }

    [[nodiscard]] Contents read() const
    {
        Contents contents;
        for (const auto& original : originals()) {
            QFile file(path(original.first));
            contents[original.first] = file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
        }
        return contents;
    }

    /// The transaction: writes inside, overlapping, at the end and beyond it, one by one and in batches,
    /// growing and shrinking resizes, on four files, one of them empty. Ends without commit or rollback.
    /// @return false at the first operation that fails
    bool change(utils::RollbackFile& device) const
    {
        const auto file = [&](const char* name) { return path(name); };
        const auto batch = [&](int seed) {
            const auto map = device.addFile(QFileInfo(file("map")));
            const auto index = device.addFile(QFileInfo(file("index")));
            return device.writeBlocks({{map, 3000, pattern(700, seed)},
                                       {index, 100, pattern(50, seed)},
                                       {map, 3500, pattern(900, seed + 1)},
                                       {index, 0, {}},
                                       {map, 11000, "past the end"},
                                       {index, 4990, pattern(60, seed)}});
        };
        return batch(20) &&
               Change(file("map"), device)
                   .write(50, pattern(100, 9))
                   .write(120, pattern(100, 8))
                   .write(10000, "end") &&
               Change(file("index"), device).resize(2000).write(1990, pattern(30, 7)).resize(6000) &&
               Change(file("empty"), device).write(0, pattern(500, 6)).resize(0) && batch(30) &&
               Change(file("map"), device).write(12000, "beyond").resize(400).write(0, pattern(600, 5)) &&
               Change(file("sub/names"), device).write(0, pattern(300, 4)).resize(0) &&
               Change(file("index"), device).write(0, pattern(6000, 3));
    }

    /// What a user does after a crash.
    [[nodiscard]] bool recover(Path way) const
    {
        if (!utils::RollbackFile::needsRecovery(QFileInfo(journal))) {
            QFile::remove(journal);
            return true;
        }
        PlannedRollbackFile device(way);
        if (!device.openJournal(journal, QIODevice::ReadWrite)) {
            device.repair();
        }
        return device.rollback();
    }

private:
    [[nodiscard]] QString path(const char* name) const { return m_directory + u("/") + u(name); }

    QString m_directory;
};

} // namespace veltor::test
