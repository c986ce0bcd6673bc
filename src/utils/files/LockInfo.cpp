// Who uses a file, and what stands against writing it, in words for the user.
#include <veltor/utils/LockInfo.h>

#include "platform/FileUsers.h"
#include "platform/WriteFacts.h"
#include "utils/files/LockHolders.h"
#include "utils/files/NativeText.h"

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <limits>
#include <utility>

namespace veltor::utils {

using platform::FileUsers;
using platform::WriteFacts;

struct LockInfo::Private
{
    QString path;
    bool exists = false;
    std::vector<LockHolder> holders;
    std::vector<LockEntry> otherLocks;
    int hidden = 0;
    QString hiddenText;
    std::vector<WriteObstacle> obstacles;

    void takeUsers(const FileUsers& users);
    void takeFacts(const WriteFacts& facts, quint64 wantedBytes);
    void takeWay(const WriteFacts& facts);
    void takeHolders();
    void add(WriteObstacle::Kind kind, const QString& place = {}, const QString& detail = {});
};

namespace {

constexpr int NamedHolders = 3; // in one sentence

/// The reasons; %1 is the place or what else there is to say.
constexpr std::pair<WriteObstacle::Kind, const char*> reasons[] = {
    {WriteObstacle::NoFolder, QT_TRANSLATE_NOOP("LockInfo", "нет папки '%1'")},
    {WriteObstacle::NotAFolder, QT_TRANSLATE_NOOP("LockInfo", "'%1' — не папка")},
    {WriteObstacle::NoPassage, QT_TRANSLATE_NOOP("LockInfo", "нет прав на вход в папку '%1'")},
    {WriteObstacle::LinkLoop, QT_TRANSLATE_NOOP("LockInfo", "ссылки ведут по кругу")},
    {WriteObstacle::NameTooLong, QT_TRANSLATE_NOOP("LockInfo", "имя слишком длинное")},
    {WriteObstacle::Unreachable, "%1"},
    {WriteObstacle::IsFolder, QT_TRANSLATE_NOOP("LockInfo", "это папка")},
    {WriteObstacle::NoRights, QT_TRANSLATE_NOOP("LockInfo", "нет прав на запись в него")},
    {WriteObstacle::ReadOnlyMark,
     QT_TRANSLATE_NOOP("LockInfo", "он отмечен как доступный только для чтения")},
    {WriteObstacle::ImmutableMark, QT_TRANSLATE_NOOP("LockInfo", "он отмечен как неизменяемый")},
    {WriteObstacle::AppendMark,
     QT_TRANSLATE_NOOP("LockInfo", "он отмечен как доступный только для дополнения")},
    {WriteObstacle::ReadOnlyMount, QT_TRANSLATE_NOOP("LockInfo", "диск подключён только для чтения")},
    {WriteObstacle::RunningProgram, QT_TRANSLATE_NOOP("LockInfo", "это работающая программа: %1")},
    {WriteObstacle::DiskFull, QT_TRANSLATE_NOOP("LockInfo", "на диске недостаточно места")},
    {WriteObstacle::NoMoreFiles, QT_TRANSLATE_NOOP("LockInfo", "на диске нет места для новых файлов")},
    {WriteObstacle::QuotaFull, QT_TRANSLATE_NOOP("LockInfo", "исчерпана квота на диске")},
    {WriteObstacle::Locked, QT_TRANSLATE_NOOP("LockInfo", "его заблокировал %1")},
    {WriteObstacle::InUse, QT_TRANSLATE_NOOP("LockInfo", "его использует %1")},
};

/// The same where the file does not exist yet, and its folder is at fault.
constexpr std::pair<WriteObstacle::Kind, const char*> folderReasons[] = {
    {WriteObstacle::NoRights, QT_TRANSLATE_NOOP("LockInfo", "нет прав на создание файлов в папке '%1'")},
    {WriteObstacle::ImmutableMark, QT_TRANSLATE_NOOP("LockInfo", "папка '%1' отмечена как неизменяемая")},
};

template <typename Table>
const char* find(const Table& table, WriteObstacle::Kind kind)
{
    const auto found = std::find_if(std::begin(table), std::end(table),
                                    [kind](const auto& row) { return row.first == kind; });
    return found == std::end(table) ? nullptr : found->second;
}

LockEntry entryOf(const platform::FileLock& lock)
{
    constexpr LockEntry::Kind kinds[] = {LockEntry::Flock, LockEntry::Posix, LockEntry::OpenFile,
                                         LockEntry::Lease, LockEntry::Other};
    LockEntry entry;
    entry.kind = kinds[static_cast<int>(lock.kind)];
    entry.exclusive = lock.exclusive;
    entry.waiting = lock.waiting;
    entry.begin = static_cast<qint64>(lock.begin);
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<qint64>::max());
    entry.last = lock.last >= largest ? -1 : static_cast<qint64>(lock.last);
    entry.pid = std::max<qint64>(lock.pid, 0);
    return entry;
}

LockHolder holderOf(const platform::FileUser& user)
{
    LockHolder holder;
    holder.pid = user.pid;
    holder.name = fromNative(user.name);
    holder.user = fromNative(user.user);
    holder.startedMs = user.startMs;
    holder.uses = LockHolder::Uses(QFlag(static_cast<int>(user.uses)));
    for (const platform::FileLock& lock : user.locks) {
        holder.locks.push_back(entryOf(lock));
    }
    return holder;
}

/// A name on one line, whatever its owner put into it.
QString onOneLine(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return !c.isPrint(); }, QLatin1Char('?'));
    return text;
}

