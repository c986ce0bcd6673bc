// The command-line tool on real journals: what it prints, what it changes, how it ends.

#include "storage/JournalImage.h"
#include "support/Files.h"
#include "support/Printers.h"
#include "support/Process.h"
#include "support/Text.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>

namespace veltor::test {
namespace {

using testing::HasSubstr;

class JournalTool : public testing::Test, protected Folder
{
protected:
    void SetUp() override
    {
        write("a", QByteArray(100, 'N'));
        write("b", QByteArray(50, 'N'));
    }

    /// Runs "veltor journal ..." and returns its exit code; what it printed is in m_out and m_err.
    int run(const QStringList& arguments)
    {
        const Outcome outcome = test::run(QStringLiteral(VELTOR_TOOL), QStringList{u("journal")} + arguments);
        m_out = QByteArray::fromStdString(outcome.output);
        m_err = QString::fromStdString(outcome.errors).trimmed();
        return outcome.status;
    }
    int run(const char* action) { return run({u(action), path("journal")}); }

    QByteArray m_out;
    QString m_err;
};

TEST_F(JournalTool, ShowsAndRollsBack)
{
    const JournalImage image;
    write("journal", image.bytes);
    EXPECT_EQ(run({u("show"), path("journal"), u("--json")}), 0);
    EXPECT_EQ(QJsonDocument::fromJson(m_out), QJsonDocument::fromJson(R"({
        "status": "valid", "message": "", "version": "{9fc29858-1631-44ab-8089-5feb8d81855a}", "freeBlocks": 2,
        "files": [{"name": "a", "size": 100, "blocks": 2, "saved": 15},
                  {"name": "b", "size": 50, "blocks": 1, "saved": 1}]})"))
        << m_out.toStdString();
    EXPECT_EQ(run("show"), 0);
    EXPECT_TRUE(m_out.contains("            100          2              15  a\n")) << m_out.toStdString();
    EXPECT_EQ(read("journal"), image.bytes);
    EXPECT_EQ(read("a"), QByteArray(100, 'N'));

    EXPECT_EQ(run("rollback"), 0);
    EXPECT_EQ(read("a"), QByteArray(10, 'N') + "saved bytes one" + QByteArray(75, 'N'));
    EXPECT_EQ(read("b"), "b" + QByteArray(49, 'N'));
    EXPECT_EQ(read("journal"), "missing");
    EXPECT_EQ(run("rollback"), 1);
    EXPECT_TRUE(m_err.contains(path("journal")));
}

TEST_F(JournalTool, RefusesDamageAndKeepsWhatItCannotSalvage)
{
    JournalImage image;
    image.damage(u("B1+40:1=7"));
    write("journal", image.bytes);
    qputenv("LC_ALL", "ru_RU.UTF-8"); // the language of the message below
    EXPECT_EQ(run({u("show"), path("journal"), u("--json")}), 1);
    qputenv("LC_ALL", "C.UTF-8");
    const QJsonDocument shown = QJsonDocument::fromJson(m_out);
    const QString message =
        image.message(u("Не совпадает контрольная сумма данных отката по смещению {B1+40}"));
    EXPECT_EQ(shown[u("status")].toString(), u("refused"));
    EXPECT_EQ(shown[u("message")].toString(), message);
    EXPECT_EQ(m_err, message);
    EXPECT_EQ(run("rollback"), 1);
    EXPECT_EQ(read("a"), QByteArray(100, 'N'));

    write("journal.damaged", "an earlier one");
    EXPECT_EQ(run("repair"), 0);
    EXPECT_EQ(read("a").mid(10, 15), "saved bytes one");
    EXPECT_EQ(read("journal"), "missing");
    EXPECT_EQ(read("journal.damaged"), "an earlier one");
    EXPECT_EQ(read("journal.damaged-2"), image.bytes);
    EXPECT_TRUE(m_err.contains(path("journal.damaged-2"))) << m_err.toStdString();
}

TEST_F(JournalTool, RepairsAWholeOrUnfinishedJournalWithoutLeftovers)
{
    for (const char* damage : {"", "a.last=A1"}) {
        SetUp();
        JournalImage image;
        image.damage(u(damage));
        write("journal", image.bytes);
        EXPECT_EQ(run("repair"), 0) << damage;
        EXPECT_EQ(read("a").mid(10, 15), "saved bytes one");
        EXPECT_EQ(read("journal"), "missing");
        EXPECT_EQ(read("journal.damaged"), "missing");
    }
}

TEST_F(JournalTool, DiscardsJournalsAndNothingElse)
{
    write("journal", JournalImage().bytes);
    EXPECT_EQ(run("discard"), 0);
    EXPECT_EQ(read("journal"), "missing");
    EXPECT_EQ(read("a"), QByteArray(100, 'N'));
    for (const char* action : {"show", "rollback", "repair", "discard"}) {
        write("journal", "somebody's text, which is no journal at all");
        EXPECT_EQ(run(action), 1) << action;
        EXPECT_EQ(read("journal"), "somebody's text, which is no journal at all") << action;
    }
    write("journal", QByteArray()); // killed while the journal was created
    EXPECT_EQ(run("discard"), 0);
    EXPECT_EQ(read("journal"), "missing");
}

TEST_F(JournalTool, TellsItsUsage)
{
    EXPECT_EQ(run({u("show")}), 2);
    EXPECT_EQ(run("melt"), 2);
    EXPECT_TRUE(m_out.isEmpty());
    EXPECT_EQ(run({u("--help")}), 0);
    EXPECT_TRUE(m_out.contains("veltor journal repair JOURNAL"));
}

} // namespace
} // namespace veltor::test
