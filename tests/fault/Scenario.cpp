#include "Scenario.h"

#include <veltor/utils/SecuredFile.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <memory>

namespace veltor::test {
namespace {

Plan* g_plan = nullptr;

/// The system's file operations, as far as the plan lets them through.
class PlannedIo : public platform::FileIo
{
public:
    std::int64_t readAt(int fd, std::int64_t position, char* buffer, std::int64_t length) override
    {
        bool met = false;
        return FileIo::readAt(fd, position, buffer, g_plan->admit(length, true, met));
    }
    std::int64_t writeAt(int fd, std::int64_t position, const char* data, std::int64_t length) override
    {
        bool met = false;
        return FileIo::writeAt(fd, position, data, g_plan->admit(length, false, met));
    }
    bool resize(int fd, std::int64_t size) override
    {
        bool met = false;
        return g_plan->admit(2, false, met) == 2 && FileIo::resize(fd, size);
    }
};

/// The same for a device that is reached through QIODevice.
class PlannedFile : public QFile
{
public:
    using QFile::QFile;
    bool resize(qint64 size) override
    {
        bool met = false;
        return !g_plan || g_plan->admit(2, false, met) == 2 ? QFile::resize(size) : false;
    }

protected:
    qint64 readData(char* data, qint64 length) override
    {
        bool met = false;
        const qint64 admitted = g_plan ? g_plan->admit(length, true, met) : length;
        return met && admitted == 0 ? -1 : QFile::readData(data, admitted);
    }
    qint64 writeData(const char* data, qint64 length) override
    {
        bool met = false;
        const qint64 admitted = g_plan ? g_plan->admit(length, false, met) : length;
        return admitted == 0 ? -1 : QFile::writeData(data, admitted);
    }
};

QByteArray pattern(int size, int seed)
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

} // namespace

std::int64_t Plan::admit(std::int64_t length, bool isRead, bool& met)
{
    met = false;
    if (isRead != reads) {
        return dead && !isRead ? 0 : length;
    }
    if (dead) {
        return 0;
    }
    if (count++ != chosen) {
        return length;
    }
    met = true;
    dead = fate == Fate::NotApplied || fate == Fate::Applied || fate == Fate::Torn;
    switch (fate) {
    case Fate::Applied:
        return length;
    case Fate::Torn:
    case Fate::ShortWrite:
        return length / 2;
    case Fate::NotApplied:
    case Fate::Error:
        break;
    }
    return 0;
}

PlanScope::PlanScope(Plan& plan)
    : m_io(new PlannedIo)
{
    g_plan = &plan;
    platform::exchangeFileIo(m_io);
}

PlanScope::~PlanScope()
{
    platform::exchangeFileIo(nullptr);
    g_plan = nullptr;
    delete m_io;
}

bool PlannedRollbackFile::openJournal(const QString& path, QIODevice::OpenMode mode)
{
    m_journalPath = path;
    if (m_path == Path::Native) {
        return openByName(QFileInfo(path), mode);
    }
    // Remembers the journal's place, then replaces the device by one of ours.
    const bool fresh = mode == QIODevice::WriteOnly;
    if (!fresh && !QFileInfo::exists(path)) {
        return false;
    }
    setJournalInfo(QFileInfo(path));
    auto file = std::make_unique<PlannedFile>(path);
    return file->open(QIODevice::ReadWrite | QIODevice::Unbuffered) && open(makeIOPtr(file.release()), mode);
}

IOPtr PlannedRollbackFile::openFile(const QString& name) const
{
    if (m_path == Path::Native) {
        return RollbackFile::openFile(name);
    }
    auto file = std::make_unique<PlannedFile>(canonical(name));
    file->open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered);
    return makeIOPtr(file.release());
}

void PlannedRollbackFile::remove(const IOPtr& device)
{
    bool met = false;
    if (!g_plan || g_plan->admit(2, false, met) == 2) {
        RollbackFile::remove(device);
    }
}

Workspace::Workspace(QString directory)
    : m_directory(std::move(directory))
{
    QDir(m_directory).mkpath(QStringLiteral("sub"));
}

QString Workspace::path(const QString& name) const
{
    return m_directory + QLatin1Char('/') + name;
}

const Contents& Workspace::originals()
{
    static const Contents contents{
        {QStringLiteral("map"), pattern(10000, 1)},
        {QStringLiteral("index"), pattern(5000, 2)},
        {QStringLiteral("empty"), QByteArray()},
        {QStringLiteral("sub/names"), pattern(300, 3)},
    };
    return contents;
}

void Workspace::reset() const
{
    QFile::remove(journal());
    for (const auto& [name, bytes] : originals()) {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size()) {
            qFatal("cannot prepare %s", qPrintable(path(name)));
        }
    }
}

Contents Workspace::read() const
{
    Contents contents;
    for (const auto& [name, bytes] : originals()) {
        QFile file(path(name));
        contents[name] = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    return contents;
}

bool Workspace::change(utils::RollbackFile& journal) const
{
    const QString map = path(QStringLiteral("map"));
    return Change(map, journal).write(50, pattern(100, 9)).write(120, pattern(100, 8)).write(10000, "end") &&
           Change(path(QStringLiteral("index")), journal)
               .resize(2000)
               .write(1990, pattern(30, 7))
               .resize(6000) &&
           Change(path(QStringLiteral("empty")), journal).write(0, pattern(500, 6)).resize(0) &&
           Change(map, journal).write(12000, "beyond").resize(400).write(0, pattern(600, 5)) &&
           Change(path(QStringLiteral("sub/names")), journal).write(0, pattern(300, 4)).resize(0) &&
           Change(path(QStringLiteral("index")), journal).write(0, pattern(6000, 3));
}

bool Workspace::recover(Path path) const
{
    if (!QFileInfo::exists(journal())) {
        return true;
    }
    PlannedRollbackFile device(path);
    if (!device.openJournal(journal(), QIODevice::ReadWrite)) {
        device.repair();
    }
    return device.rollback();
}

} // namespace veltor::test
