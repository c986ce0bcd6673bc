// veltor journal: looks at a rollback journal that a crash left behind, and settles it.

#include "Command.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <veltor/logging/Logger.h>

namespace veltor::tool {
namespace {

using utils::RollbackFile;

const char* const usage =
    "Usage: veltor journal show JOURNAL [--json]\n"
    "       veltor journal rollback JOURNAL\n"
    "       veltor journal repair JOURNAL\n"
    "       veltor journal discard JOURNAL\n"
    "\n"
    "  show      checks the journal and lists the files it protects; changes nothing.\n"
    "            Of a refused journal it lists what a repair would restore.\n"
    "  rollback  puts every file back to its old contents and removes the journal\n"
    "  repair    salvages a refused journal and rolls back what was salvaged; when something\n"
    "            had to be left out, the journal is kept as JOURNAL.damaged\n"
    "  discard   keeps the new contents and removes the journal\n"
    "\n"
    "Exit status: 0 done (show: the journal is valid), 1 refused or failed, 2 usage.\n";

/// Notes the library's last error on its way to the console.
class ErrorNote
{
public:
    ErrorNote()
        : m_former(logging::setLogSink({}))
    {
        logging::setLogSink([this](const logging::LogRecord& record) {
            if (record.level == logging::LogLevel::Error) {
                m_text = record.text;
            }
            m_former(record);
        });
    }
    ~ErrorNote() { logging::setLogSink(m_former); }
    ErrorNote(const ErrorNote&) = delete;
    ErrorNote& operator=(const ErrorNote&) = delete;

