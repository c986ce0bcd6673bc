// veltor journal: looks at a rollback journal, and settles one that a killed program left behind.

#include "Arguments.h"
#include "Command.h"
#include "JsonText.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/logging/Logger.h>
#include <veltor/utils/Transaction.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

#include <algorithm>

namespace veltor::tool {
namespace {

using utils::JournalState;
using utils::JournalView;
using utils::RollbackFile;
using utils::Transaction;
using NameChange = Transaction::NameChange;

/// The faults that the library logs, each on standard error, once.
class Faults
{
public:
    Faults()
        : m_former(logging::setLogSink({}))
    {
        logging::setLogSink([this](const logging::LogRecord& record) {
            if (record.level == logging::LogLevel::Error) {
                tell(record.text);
            }
        });
    }
    ~Faults() { logging::setLogSink(m_former); }
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    void tell(const QString& fault)
    {
        if (!fault.isEmpty() && !m_told.contains(fault)) {
            m_told << fault;
            printError(shownLine(fault));
        }
    }

private:
    logging::LogSink m_former;
    QStringList m_told;
};

/// Shows "restored / total" on a terminal while a rollback lasts, and ends it at an interrupt.
class Watch
{
public:
    bool operator()(unsigned long long restored, unsigned long long total)
    {
        if (hasTerminal() && restored == total) {
            printProgress(QString());
        } else if (hasTerminal() && (!m_timer.isValid() || m_timer.elapsed() >= 200)) {
            m_timer.start();
            printProgress(Text::tr("восстановлено блоков: %1 из %2").arg(restored).arg(total));
        }
        return !InterruptWatch::interrupted();
    }

private:
    QElapsedTimer m_timer;
};

const char* wordOf(NameChange::Kind kind)
{
    return kind == NameChange::Kind::Create   ? "create"
           : kind == NameChange::Kind::Remove ? "remove"
                                              : "rename";
}

void showAsJson(const JournalView& view, const std::vector<NameChange>& names)
{
    JsonText text(json::JsonFormatter::formatIndented);
    text.beginObject();
    text.key("status");
    text.value(view.valid ? QStringLiteral("valid") : QStringLiteral("refused"));
    text.key("message");
    text.value(view.reason);
    text.key("inUse");
    text.value(QJsonValue(view.state == JournalState::InUse));
    text.key("owner");
    text.value(static_cast<quint64>(view.ownerPid));
    text.key("version");
    text.value(view.version.isNull() ? QString() : view.version.toString());
    text.key("files");
    text.beginArray();
    for (const auto& file : view.files) {
        text.beginObject();
        text.key("name");
        text.value(file.name);
        text.key("size");
        text.value(file.size);
        text.key("blocks");
        text.value(file.blocks);
        text.key("saved");
        text.value(file.savedBytes);
        text.end();
    }
    text.end();
    text.key("names");
    text.beginArray();
    for (const NameChange& change : names) {
        text.beginObject();
        text.key("change");
        text.value(QString::fromLatin1(wordOf(change.kind)));
        text.key("name");
        text.value(change.name);
        if (change.kind == NameChange::Kind::Rename) {
            text.key("target");
            text.value(change.target);
        }
        text.end();
    }
    text.end();
    text.key("freeBlocks");
    text.value(view.freeBlocks);
    text.end();
    print(shownJson(QString::fromStdString(text.take())) + QLatin1Char('\n'));
}

void showNames(const std::vector<NameChange>& names)
{
    if (names.empty()) {
        return;
    }
    print(Text::tr("Имена, которые изменит фиксация транзакции:") + QLatin1Char('\n'));
    for (const NameChange& change : names) {
        const QString name = shownName(change.name);
        const QString line = change.kind == NameChange::Kind::Create ? Text::tr("новый файл %1").arg(name)
                             : change.kind == NameChange::Kind::Remove
                                 ? Text::tr("удаление %1").arg(name)
                                 : Text::tr("переименование %1 в %2").arg(name, shownName(change.target));
        print(QStringLiteral("  ") + line + QLatin1Char('\n'));
    }
}

void showAsTable(const JournalView& view, const std::vector<NameChange>& names)
{
    const QString version = view.version.toString();
    print((view.valid ? Text::tr("Журнал исправен, версия %1, свободных блоков: %2")
                      : Text::tr("Журнал отвергнут, версия %1, свободных блоков: %2"))
              .arg(version)
              .arg(view.freeBlocks) +
          QLatin1Char('\n'));
    if (view.files.empty()) {
        print((view.valid ? Text::tr("Он не защищает ни одного файла.")
                          : Text::tr("Исправление не восстановило бы ничего.")) +
              QLatin1Char('\n'));
        showNames(names);
        return;
    }
    print((view.valid ? Text::tr("Откат восстановит:") : Text::tr("Исправление восстановило бы:")) +
          QLatin1Char('\n'));
    const QString row = QStringLiteral("%1 %2 %3  %4\n");
    print(row.arg(Text::tr("прежний размер"), 20)
              .arg(Text::tr("блоков"), 12)
              .arg(Text::tr("сохранено"), 20)
              .arg(Text::tr("файл")));
    for (const auto& file : view.files) {
        print(row.arg(file.size, 20).arg(file.blocks, 12).arg(file.savedBytes, 20).arg(shownName(file.name)));
    }
    showNames(names);
}

/// Whether there is anything to settle.
bool isThere(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() || file.isSymLink() || !Transaction::nameChanges(path).empty();
}

QString notThere(const QString& path)
{
    return Text::tr("%1: такого файла нет").arg(shownName(path));
}

int show(const QString& path, const Arguments& arguments)
{
    const JournalView view = RollbackFile::inspect(QFileInfo(path));
    const std::vector<NameChange> names = Transaction::nameChanges(path);
    if (arguments.isSet("json")) {
        showAsJson(view, names);
    }
    const bool used = view.state == JournalState::InUse;
    if (!isThere(path)) {
        printError(notThere(path));
    } else if (used) {
        printError(shownLine(view.reason));
    } else if (!view.valid) {
        printError(shownName(path) + QStringLiteral(": ") + shownLine(view.reason));
    }
    if (!arguments.isSet("json") && (view.valid || !view.version.isNull())) {
        showAsTable(view, names);
    }
    return view.valid || used ? Done : Failed;
}

/// True when a file of the journal does not lie in its folder.
bool leadsOutside(const QString& path)
{
    const auto files = RollbackFile::inspect(QFileInfo(path)).files;
    return std::any_of(files.begin(), files.end(), [](const auto& file) {
        const QString name = QDir::cleanPath(file.name);
        return QDir::isAbsolutePath(name) || name.startsWith(QLatin1String(".."));
    });
}

int restore(const QString& path, const Arguments& arguments, Transaction::DamagedJournal damaged)
{
    Faults faults;
    if (!isThere(path)) {
        printError(notThere(path));
        return Failed;
    }
    const InterruptWatch watch;
    Transaction::Options options;
    options.trustForeign = true; // who names it trusts it
    options.damaged = damaged;
    options.progress = Watch();
    if (arguments.isSet("anywhere")) {
        options.nameRule = RollbackFile::NameRule::Anywhere;
    }
    if (arguments.isSet("durable")) {
        options.durability = utils::Durability::Durable;
    }
    const Transaction::Recovery done = Transaction::recover(path, options);
    if (done.foundJournal) {
        print(Text::tr("Восстановлено файлов: %1").arg(done.restored) + QLatin1Char('\n'));
    }
    if (done.finishedNames) {
        print(Text::tr("Имена завершённой транзакции приведены в порядок.") + QLatin1Char('\n'));
    }
    for (const auto& failure : done.failures) {
        printError(
            Text::tr("не восстановлен: %1: %2").arg(shownName(failure.name), shownLine(failure.reason)));
    }
    if (!done.keptAs.isEmpty()) {
        printError(Text::tr("восстановлено не всё; повреждённый журнал сохранён как %1")
                       .arg(shownName(done.keptAs)));
        return Failed;
    }
    if (done.result.status == Transaction::Status::Canceled) {
        printError(Text::tr("прервано; журнал сохранён"));
        return Interrupted;
    } else if (!done.result) {
        faults.tell(done.result.reason);
        if (!arguments.isSet("anywhere") && leadsOutside(path)) {
            printError(Text::tr("журнал называет файлы вне своей папки; их восстановит только --anywhere"));
        }
    }
    return done.result ? Done : Failed;
}

int rollBack(const QString& path, const Arguments& arguments)
{
    return restore(path, arguments, Transaction::DamagedJournal::Refuse);
}

int repair(const QString& path, const Arguments& arguments)
{
    return restore(path, arguments, Transaction::DamagedJournal::Salvage);
}

int discard(const QString& path, const Arguments&)
{
    // What is wrong with the journal's contents does not matter now.
    const logging::LogSink former = logging::setLogSink([](const logging::LogRecord&) {});
    Transaction::Options options;
    options.trustForeign = true;
    const Transaction::Result result = Transaction::discard(path, options);
    logging::setLogSink(former);
    if (!result) {
        printError(shownLine(result.reason));
        return Failed;
    }
    print(Text::tr("Журнал удалён; файлы сохраняют новое содержимое.") + QLatin1Char('\n'));
    return Done;
}

struct Action
{
    const char* name;
    int (*value)(const QString& path, const Arguments& arguments);
};

constexpr Action actions[] = {
    {"show", &show}, {"rollback", &rollBack}, {"repair", &repair}, {"discard", &discard}};

} // namespace

int runJournal(const QStringList& words)
{
    Arguments arguments(
        QStringLiteral("journal"),
        {QStringLiteral("show JOURNAL [--json]"), QStringLiteral("rollback JOURNAL [--anywhere] [--durable]"),
         QStringLiteral("repair JOURNAL [--anywhere] [--durable]"), QStringLiteral("discard JOURNAL")},
        Text::tr("show проверяет журнал отката и перечисляет файлы, которые он защищает,\n"
                 "ничего не меняя; от отвергнутого журнала — то, что восстановило бы repair.\n"
                 "rollback возвращает файлам прежнее содержимое и удаляет журнал.\n"
                 "repair восстанавливает всё, что цело в отвергнутом журнале; если это не всё,\n"
                 "журнал сохраняется как JOURNAL.damaged.\n"
                 "discard сохраняет новое содержимое и удаляет журнал."));
    arguments.addFlag("json", Text::tr("show: JSON вместо таблицы"));
    arguments.addFlag("anywhere", Text::tr("rollback, repair: восстанавливать и файлы вне папки журнала"));
    arguments.addFlag("durable", Text::tr("rollback, repair: журнал записан с расчётом на потерю питания"));
    if (!arguments.parse(words)) {
        return Done;
    }
    arguments.expectWords(2, 2);
    const QString name = arguments.words()[0];
    const auto* const action = std::find_if(std::begin(actions), std::end(actions), [&](const Action& row) {
        return name == QLatin1String(row.name);
    });
    if (action == std::end(actions)) {
        throw UsageError(Text::tr("нет такого действия: '%1'").arg(shownLine(name)));
    }
    const bool shows = action->value == &show;
    const bool restores = action->value == &rollBack || action->value == &repair;
    const bool wantsRestoring = arguments.isSet("anywhere") || arguments.isSet("durable");
    if ((arguments.isSet("json") && !shows) || (wantsRestoring && !restores)) {
        throw UsageError(Text::tr("действие '%1' не знает этого ключа").arg(name));
    }
    return action->value(arguments.words()[1], arguments);
}

} // namespace veltor::tool
