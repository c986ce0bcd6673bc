#pragma once

// A random transaction on a few files, done to the disk and to a model in memory.

#include "PowerDisk.h"
#include "Scenario.h"

#include <veltor/utils/Transaction.h>

#include <QtCore/QDirIterator>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace veltor::test {

/// A folder with files and a journal.
class World
{
public:
    [[nodiscard]] QString path(const QString& name = {}) const { return m_folder.path() + u("/") + name; }
    [[nodiscard]] QString journal() const { return path(u("journal")); }

    static const Files& originals()
    {
        static const Files files{{u("a"), pattern(3000, 1)},
                                 {u("b"), pattern(700, 2)},
                                 {u("c"), QByteArray()},
                                 {u("sub/d"), pattern(50, 3)}};
        return files;
    }
    void reset() const
    {
        QDir(path()).removeRecursively();
        for (const auto& [name, bytes] : originals()) {
            static_cast<void>(m_folder.write(name.toUtf8().constData(), bytes));
        }
    }
    /// All that is there but a spare: leftovers of a transaction are files too many.
    [[nodiscard]] Files read() const
    {
        Files files;
        QDirIterator all(path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            QFile file(all.next());
            if (file.fileName().endsWith(u("/.journal.spare"))) {
                continue;
            }
            files[QDir(path()).relativeFilePath(file.fileName())] =
                file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
        }
        return files;
    }

private:
    Folder m_folder;
};

/// One random transaction, done to the disk and to the model.
class RandomTransaction
{
public:
    /// @param names  it makes, removes and renames files too
    RandomTransaction(const World& world, unsigned seed, const utils::Transaction::Options& options = {},
                      bool names = true)
        : m_world(world)
        , m_names(names)
        , m_random(seed)
        , m_model(World::originals())
        , m_transaction(utils::Transaction::begin(world.journal(), withSpare(options, seed % 2 == 0)))
    {}

    /// The contents that it leaves, if it did not die.
    Files finish()
    {
        for (int step = 0; step < 14 && m_transaction.isActive(); ++step) {
            if (!doStep()) {
                return giveUp();
            }
        }
        if (!m_transaction.isActive() || below(4) == 0) {
            return giveUp();
        }
        m_reachedCommit = true;
        const utils::Transaction::Result result = m_transaction.commit();
        return result || result.status == utils::Transaction::Status::NamesPending ? m_model : giveUp();
    }
    [[nodiscard]] bool reachedCommit() const { return m_reachedCommit; }
    [[nodiscard]] const Files& model() const { return m_model; }

private:
    static utils::Transaction::Options withSpare(utils::Transaction::Options options, bool spare)
    {
        options.spare = spare;
        return options;
    }
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    QString anyName()
    {
        static const char* const names[] = {"a", "b", "c", "sub/d", "e", "sub/f"};
        return u(names[below(6)]);
    }
    Files giveUp()
    {
        m_transaction.rollback();
        return World::originals();
    }
    /// Without a plan every result must be what the model says.
    bool agree(bool expected, const utils::Transaction::Result& result)
    {
        EXPECT_TRUE(Plan::inForce || expected == bool(result)) << result.reason.toStdString();
        return expected == bool(result);
    }

    bool change(const QString& name)
    {
        const auto found = m_model.find(name);
        const auto file = m_transaction.open(m_world.path(name));
        EXPECT_TRUE(Plan::inForce || bool(file) == (found != m_model.end()));
        if (!file || found == m_model.end()) {
            return !file && found == m_model.end();
        }
        QByteArray& bytes = found->second;
        if (!Plan::inForce) {
            EXPECT_EQ(file->size(), bytes.size());
            EXPECT_EQ(file->readAll(), bytes);
        }
        if (below(3) == 0) {
            const int size = below(2000);
            bytes += QByteArray(std::max<base::Length>(size - bytes.size(), 0), '\0');
            bytes.truncate(size);
            return file->resize(size);
        }
        if (below(4) == 0) {
            return changeAll();
        }
        const int position = below(bytes.size() + 1);
        const int length = below(10) == 0 ? 9000 : 1 + below(400);
        const QByteArray written = pattern(length, below(256));
        bytes.replace(position, written.size(), written);
        if (below(2) == 0) {
            const int second = below(bytes.size() + 1);
            bytes.replace(second, 3, "abc");
            return file->writeBlocks({{position, written}, {second, "abc"}});
        }
        return file->seek(position) && file->write(written) == written.size();
    }

    /// Places of all files, those overlapping too, as one write.
    bool changeAll()
    {
        std::vector<std::unique_ptr<utils::SecuredFile>> files;
        std::vector<utils::Transaction::Block> blocks;
        for (auto& [name, bytes] : m_model) {
            files.push_back(m_transaction.open(m_world.path(name)));
            for (int place = 0; files.back() && place < 2; ++place) {
                const int position = below(bytes.size() + 1);
                const QByteArray written = pattern(1 + below(700), below(256));
                bytes.replace(position, written.size(), written);
                blocks.push_back({files.back().get(), position, written});
            }
        }
        return agree(true, m_transaction.writeBlocks(blocks));
    }

    bool rename(const QString& from, const QString& to)
    {
        const auto found = m_model.find(from);
        const bool known = found != m_model.end();
        if (!agree(known, m_transaction.rename(m_world.path(from), m_world.path(to)))) {
            return false;
        }
        if (known && from != to) {
            m_model[to] = found->second;
            m_model.erase(from);
        }
        return true;
    }

    bool doStep()
    {
        const QString name = anyName();
        switch (m_names ? below(8) : 4 + below(4)) {
        case 0: {
            const bool isFree = m_model.count(name) == 0;
            if (!agree(isFree, m_transaction.create(m_world.path(name)))) {
                return false;
            }
            m_model.emplace(name, QByteArray());
            return true;
        }
        case 1:
            return agree(m_model.erase(name) != 0, m_transaction.remove(m_world.path(name)));
        case 2:
        case 3:
            return rename(name, anyName());
        case 4:
            m_points.emplace_back(m_transaction.savepoint(), m_model);
            return true;
        case 5:
            if (!m_points.empty()) {
                m_points.resize(static_cast<std::size_t>(1 + below(static_cast<int>(m_points.size()))));
                m_model = m_points.back().second;
                return bool(m_transaction.rollbackTo(m_points.back().first));
            }
            return true;
        default:
            return change(name);
        }
    }

    const World& m_world;
    const bool m_names;
    std::mt19937 m_random;
    Files m_model;
    std::vector<std::pair<utils::Transaction::Savepoint, Files>> m_points;
    utils::Transaction m_transaction;
    bool m_reachedCommit = false;
};

} // namespace veltor::test
