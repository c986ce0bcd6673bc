// The command-line tool on real journals: what it prints, what it changes, how it ends.

#include "storage/JournalImage.h"
#include "support/Printers.h"

#include <veltor/utils/RollbackFile.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace veltor::test {
namespace {

class JournalTool : public testing::Test
{
protected:
    void SetUp() override
    {
        write("a", QByteArray(100, 'N'));
        write("b", QByteArray(50, 'N'));
    }

    QString path(const char* name) const { return m_directory.filePath(QString::fromUtf8(name)); }

    void write(const char* name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    QByteArray read(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }

    /// Runs "veltor journal ..." and returns its exit code; what it printed is in m_out and m_err.
    int run(const QStringList& arguments)
    {
        QProcess tool;
        tool.start(QStringLiteral(VELTOR_TOOL), QStringList{QStringLiteral("journal")} + arguments);
        EXPECT_TRUE(tool.waitForFinished(30000));
        m_out = tool.readAllStandardOutput();
        m_err = QString::fromUtf8(tool.readAllStandardError()).trimmed();
        return tool.exitCode();
    }
    int run(const char* action) { return run({QString::fromLatin1(action), path("journal")}); }

    QJsonObject showJson(int expectedCode)
    {
        EXPECT_EQ(run({QStringLiteral("show"), path("journal"), QStringLiteral("--json")}), expectedCode);
        return QJsonDocument::fromJson(m_out).object();
    }

    QTemporaryDir m_directory;
    QByteArray m_out;
    QString m_err;
};

TEST_F(JournalTool, ShowsAndRollsBack)
{
    const JournalImage image;
    write("journal", image.bytes);
    const QJsonObject shown = showJson(0);
    EXPECT_EQ(shown[QStringLiteral("status")].toString(), QLatin1String("valid"));
    EXPECT_EQ(shown[QStringLiteral("message")].toString(), QString());
    EXPECT_EQ(shown[QStringLiteral("version")].toString(),
              QLatin1String("{9fc29858-1631-44ab-8089-5feb8d81855a}"));
    EXPECT_EQ(shown[QStringLiteral("freeBlocks")].toInt(), 2);
    const QJsonArray files = shown[QStringLiteral("files")].toArray();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0].toObject(), (QJsonObject{{QStringLiteral("name"), QStringLiteral("a")},
                                                {QStringLiteral("size"), 100},
                                                {QStringLiteral("blocks"), 2},
                                                {QStringLiteral("saved"), 15}}));
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
    image.damage("B1+40:1=7");
    write("journal", image.bytes);
    const QJsonObject shown = showJson(1);
    const QString message = image.message("Не совпадает контрольная сумма данных отката по смещению {B1+40}");
    EXPECT_EQ(shown[QStringLiteral("status")].toString(), QLatin1String("refused"));
    EXPECT_EQ(shown[QStringLiteral("message")].toString(), message);
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
        image.damage(damage);
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
    EXPECT_EQ(run({QStringLiteral("show")}), 2);
    EXPECT_EQ(run("melt"), 2);
    EXPECT_TRUE(m_out.isEmpty());
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    EXPECT_TRUE(m_out.contains("veltor journal repair JOURNAL"));
}

} // namespace
} // namespace veltor::test