bool holdsLock(const LockHolder& holder)
{
    return std::any_of(holder.locks.begin(), holder.locks.end(),
                       [](const LockEntry& lock) { return !lock.waiting; });
}

/// The first holders of a kind, for a sentence; empty when there is none.
template <typename Wanted>
QString namesOf(const std::vector<LockHolder>& holders, Wanted wanted)
{
    QStringList names;
    int more = 0;
    for (const LockHolder& holder : holders) {
        if (!wanted(holder)) {
            continue;
        }
        if (names.size() < NamedHolders) {
            names << LockInfo::describe(holder);
        } else {
            ++more;
        }
    }
    const QString text = names.join(QStringLiteral(", "));
    return more == 0 ? text : QCoreApplication::translate("LockInfo", "%1 и ещё %2").arg(text).arg(more);
}

} // namespace

void LockInfo::Private::add(WriteObstacle::Kind kind, const QString& place, const QString& detail)
{
    const char* const ofFolder = place.isEmpty() ? nullptr : find(folderReasons, kind);
    const QString text = QCoreApplication::translate("LockInfo", ofFolder ? ofFolder : find(reasons, kind));
    const QString shown = onOneLine(detail.isEmpty() ? place : detail);
    obstacles.push_back({kind, place, text.contains(QLatin1String("%1")) ? text.arg(shown) : text});
}

void LockInfo::Private::takeUsers(const FileUsers& users)
{
    for (const platform::FileUser& user : users.users) {
        holders.push_back(holderOf(user));
    }
    for (const platform::FileLock& lock : users.foreignLocks) {
        otherLocks.push_back(entryOf(lock));
    }
    hidden = static_cast<int>(users.hidden);
    if (users.error) {
        hiddenText = QCoreApplication::translate("LockInfo", "Не удалось узнать, кто использует '%1': %2")
                         .arg(path, reasonText(users.error));
    } else if (users.othersHidden) {
        hiddenText = QCoreApplication::translate("LockInfo", "Процессы других пользователей не видны");
    } else if (hidden > 0) {
        hiddenText = QCoreApplication::translate("LockInfo", "Процессов, которые не удалось просмотреть: %1")
                         .arg(hidden);
    }
}

void LockInfo::Private::takeWay(const WriteFacts& facts)
{
    const QString place = fromNative(facts.place);
    switch (facts.way) {
    case WriteFacts::Way::There:
    case WriteFacts::Way::New:
        return;
    case WriteFacts::Way::NoFolder:
        return add(WriteObstacle::NoFolder, place);
    case WriteFacts::Way::NotAFolder:
        return add(WriteObstacle::NotAFolder, place);
    case WriteFacts::Way::NoPassage:
        return add(WriteObstacle::NoPassage, place);
    case WriteFacts::Way::Loop:
        return add(WriteObstacle::LinkLoop);
    case WriteFacts::Way::NameTooLong:
        return add(WriteObstacle::NameTooLong);
    case WriteFacts::Way::Failed:
        return add(WriteObstacle::Unreachable, {}, reasonText(facts.error));
    }
}

