// veltor locks: which processes use files, by which locks, and why the files cannot be written.

#include "Arguments.h"
#include "Command.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/LockInfo.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <limits>

namespace veltor::tool {
namespace {

using utils::LockEntry;
using utils::LockHolder;
using utils::LockInfo;
using utils::WriteObstacle;

constexpr Named<LockHolder::Use> uses[] = {
    {"read", LockHolder::OpenForReading},  {"write", LockHolder::OpenForWriting},
    {"map", LockHolder::Mapped},           {"run", LockHolder::Running},
    {"folder", LockHolder::CurrentFolder}, {"root", LockHolder::RootFolder},
    {"open", LockHolder::Untold},
};

constexpr Named<LockEntry::Kind> lockKinds[] = {
    {"flock", LockEntry::Flock}, {"posix", LockEntry::Posix}, {"ofd", LockEntry::OpenFile},
    {"lease", LockEntry::Lease}, {"other", LockEntry::Other},
};

constexpr Named<WriteObstacle::Kind> obstacleKinds[] = {
    {"no-folder", WriteObstacle::NoFolder},
    {"not-a-folder", WriteObstacle::NotAFolder},
    {"no-passage", WriteObstacle::NoPassage},
    {"link-loop", WriteObstacle::LinkLoop},
    {"name-too-long", WriteObstacle::NameTooLong},
    {"unreachable", WriteObstacle::Unreachable},
    {"is-folder", WriteObstacle::IsFolder},
    {"no-rights", WriteObstacle::NoRights},
    {"read-only", WriteObstacle::ReadOnlyMark},
    {"immutable", WriteObstacle::ImmutableMark},
    {"append-only", WriteObstacle::AppendMark},
    {"read-only-mount", WriteObstacle::ReadOnlyMount},
    {"running-program", WriteObstacle::RunningProgram},
    {"disk-full", WriteObstacle::DiskFull},
    {"no-more-files", WriteObstacle::NoMoreFiles},
    {"quota", WriteObstacle::QuotaFull},
    {"locked", WriteObstacle::Locked},
    {"in-use", WriteObstacle::InUse},
};

template <typename Table, typename Value>
QString wordOf(const Table& table, Value value)
{
    for (const auto& row : table) {
        if (row.value == value) {
            return QLatin1String(row.name);
        }
    }
    return {};
}

QStringList wordsOf(LockHolder::Uses set)
{
    QStringList words;
    for (const auto& use : uses) {
        if (set.testFlag(use.value)) {
            words << QLatin1String(use.name);
        }
    }
    return words;
}

QString startText(const LockHolder& holder)
{
    return holder.startedMs == 0
               ? QString()
               : QDateTime::fromMSecsSinceEpoch(holder.startedMs, Qt::UTC).toString(Qt::ISODate);
}

QJsonArray jsonOf(const std::vector<LockEntry>& locks)
{
    QJsonArray array;
    for (const LockEntry& lock : locks) {
        QJsonObject object{{QStringLiteral("kind"), wordOf(lockKinds, lock.kind)},
                           {QStringLiteral("exclusive"), lock.exclusive},
                           {QStringLiteral("waiting"), lock.waiting},
                           {QStringLiteral("begin"), lock.begin},
                           {QStringLiteral("last"), lock.last < 0 ? QJsonValue() : QJsonValue(lock.last)}};
        if (lock.pid > 0) {
            object[QStringLiteral("pid")] = lock.pid;
        }
        array.append(object);
    }
    return array;
}

QJsonObject jsonOf(const LockInfo& info)
{
    QJsonArray holders;
    for (const LockHolder& holder : info.holders()) {
        holders.append(QJsonObject{{QStringLiteral("pid"), holder.pid},
                                   {QStringLiteral("name"), holder.name},
                                   {QStringLiteral("user"), holder.user},
                                   {QStringLiteral("started"), startText(holder)},
                                   {QStringLiteral("uses"), QJsonArray::fromStringList(wordsOf(holder.uses))},
                                   {QStringLiteral("locks"), jsonOf(holder.locks)}});
    }
    QJsonArray obstacles;
    for (const WriteObstacle& obstacle : info.obstacles()) {
        obstacles.append(QJsonObject{{QStringLiteral("kind"), wordOf(obstacleKinds, obstacle.kind)},
                                     {QStringLiteral("place"), obstacle.place},
                                     {QStringLiteral("text"), obstacle.text}});
    }
    return {{QStringLiteral("file"), info.path()},
            {QStringLiteral("exists"), info.exists()},
            {QStringLiteral("holders"), holders},
            {QStringLiteral("otherLocks"), jsonOf(info.otherLocks())},
            {QStringLiteral("hiddenProcesses"), info.hiddenProcesses()},
            {QStringLiteral("hidden"), info.whatIsHidden()},
            {QStringLiteral("obstacles"), obstacles},
            {QStringLiteral("message"), info.whyNotWritable()}};
}

QString lockText(const LockEntry& lock)
{
    QString text = wordOf(lockKinds, lock.kind) + QLatin1Char(' ') +
                   (lock.exclusive ? Text::tr("на запись") : Text::tr("на чтение"));
    if (lock.begin != 0 || lock.last >= 0) {
        text += QStringLiteral(" %1-%2")
                    .arg(lock.begin)
                    .arg(lock.last < 0 ? QString() : QString::number(lock.last));
    }
    return lock.waiting ? text + QLatin1Char(' ') + Text::tr("(ожидает)") : text;
}

QString lockTexts(const std::vector<LockEntry>& locks)
{
    QStringList texts;
    for (const LockEntry& lock : locks) {
        texts << lockText(lock);
    }
    return texts.join(QStringLiteral(", "));
}

void show(const LockInfo& info)
{
    print(Text::tr("%1:\n").arg(shownName(info.path())));
    for (const LockHolder& holder : info.holders()) {
        QString line = QStringLiteral("  ") + shownLine(LockInfo::describe(holder));
        if (holder.uses != LockHolder::Uses()) {
            line += QStringLiteral("  ") + wordsOf(holder.uses).join(QLatin1Char(','));
        }
        if (!startText(holder).isEmpty()) {
            line += QStringLiteral("  ") + Text::tr("с %1").arg(startText(holder));
        }
        print(line + (holder.locks.empty() ? QString() : QStringLiteral("  ") + lockTexts(holder.locks)) +
              QLatin1Char('\n'));
    }
    for (const LockEntry& lock : info.otherLocks()) {
        const QString who =
            lock.pid > 0 ? Text::tr("процесс %1").arg(lock.pid) : Text::tr("неизвестный процесс");
        print(QStringLiteral("  %1  %2\n").arg(who, lockText(lock)));
    }
    if (!info.exists() && info.obstacles().empty()) {
        print(QStringLiteral("  ") + Text::tr("нет такого файла; создать его ничто не мешает") +
              QLatin1Char('\n'));
    }
    if (info.exists() && info.holders().empty() && info.otherLocks().empty()) {
        const QString nobody = info.whatIsHidden().isEmpty()
                                   ? Text::tr("никто не использует")
                                   : Text::tr("никто из тех, кого видно, не использует");
        print(QStringLiteral("  ") + nobody + QLatin1Char('\n'));
    }
    if (!info.whatIsHidden().isEmpty()) {
        print(QStringLiteral("  ") + shownLine(info.whatIsHidden()) + QLatin1Char('\n'));
    }
    for (const WriteObstacle& obstacle : info.obstacles()) {
        print(QStringLiteral("  ") + Text::tr("нельзя записать: %1").arg(shownLine(obstacle.text)) +
              QLatin1Char('\n'));
    }
}

} // namespace

int runLocks(const QStringList& words)
{
    Arguments arguments(
        QStringLiteral("locks"), {QStringLiteral("FILE... [--json]")},
        Text::tr("Показывает, какие процессы открыли файл или папку, отобразили в память, выполняют или\n"
                 "находятся в ней, какие блокировки держат, и почему файл нельзя записать. Ничего не\n"
                 "меняет и не открывает. Код завершения: 0 — ничто не мешает записи, 1 — что-то мешает."));
    arguments.addFlag("json", Text::tr("в виде JSON"));
    if (!arguments.parse(words)) {
        return Done;
    }
    arguments.expectWords(1, std::numeric_limits<int>::max());
    bool writable = true;
    QJsonArray all;
    for (const QString& path : arguments.words()) {
        const LockInfo info(path);
        writable = writable && info.obstacles().empty();
        if (arguments.isSet("json")) {
            all.append(jsonOf(info));
        } else {
            show(info);
        }
    }
    if (arguments.isSet("json")) {
        printJson({{QStringLiteral("files"), all}});
    }
    return writable ? Done : Failed;
}

} // namespace veltor::tool
