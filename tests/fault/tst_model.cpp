// Random transactions beside a model that keeps whole files in memory: whatever was done, and whatever failed
// meanwhile, in the end every file is what the model says.

#include "Scenario.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace veltor::test {
namespace {

using Model = std::map<QString, QByteArray>;

class RandomTransaction
{
public:
    RandomTransaction(unsigned seed, const Folder& folder)
        : m_random(seed)
        , m_folder(folder)
        , m_way(static_cast<Path>(seed % 4))
    {
        for (const char* name : {"a", "b", "папка/c", "d"}) {
            // A large one is not in one piece when it is read back.
            m_now[u(name)] = upTo(10) == 0 ? pattern(700000, upTo(255)) : bytes(upTo(4000) * upTo(1));
            m_folder.write(name, m_now[u(name)]);
        }
        m_before = m_now;
        EXPECT_TRUE(openJournal(QIODevice::WriteOnly));
    }

    void run()
    {
        for (int steps = upTo(40); steps > 0 && !m_failed; --steps) {
            step();
        }
        const int end = upTo(3);
        if (!m_failed && end == 0) {
            EXPECT_TRUE(m_journal->commit());
            m_before = m_now;
        } else if (end == 1) {
            m_journal->setRollbackProgress([&](quint64 restored, quint64) {
                if (restored == 3) {
                    m_journal->cancelRollback();
                }
            });
            m_journal->rollback();
        }
        m_files.clear();
        m_journal.reset();
        for (int tries = upTo(4); tries > 0 && QFileInfo::exists(journal()); --tries) {
            tryToRecover();
        }
        if (QFileInfo::exists(journal())) {
            if (!openJournal(QIODevice::ReadWrite)) { // an append failed half-way
                m_journal->repair();
                EXPECT_TRUE(m_journal->repairedWhole());
            }
            EXPECT_TRUE(m_journal->rollback()) << m_journal->errorString().toStdString();
        }
        for (const auto& [name, content] : m_before) {
            EXPECT_TRUE(m_folder.read(name.toUtf8()) == content) << name.toStdString();
        }
        EXPECT_FALSE(QFileInfo::exists(journal()));
    }

private:
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }

