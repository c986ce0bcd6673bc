#pragma once

// A disk that loses power: what the library asked of the system is recorded, and then rebuilt as the disk may
// have it when the power goes, with everything that was not synced there or not.

#include "support/Text.h"

#include "base/QtDifferences.h"
#include "platform/FileOpen.h"
#include "platform/NameIo.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace veltor::test {

using Files = std::map<QString, QByteArray>;

/// What a sync is for; a test can have the disk ignore one sort.
enum class Barrier
{
    None,
    JournalBytes,  ///< saved bytes, before a file changes
    JournalName,   ///< the journal's own, before a file changes
    Contents,      ///< files, before the journal goes
    JournalEnd,    ///< its emptiness, before names change
    NewNames,      ///< the hidden folder and what is in it, before the journal speaks of them
    MovedAside,    ///< names, before the manifest says so
    MovedRecord,   ///< that the manifest says so, before names are given to other files
    MovedToPlace,  ///< names, before the hidden folder goes
    Disappearance, ///< the journal's name, before the end is told
};

/// One thing that was asked of the system.
struct DiskStep
{
    enum class Kind
    {
        Write,
        Resize,
        Create,
        Folder,
        Move,
        Remove,
        Sync,
        SyncFolder,
    };
    Kind kind;
    int file = -1;       // its number
    QString name = {};   // relative to the top
    QString target = {}; // of a Move
    qint64 position = 0; // of a Write
    QByteArray bytes = {};
    qint64 size = 0; // the file's, after it
    Barrier barrier = Barrier::None;
};

/// Names and contents.
struct DiskState
{
    std::map<QString, int> names;
    std::set<QString> folders;
    std::map<int, QByteArray> contents;
};

inline QString folderOf(const QString& name)
{
    return name.left(std::max<base::Length>(name.lastIndexOf(QLatin1Char('/')), 0));
}

/// In which order the disk gets what nobody waits for.
enum class DiskOrder
{
    Metadata,    ///< names and sizes in theirs, data whenever
    SizesBefore, ///< names and sizes at once, data whenever
    None,        ///< everything whenever
};

/// Records while it lives; a sync costs nothing.
class PowerDisk : platform::FileIo, platform::NameIo
{
public:
    explicit PowerDisk(const QString& top)
        : m_top(QFileInfo(top).canonicalFilePath() + u("/"))
    {
        QDirIterator all(top, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            QFile file(all.next());
            const QString name = QDir(top).relativeFilePath(file.fileName());
            if (all.fileInfo().isDir()) {
                m_now.folders.insert(name);
            } else if (file.open(QIODevice::ReadOnly)) {
                m_now.names[name] = m_files;
                m_now.contents[m_files++] = file.readAll();
            }
        }
        m_first = m_now;
        platform::exchangeFileIo(this);
        platform::exchangeNameIo(this);
    }
    ~PowerDisk() override
    {
        platform::exchangeFileIo(nullptr);
        platform::exchangeNameIo(nullptr);
    }
    PowerDisk(const PowerDisk&) = delete;
    PowerDisk& operator=(const PowerDisk&) = delete;

    [[nodiscard]] const std::vector<DiskStep>& steps() const { return m_steps; }
    [[nodiscard]] std::size_t syncs() const
    {
        return static_cast<std::size_t>(std::count_if(m_steps.begin(), m_steps.end(), isSync));
    }
    /// The sync with this number fails, and all that follow.
    void failFrom(std::size_t sync) { m_failFrom = sync; }

    /// What the disk may hold when the power goes before step @p at. @param deaf  syncs that it ignored
    Files cut(std::size_t at, DiskOrder order, Barrier deaf, std::mt19937& random) const;

private:
    using Kind = DiskStep::Kind;
    using Path = platform::NameIo::Path;

    static bool isSync(const DiskStep& step)
    {
        return step.kind == Kind::Sync || step.kind == Kind::SyncFolder;
    }
    static QString text(const Path& path) { return QString::fromStdU16String(path.generic_u16string()); }
    void note(DiskStep step) { m_steps.push_back(std::move(step)); }
    bool noteSync(DiskStep step)
    {
        const bool done = syncs() < m_failFrom;
        step.barrier = done ? step.barrier : Barrier::None;
        note(std::move(step));
        return done;
    }
    int known(int fd) const
    {
        const auto found = m_open.find(fd);
        return found == m_open.end() ? -1 : found->second;
    }
    [[nodiscard]] QString nameOf(int file) const
    {
        const auto found = std::find_if(m_now.names.begin(), m_now.names.end(),
                                        [&](const auto& name) { return name.second == file; });
        return found == m_now.names.end() ? QString() : found->first;
    }
    int make(const QString& name)
    {
        m_now.names[name] = m_files;
        m_now.contents[m_files] = {};
        note({Kind::Create, m_files, name, {}, 0, {}, 0});
        return m_files++;
    }
    [[nodiscard]] bool journalHolds() const
    {
        const auto journal = m_now.names.find(u("journal"));
        return journal != m_now.names.end() && !m_now.contents.at(journal->second).isEmpty();
    }

