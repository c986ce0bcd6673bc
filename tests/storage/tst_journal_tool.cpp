// The command-line tool on real journals: what it prints, what it changes, how it ends.

#include "storage/JournalImage.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/Transaction.h>

#include <QtCore/QCoreApplication>

#include <gmock/gmock.h>

namespace veltor::test {
namespace {

using testing::HasSubstr;

class JournalTool : public testing::Test, protected Folder
{
protected:
    /// Puts the files there, and the journal of one row.
    void prepare(const QString& journal)
    {
        QDir(path()).removeRecursively();
        write("a", QByteArray(100, 'N'));
        write("b", QByteArray(50, 'N'));
        m_image = JournalImage();
        m_image.damage(journal.contains(u("=")) ? journal : QString());
        m_image.bytes = journal == u("text") ? "somebody's text, which is no journal at all" : m_image.bytes;
        if (journal != u("none")) {
            write(journal == u("link") ? "target" : "journal", m_image.bytes);
        }
        if (journal == u("link")) {
            QFile::link(path("target"), path("journal"));
        }
        if (journal == u("held")) {
            EXPECT_TRUE(m_holder.openByName(QFileInfo(path("journal")), QIODevice::ReadWrite));
        }
    }
    Outcome run(QStringList words)
    {
        words.insert(1, path("journal"));
        return test::run(QStringLiteral(VELTOR_TOOL), QStringList{u("journal")} + words);
    }
    /// "old" or "new" contents of both files, and what became of the journal.
    [[nodiscard]] QString state() const
    {
        const QByteArray oldA = QByteArray(10, 'N') + "saved bytes one" + QByteArray(75, 'N');
        const QByteArray a = read("a");
        const QByteArray b = read("b");
        const QString journal = read("journal.damaged") == m_image.bytes ? u("kept")
                                : read("journal") == m_image.bytes       ? u("same")
                                : QFile::exists(path("journal"))         ? u("changed")
                                                                         : u("gone");
        return QStringList{u(a == oldA                   ? "old"
                             : a == QByteArray(100, 'N') ? "new"
                                                         : "other"),
                           u(b == "b" + QByteArray(49, 'N') ? "old"
                             : b == QByteArray(50, 'N')     ? "new"
                                                            : "other"),
                           journal}
            .join(u(" "));
    }

    JournalImage m_image;
    utils::RollbackFile m_holder;
};

TEST_F(JournalTool, DoesWhatTheTableSays)
{
    qputenv("LC_ALL", "C.UTF-8");
    for (QStringList row : readTable("storage/data/tool.txt", '|')) {
        SCOPED_TRACE(row.join(u("|")).toStdString());
        ASSERT_EQ(row.size(), 6);
#ifdef Q_OS_WIN // where a lock does not tell whose it is, and QFile makes shortcuts
        if (row[0].trimmed() == u("link")) {
            continue;
        }
        row[4].replace(u("(process {pid}"), u("by another program"));
#endif
        for (QString& cell : row) {
            cell = cell.trimmed().replace(u("{pid}"), QString::number(QCoreApplication::applicationPid()));
        }
        prepare(row[0]);
        const Outcome outcome = run(row[1].split(u(" ")));
        EXPECT_EQ(outcome.status, row[2].toInt()) << outcome.errors;
        const std::string output = QString::fromStdString(outcome.output).simplified().toStdString();
        EXPECT_THAT(output, HasSubstr(row[3].toStdString()));
        EXPECT_THAT(outcome.errors, HasSubstr(row[4].toStdString()));
        EXPECT_EQ(row[4].isEmpty(), outcome.errors.empty()) << outcome.errors;
        EXPECT_EQ(outcome.output.find('\x1b'), std::string::npos);
        EXPECT_EQ(state(), row[5]);
        m_holder.close();
    }
}

const Role dies("dying transaction", [](const QStringList& arguments) -> int {
    const LogCapture log;
    utils::Transaction transaction = utils::Transaction::begin(arguments[0] + u("/journal"));
    const QString made = arguments[0] + u("/c");
    const bool done = transaction.create(made) && transaction.open(made)->write("made") == 4 &&
                      transaction.remove(arguments[0] + u("/a"));
    std::_Exit(done ? 0 : 1);
});

TEST_F(JournalTool, SettlesTransactionsWithTheirNames)
{
    for (const char* action : {"rollback", "discard"}) {
        prepare(u("none"));
        ASSERT_EQ(play("dying transaction", {path()}).status, 0);
        const Outcome shown = run({u("show")});
        EXPECT_EQ(shown.status, 0) << shown.errors;
        EXPECT_THAT(shown.output, HasSubstr("new file c"));
        EXPECT_EQ(run({u(action)}).status, 0);
        const bool kept = action == std::string("discard");
        EXPECT_EQ(read("a"), kept ? QByteArray("missing") : QByteArray(100, 'N'));
        EXPECT_EQ(read("c"), kept ? "made" : "missing");
        EXPECT_EQ(QDir(path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 2);
    }
}

} // namespace
} // namespace veltor::test