void LockInfo::Private::takeFacts(const WriteFacts& facts, quint64 wantedBytes)
{
    exists = facts.way == WriteFacts::Way::There;
    takeWay(facts);
    if (!obstacles.empty()) {
        return;
    }
    if (facts.kind == platform::FileKind::Folder) {
        return add(WriteObstacle::IsFolder);
    }
    const QString folder = exists ? QString() : fromNative(facts.place);
    const bool isFile = !exists || facts.kind == platform::FileKind::File;
    const std::pair<bool, WriteObstacle::Kind> found[] = {
        {facts.readOnlyMount, WriteObstacle::ReadOnlyMount},
        {facts.immutableMark, WriteObstacle::ImmutableMark},
        {facts.appendMark, WriteObstacle::AppendMark},
        {facts.readOnlyMark, WriteObstacle::ReadOnlyMark},
        {facts.noRights, WriteObstacle::NoRights},
        {isFile && facts.freeBytes && *facts.freeBytes < wantedBytes, WriteObstacle::DiskFull},
        {facts.noMoreFiles, WriteObstacle::NoMoreFiles},
        {facts.quotaFull, WriteObstacle::QuotaFull},
    };
    for (const auto& [is, kind] : found) {
        if (is) {
            add(kind, folder);
        }
    }
}

void LockInfo::Private::takeHolders()
{
    const QString running =
        namesOf(holders, [](const LockHolder& holder) { return holder.uses.testFlag(LockHolder::Running); });
    if (!running.isEmpty()) {
        add(WriteObstacle::RunningProgram, {}, running);
    }
    QString locking = namesOf(holders, &holdsLock);
    const auto other = std::find_if(otherLocks.begin(), otherLocks.end(),
                                    [](const LockEntry& lock) { return !lock.waiting; });
    if (locking.isEmpty() && other != otherLocks.end()) {
        locking = QCoreApplication::translate("LockInfo", "процесс %1").arg(other->pid);
    }
    if (!locking.isEmpty()) {
        add(WriteObstacle::Locked, {}, locking);
    }
    const QString users =
        namesOf(holders, [](const LockHolder& holder) { return holder.uses.testFlag(LockHolder::Untold); });
    if (!users.isEmpty() && platform::UsersMayForbidWriting) {
        add(WriteObstacle::InUse, {}, users);
    }
}

QString lockHolderNames(int fd)
{
    std::vector<LockHolder> holders;
    for (const platform::FileUser& user : platform::lockHolders(fd).users) {
        holders.push_back(holderOf(user));
    }
    // Where locks are not told, whoever has the file open may have it.
    return namesOf(holders, [](const LockHolder& holder) {
        return holdsLock(holder) || (platform::UsersMayForbidWriting && holder.locks.empty());
    });
}

LockInfo::LockInfo(const QString& path, qint64 wantedBytes)
    : m_d(std::make_unique<Private>())
{
    m_d->path = path;
    const platform::NativeString native = toNative(path);
    const auto wanted = static_cast<quint64>(std::max<qint64>(wantedBytes, 0));
    m_d->takeFacts(platform::writeFacts(native, wanted), wanted);
    if (m_d->exists) {
        m_d->takeUsers(platform::fileUsers(native));
        m_d->takeHolders();
    }
}

LockInfo::~LockInfo() = default;
LockInfo::LockInfo(LockInfo&& other) noexcept = default;
LockInfo& LockInfo::operator=(LockInfo&& other) noexcept = default;

QString LockInfo::path() const
{
    return m_d->path;
}

bool LockInfo::exists() const
{
    return m_d->exists;
}

const std::vector<LockHolder>& LockInfo::holders() const
{
    return m_d->holders;
}

const std::vector<LockEntry>& LockInfo::otherLocks() const
{
    return m_d->otherLocks;
}

QString LockInfo::whatIsHidden() const
{
    return m_d->hiddenText;
}

int LockInfo::hiddenProcesses() const
{
    return m_d->hidden;
}

const std::vector<WriteObstacle>& LockInfo::obstacles() const
{
    return m_d->obstacles;
}

QString LockInfo::whyNotWritable() const
{
    return m_d->obstacles.empty() ? QString()
                                  : QCoreApplication::translate("LockInfo", "Файл '%1' нельзя записать: %2")
                                        .arg(onOneLine(m_d->path), m_d->obstacles.front().text);
}

QString LockInfo::describe(const LockHolder& holder)
{
    const QString name = onOneLine(holder.name);
    const QString pid = QString::number(holder.pid);
    return holder.user.isEmpty() ? QCoreApplication::translate("LockInfo", "%1 (процесс %2)").arg(name, pid)
                                 : QCoreApplication::translate("LockInfo", "%1 (процесс %2, пользователь %3)")
                                       .arg(name, pid, onOneLine(holder.user));
}

} // namespace veltor::utils