    bool status(int fd, platform::FileStatus& status) override
    {
        const auto path = platform::pathOf(fd); // every file that is opened by its path is asked at once
        const QString name = QDir::fromNativeSeparators(text(path));
        if (name.startsWith(m_top) && !name.endsWith(u(" (deleted)"))) {
            const QString own = name.mid(m_top.size());
            const auto found = m_now.names.find(own);
            m_open[fd] = found != m_now.names.end() ? found->second : make(own);
        }
        return FileIo::status(fd, status);
    }
    std::int64_t writeAt(int fd, std::int64_t position, const char* data, std::int64_t length) override
    {
        const std::int64_t done = FileIo::writeAt(fd, position, data, length);
        QByteArray& bytes = m_now.contents[known(fd)];
        bytes.append(static_cast<int>(std::max<qint64>(position + done - bytes.size(), 0)), '\0');
        bytes.replace(static_cast<int>(position), static_cast<int>(done), data, static_cast<int>(done));
        note({Kind::Write,
              known(fd),
              {},
              {},
              position,
              QByteArray(data, static_cast<int>(done)),
              bytes.size()});
        return done;
    }
    bool resize(int fd, std::int64_t size) override
    {
        const bool done = FileIo::resize(fd, size);
        QByteArray& bytes = m_now.contents[known(fd)];
        bytes.append(static_cast<int>(std::max<qint64>(size - bytes.size(), 0)), '\0');
        bytes.truncate(static_cast<int>(size));
        note({Kind::Resize, known(fd), {}, {}, 0, {}, size});
        return done;
    }
    bool sync(int fd) override
    {
        const QString name = nameOf(known(fd));
        const Barrier barrier = name == u("journal")
                                    ? (journalHolds() ? Barrier::JournalBytes : Barrier::JournalEnd)
                                : journalHolds() ? Barrier::Contents
                                                 : Barrier::MovedRecord;
        return noteSync({Kind::Sync, known(fd), name, {}, 0, {}, 0, barrier});
    }
    int removeName(const platform::NativePath& path) override
    {
        const int error = FileIo::removeName(path);
        return noteRemoval(text(path).mid(m_top.size()), error);
    }
    int noteRemoval(const QString& name, int error)
    {
        if (error == 0) {
            const auto found = m_now.names.find(name);
            note({Kind::Remove, found == m_now.names.end() ? -1 : found->second, name});
            m_now.names.erase(name);
            m_now.folders.erase(name);
        }
        return error;
    }

    int createFile(const Path& folder, const Path& name) override
    {
        const int error = NameIo::createFile(folder, name);
        if (error == 0) {
            make(text(name));
        }
        return error;
    }
    int createFolder(const Path& folder, const Path& name) override
    {
        const int error = NameIo::createFolder(folder, name);
        if (error == 0) {
            m_now.folders.insert(text(name));
            note({Kind::Folder, -1, text(name)});
        }
        return error;
    }
    int move(const Path& folder, const Path& from, const Path& to, bool replace, bool through) override
    {
        const int error = NameIo::move(folder, from, to, replace, through);
        if (error == 0) {
            m_now.names[text(to)] = m_now.names[text(from)];
            m_now.names.erase(text(from));
            note({Kind::Move, m_now.names[text(to)], text(from), text(to)});
        }
        return error;
    }
    int removeFile(const Path& folder, const Path& name) override
    {
        return noteRemoval(text(name), NameIo::removeFile(folder, name));
    }
    int removeFolder(const Path& folder, const Path& name) override
    {
        return noteRemoval(text(name), NameIo::removeFolder(folder, name));
    }
    int open(const Path& folder, const Path& name, int& fd) override
    {
        const int error = NameIo::open(folder, name, fd);
        if (error == 0) {
            m_open[fd] = m_now.names.at(text(name));
        }
        return error;
    }
    int syncFolder(const Path&, const Path& name) override
    {
        const bool moved = std::any_of(m_steps.rbegin(), m_steps.rend(), [](const DiskStep& step) {
            return step.kind == Kind::Sync && step.barrier == Barrier::MovedRecord;
        });
        const bool isTop = name.empty();
        const Barrier barrier = journalHolds() ? (isTop ? Barrier::JournalName : Barrier::NewNames)
                                : isTop && m_now.names.count(u("journal")) == 0 ? Barrier::Disappearance
                                : moved || !planHasAside()                      ? Barrier::MovedToPlace
                                                                                : Barrier::MovedAside;
        return noteSync({Kind::SyncFolder, -1, text(name), {}, 0, {}, 0, barrier}) ? 0 : 5;
    }
    /// Whether the last moves went into the hidden folder.
    [[nodiscard]] bool planHasAside() const
    {
        const auto last = std::find_if(m_steps.rbegin(), m_steps.rend(),
                                       [](const DiskStep& step) { return step.kind == Kind::Move; });
        return last != m_steps.rend() && last->target.startsWith(u(".journal.transaction/"));
    }

    QString m_top;
    int m_files = 0;
    DiskState m_first;
    DiskState m_now;
    std::map<int, int> m_open; // descriptor to number
    std::vector<DiskStep> m_steps;
    std::size_t m_failFrom = static_cast<std::size_t>(-1);
};

} // namespace veltor::test