    /// Some are nothing but zeros, as holes are.
    QByteArray bytes(int size)
    {
        const char fill = upTo(3) == 0 ? '\0' : static_cast<char>(upTo(255));
        QByteArray bytes(size, fill);
        if (fill != 0) {
            std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<char>(m_random()); });
        }
        return bytes;
    }

    QString journal() const { return m_folder.path("journal"); }

    /// With the same device object as before, or another one; the former savepoints are nothing to it.
    bool openJournal(QIODevice::OpenMode mode)
    {
        if (!m_journal || upTo(1) == 0) {
            m_journal = std::make_unique<PlannedRollbackFile>(m_way);
        }
        const bool opened = m_journal->openJournal(journal(), mode);
        for (const auto& [savepoint, then] : std::exchange(m_savepoints, {})) {
            EXPECT_FALSE(m_journal->rollbackTo(savepoint));
        }
        return opened;
    }

    /// An operation fails on the way; what could not be read is not taken for nothing, nor for other bytes.
    void tryToRecover()
    {
        const bool needed = utils::RollbackFile::needsRecovery(QFileInfo(journal()));
        Plan plan{upTo(40), upTo(1) == 0 ? Fate::Error : Fate::ShortWrite, upTo(3) != 0};
        const PlanScope scope(plan);
        EXPECT_TRUE(utils::RollbackFile::needsRecovery(QFileInfo(journal())) || !needed);
        plan.count = 0;
        bool whole = openJournal(QIODevice::ReadWrite);
        if (!whole) {
            m_journal->repair();
            whole = m_journal->repairedWhole();
        }
        EXPECT_TRUE((whole && m_journal->rollback()) || QFileInfo::exists(journal()));
        m_journal.reset();
    }

    utils::SecuredFile& file(const QString& name)
    {
        auto& file = m_files[name];
        if (!file) {
            file = std::make_unique<utils::SecuredFile>();
        }
        if (!file->isOpen() && !file->open(m_folder.path(name.toUtf8()), *m_journal)) {
            m_failed = true;
        }
        return *file;
    }

    void step()
    {
        Plan plan{upTo(60) == 0 ? upTo(8) : -1, upTo(1) == 0 ? Fate::Error : Fate::ShortWrite, upTo(2) == 0};
        const PlanScope scope(plan);
        const QString name = std::next(m_now.begin(), upTo(3))->first;
        switch (upTo(9)) {
        case 0:
            m_savepoints.emplace_back(m_journal->savepoint(), m_now);
            break;
        case 1:
            goBack();
            break;
        case 2: {
            m_files.clear();
            const auto end = m_journal->findBlock(1);
            m_journal->close();
            EXPECT_TRUE(plan.chosen >= 0 || QFileInfo(journal()).size() == static_cast<qint64>(end));
            m_failed = !openJournal(QIODevice::ReadWrite);
            break;
        }
        case 3:
        case 4:
            resize(name, upTo(6000) * upTo(1));
            break;
        case 5:
            writeMany();
            break;
        default:
            write(name, upTo(m_now[name].size() + 300), bytes(upTo(900)));
        }
        if (!m_failed && plan.chosen < 0) {
            EXPECT_EQ(file(name).size(), m_now[name].size());
            EXPECT_TRUE(m_folder.read(name.toUtf8()) == m_now[name]);
        }
    }

    void write(const QString& name, int position, const QByteArray& data)
    {
        auto& device = file(name);
        m_failed = m_failed || !device.seek(position) || device.write(data) != data.size();
        note(name, position, data);
    }

    /// In one go, of any files, overlapping or not.
    void writeMany()
    {
        std::vector<utils::RollbackDevice::BlockWrite> writes;
        for (int count = upTo(12); count > 0; --count) {
            const QString name = std::next(m_now.begin(), upTo(3))->first;
            const int position = upTo(m_now[name].size() + 300);
            const auto key = m_journal->addFile(QFileInfo(m_folder.path(name.toUtf8())));
            writes.push_back({key, static_cast<quint64>(position), bytes(upTo(900) * upTo(1))});
            note(name, position, writes.back().data);
        }
        m_failed = !m_journal->writeBlocks(writes);
    }

    void note(const QString& name, int position, const QByteArray& data)
    {
        auto& content = m_now[name];
        if (!data.isEmpty()) {
            content += QByteArray(qMax(0, position + data.size() - content.size()), '\0');
            content.replace(position, data.size(), data);
        }
    }

    void resize(const QString& name, int size)
    {
        m_failed = m_failed || !file(name).resize(size);
        auto& content = m_now[name];
        content = content.left(size) + QByteArray(qMax(0, size - content.size()), '\0');
    }

    void goBack()
    {
        if (m_savepoints.empty()) {
            return;
        }
        const int chosen = upTo(static_cast<int>(m_savepoints.size()) - 1);
        const auto last = m_savepoints.back().first;
        const bool lastIsGone = m_savepoints.size() > static_cast<std::size_t>(chosen) + 1;
        m_savepoints.resize(static_cast<std::size_t>(chosen) + 1);
        const auto& [savepoint, then] = m_savepoints.back();
        m_failed = !m_journal->rollbackTo(savepoint);
        m_now = then;
        EXPECT_FALSE(lastIsGone && m_journal->rollbackTo(last));
    }

    std::mt19937 m_random;
    const Folder& m_folder;
    const Path m_way;
    Model m_before;
    Model m_now;
    std::unique_ptr<PlannedRollbackFile> m_journal;
    std::map<QString, std::unique_ptr<utils::SecuredFile>> m_files;
    std::vector<std::pair<utils::RollbackDevice::Savepoint, Model>> m_savepoints;
    bool m_failed = false; // an operation: only a rollback makes sense now
};

TEST(Model, EveryTransactionEndsAsTheModelSays)
{
    const Folder folder;
    const LogCapture log;
    for (unsigned seed = 1; seed <= 400 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomTransaction(seed, folder).run();
    }
}

} // namespace
} // namespace veltor::test