    [[nodiscard]] const QString& text() const { return m_text; }

private:
    logging::LogSink m_former;
    QString m_text;
};

/// Shows "restored / total" on a terminal while a rollback lasts.
void showProgress(RollbackFile& journal)
{
    if (!hasTerminal()) {
        return;
    }
    QElapsedTimer timer;
    timer.start();
    journal.setRollbackProgress([timer, shown = false](quint64 restored, quint64 total) mutable {
        if (restored == total) {
            printProgress(QString());
        } else if (!shown || timer.elapsed() >= 200) {
            shown = true;
            timer.start();
            printProgress(QStringLiteral("%1 of %2 blocks restored").arg(restored).arg(total));
        }
    });
}

/// Keeps a journal that could not be salvaged whole, under another name, where the library would delete
/// it: it is the only copy of the bytes that were left out.
class KeepingRollbackFile : public RollbackFile
{
public:
    [[nodiscard]] const QString& keptAs() const { return m_keptAs; }

protected:
    void remove(const IOPtr& device) override
    {
        if (repairedWhole()) {
            RollbackFile::remove(device);
            return;
        }
        device->close();
        const QString path = journalInfo().absoluteFilePath();
        QString name = path + QStringLiteral(".damaged");
        for (int number = 2; QFileInfo::exists(name); ++number) {
            name = path + QStringLiteral(".damaged-%1").arg(number);
        }
        if (QFile::rename(path, name)) {
            m_keptAs = name;
        }
    }

private:
    QString m_keptAs;
};

QString versionText(const RollbackFile& journal)
{
    return journal.journalVersion().isNull() ? QString() : journal.journalVersion().toString();
}

void showAsJson(const RollbackFile& journal, const QString& fault)
{
    QJsonArray files;
    for (const auto& file : journal.protectedFiles()) {
        files.append(QJsonObject{{QStringLiteral("name"), file.name},
                                 {QStringLiteral("size"), static_cast<qint64>(file.size)},
                                 {QStringLiteral("blocks"), static_cast<qint64>(file.blocks)},
                                 {QStringLiteral("saved"), static_cast<qint64>(file.savedBytes)}});
    }
    const QJsonObject object{
        {QStringLiteral("status"), fault.isEmpty() ? QStringLiteral("valid") : QStringLiteral("refused")},
        {QStringLiteral("message"), fault},
        {QStringLiteral("version"), versionText(journal)},
        {QStringLiteral("files"), files},
        {QStringLiteral("freeBlocks"), static_cast<qint64>(journal.freeBlockCount())}};
    printJson(object);
}

void showAsTable(const RollbackFile& journal, bool valid)
{
    print(QStringLiteral("Journal %1, version %2, free blocks: %3\n")
              .arg(valid ? QStringLiteral("valid") : QStringLiteral("refused"), versionText(journal))
              .arg(journal.freeBlockCount()));
    const auto files = journal.protectedFiles();
    if (files.empty()) {
        print(valid ? QStringLiteral("It protects no files.\n")
                    : QStringLiteral("A repair would restore nothing.\n"));
        return;
    }
    print(valid ? QStringLiteral("A rollback restores:\n") : QStringLiteral("A repair would restore:\n"));
    const QString row = QStringLiteral("%1 %2 %3  %4\n");
    print(row.arg(QStringLiteral("old size"), 15)
              .arg(QStringLiteral("blocks"), 10)
              .arg(QStringLiteral("saved"), 15)
              .arg(QStringLiteral("file")));
    for (const auto& file : files) {
        print(row.arg(file.size, 15).arg(file.blocks, 10).arg(file.savedBytes, 15).arg(file.name));
    }
}

int show(const QFileInfo& path, bool json)
{
    RollbackFile journal;
    const ErrorNote note;
    const bool valid = journal.openByName(path, QIODevice::ReadOnly);
    const QString fault = valid ? QString() : note.text();
    const bool there = journal.isOpen();
    if (!valid && there) {
        journal.repair();
    }
    if (json) {
        showAsJson(journal, fault);
    } else if (there) {
        showAsTable(journal, valid);
    }
    return valid ? Done : Failed;
}

/// Rolls back what @p journal holds and tells how many files that were.
bool restoreFiles(RollbackFile& journal)
{
    const std::size_t count = journal.protectedFiles().size();
    showProgress(journal);
    if (!journal.rollback()) {
        printError(QStringLiteral("veltor: files that could not be restored: %1; the journal is kept")
                       .arg(journal.protectedFiles().size()));
        return false;
    }
    print(QStringLiteral("Files restored: %1\n").arg(count));
    return true;
}

int rollBack(const QFileInfo& path, bool)
{
    RollbackFile journal;
    return journal.openByName(path, QIODevice::ReadOnly) && restoreFiles(journal) ? Done : Failed;
}

int repair(const QFileInfo& path, bool)
{
    KeepingRollbackFile journal;
    if (journal.openByName(path, QIODevice::ReadOnly)) {
        journal.close();
        return rollBack(path, false);
    }
    if (!journal.isOpen()) {
        return Failed;
    }
    journal.repair();
    const bool whole = journal.repairedWhole();
    if (!whole && journal.protectedFiles().empty()) {
        printError(QStringLiteral("veltor: nothing could be salvaged; the journal is left as it is"));
        return Failed;
    }
    if (!restoreFiles(journal)) {
        return Failed;
    }
    if (!whole) {
        const QString& kept = journal.keptAs();
        printError(
            QStringLiteral("veltor: not everything could be salvaged; the damaged journal ") +
            (kept.isEmpty() ? QStringLiteral("stays where it is") : QStringLiteral("is kept as ") + kept));
    }
    return Done;
}

int discard(const QFileInfo& path, bool)
{
    RollbackFile journal;
    if (!journal.openByName(path, QIODevice::ReadOnly)) {
        if (!journal.isOpen()) {
            return Failed;
        }
        journal.repair();
        if (!journal.isRecognized()) {
            printError(QStringLiteral("veltor: this is no rollback journal; it is left as it is"));
            return Failed;
        }
    }
    journal.commit();
    if (QFileInfo::exists(path.absoluteFilePath())) {
        return Failed;
    }
    print(QStringLiteral("Journal removed; the files keep their new contents.\n"));
    return Done;
}

} // namespace

int runJournal(const QStringList& arguments)
{
    QStringList words = arguments;
    if (words.contains(QStringLiteral("--help")) || words.contains(QStringLiteral("-h"))) {
        print(QString::fromLatin1(usage));
        return Done;
    }
    const bool json = words.removeAll(QStringLiteral("--json")) > 0;
    const QString action = words.value(0);
    const bool showing = action == QLatin1String("show");
    int (*run)(const QFileInfo&, bool) = showing                               ? &show
                                         : action == QLatin1String("rollback") ? &rollBack
                                         : action == QLatin1String("repair")   ? &repair
                                         : action == QLatin1String("discard")  ? &discard
                                                                               : nullptr;
    if (!run || words.size() != 2 || (json && !showing) || words[1].startsWith(QLatin1String("--"))) {
        throw UsageError(QString::fromLatin1(usage));
    }
    return run(QFileInfo(words[1]), json);
}

} // namespace veltor::tool
