// The block file: how its limit adapts, and that it is a file like any other whatever is mapped.

#include "support/Files.h"
#include "support/Platform.h"
#include "support/Printers.h"

#include <veltor/utils/RandomFile.h>
#include <veltor/utils/SizeEstimator.h>

#include <gtest/gtest.h>

#include <random>

namespace veltor::test {
namespace {

using utils::RandomFile;
using utils::RandomFileSetup;
using utils::SizeEstimator;

constexpr qint64 Block = RandomFile::BlockSize;

using Limits = std::array<unsigned, 4>;

Limits limits(const RandomFileSetup& setup)
{
    return {setup.curLimit(), setup.minLimit(), setup.maxLimit(), setup.threshold()};
}

TEST(RandomFileSetup, KeepsItsBounds)
{
    const RandomFileSetup above({50, 1, 32}, 7);
    EXPECT_EQ(limits(RandomFileSetup(0)), (Limits{1, 1, 1, 1000}));
    EXPECT_EQ(limits(above), (Limits{50, 1, 32, 7}));
    EXPECT_EQ(above.increaseLimit(), 0u);
    EXPECT_EQ(RandomFileSetup({5, 2, 32}, 7).increaseLimit(), 27u);
    EXPECT_EQ(RandomFileSetup({5, 2, 32}, 7).reduceLimit(), 3u);

    RandomFileSetup setup({32, 8, 32}, 1000);
    setup.setCurLimit(50);
    EXPECT_EQ(limits(setup), (Limits{50, 8, 50, 1000}));
    setup.setCurLimit(0);
    EXPECT_EQ(limits(setup), (Limits{1, 1, 50, 1000}));
    for (const auto& [given, fixed] : {std::pair(1000u, 1000u), {999, 1001}, {3, 1001}}) {
        RandomFileSetup large({1, 1, 1000}, given);
        large.fixThreshold();
        EXPECT_EQ(large.threshold(), fixed);
    }
}

class RandomFiles : public testing::Test, protected Folder
{
protected:
    RandomFiles() { make(QByteArray()); }

    QString path() const { return Folder::path("файл"); }
    void make(const QByteArray& bytes) const { write("файл", bytes); }
    QByteArray content() const { return read("файл"); }
};

TEST_F(RandomFiles, LimitGrowsWhenAnEvictedBlockReturns)
{
    struct Row
    {
        const char* name;
        RandomFileSetup setup;
        std::vector<unsigned> reads;
        std::vector<unsigned> limits; // after each read
    };
    const std::vector<Row> rows = {
        {"to the maximum", {{1, 1, 2}, 1000}, {0, 1, 0, 1, 2, 0}, {1, 1, 2, 2, 2, 2}},
        {"fixed", RandomFileSetup(1), {0, 1, 0, 1}, {1, 1, 1, 1}},
        {"no pressure yet", {{3, 1, 9}, 1000}, {0, 1, 2, 0, 1, 2}, {3, 3, 3, 3, 3, 3}},
        {"forgets older evictions than it can grow by", {{1, 1, 2}, 1000}, {0, 1, 2, 0}, {1, 1, 1, 1}},
        {"evicts the least recently used", {{2, 1, 4}, 1000}, {0, 1, 0, 2, 0, 1}, {2, 2, 2, 2, 2, 3}},
        {"limit 0 counts as 1", {{0, 0, 1}, 1000}, {0, 1}, {1, 1}},
    };
    make(QByteArray(static_cast<int>(3 * Block), 'x'));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RandomFile file(QFileInfo(path()), row.setup);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        std::vector<unsigned> seen;
        for (const unsigned index : row.reads) {
            const unsigned char* const bytes = file.block(index);
            ASSERT_NE(bytes, nullptr);
            EXPECT_EQ(bytes[Block - 1], 'x');
            seen.push_back(file.blockCount());
        }
        EXPECT_EQ(seen, row.limits);
    }
}

/// A model that is a byte array, beside the file; every operation is done on both.
class Pair
{
public:
    explicit Pair(const QString& path)
        : m_path(path)
        , m_file(path, RandomFileSetup({2, 1, 6}, 1000))
    {
        EXPECT_TRUE(m_file.open(QIODevice::ReadWrite));
    }

    void step()
    {
        const int at = below(LargestSize);
        const int length = below(8) == 0 ? below(3 * Block) : below(300);
        switch (below(100)) {
        case 0:
            resize(at);
            break;
        case 1:
            changeFromOutside(at, length);
            break;
        case 2: {
            const auto limit = static_cast<unsigned>(below(6));
            m_file.setBlockCount(limit);
            ASSERT_EQ(m_file.blockCount(), qMax(limit, 1u));
            ASSERT_LE(mappedBytes(), m_file.blockCount() * Block);
            break;
        }
        case 3:
            ASSERT_EQ(m_file.size(), m_model.size());
            break;
        case 4:
            m_file.close();
            ASSERT_TRUE(m_file.open(QIODevice::ReadWrite));
            break;
        default:
            below(2) == 0 ? read(at, length) : write(qMin(at, m_model.size() + 70000), length);
        }
    }

    const QByteArray& model() const { return m_model; }

private:
    static constexpr int LargestSize = 10 * Block;

    int below(qint64 bound)
    {
        return static_cast<int>(std::uniform_int_distribution<qint64>(0, bound - 1)(m_random));
    }

    /// What of the file is in this process's memory, where the system tells.
    qint64 mappedBytes() const
    {
        QFile maps(QStringLiteral("/proc/self/maps"));
        maps.open(QIODevice::ReadOnly);
        qint64 sum = 0;
        for (const QByteArray& line : maps.readAll().split('\n')) {
            if (line.endsWith(QFileInfo(m_path).canonicalFilePath().toUtf8())) {
                const QList<QByteArray> ends = line.left(line.indexOf(' ')).split('-');
                sum += ends[1].toLongLong(nullptr, 16) - ends[0].toLongLong(nullptr, 16);
            }
        }
        return sum;
    }

    void read(int at, int length)
    {
        ASSERT_TRUE(m_file.seek(at));
        const QByteArray got = m_file.read(length);
        ASSERT_EQ(got.size(), m_model.mid(at, length).size());
        ASSERT_TRUE(got == m_model.mid(at, length)) << at << " " << length;
    }

    void write(int at, int length)
    {
        const QByteArray data(length, static_cast<char>(below(256)));
        if (length > 0) {
            extendModel(at);
        }
        m_model.replace(at, length, data);
        ASSERT_TRUE(m_file.seek(at));
        ASSERT_EQ(m_file.write(data), length);
        ASSERT_EQ(m_file.pos(), at + length);
    }

    void resize(int size)
    {
        m_model.truncate(size);
        extendModel(size);
        ASSERT_TRUE(m_file.resize(size));
    }

    /// Another object writes or cuts; the block file is told.
    void changeFromOutside(int at, int length)
    {
        QFile other(m_path);
        ASSERT_TRUE(other.open(QIODevice::ReadWrite));
        if (!other.resize(at)) {
#ifdef Q_OS_WIN
            return; // nobody may cut what is mapped
#endif
            FAIL() << qPrintable(other.errorString());
        }
        m_model.truncate(at);
        extendModel(at + length);
        ASSERT_TRUE(other.resize(at + length));
        m_file.refresh();
    }

    void extendModel(int size)
    {
        if (size > m_model.size()) {
            m_model.append(QByteArray(size - m_model.size(), '\0'));
        }
    }

    std::mt19937 m_random{12345};
    QString m_path;
    RandomFile m_file;
    QByteArray m_model;
};

TEST_F(RandomFiles, AnyOperationsLeaveWhatAPlainFileHolds)
{
    {
        Pair pair(path());
        for (int step = 0; step < 20000; ++step) {
            pair.step();
            if (HasFatalFailure()) {
                FAIL() << "step " << step;
            }
            if (step % 5000 == 0) {
                ASSERT_TRUE(content() == pair.model()) << step;
            }
        }
        ASSERT_TRUE(content() == pair.model());
    }
}

TEST_F(RandomFiles, BlocksEndWithTheFile)
{
    RandomFile file(path());
    EXPECT_EQ(file.block(0), nullptr); // closed
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_EQ(file.block(0), nullptr);
    EXPECT_EQ(file.read(10), QByteArray());
    ASSERT_TRUE(file.resize(65537));
    EXPECT_EQ(file.blockSize(0), 65536u);
    EXPECT_EQ(file.blockSize(1), 1u);
    EXPECT_EQ(file.blockSize(2), 0u);
    EXPECT_EQ(file.blockSize(~0ull), 0u);
    EXPECT_NE(file.block(1), nullptr);
    EXPECT_EQ(file.block(2), nullptr);

    char bytes[10] = {};
    long long remaining = 10;
    EXPECT_TRUE(file.writeToBlock(0, 65533, "abcdef", remaining));
    EXPECT_EQ(remaining, 7);
    EXPECT_TRUE(file.readFromBlock(0, 65534, bytes, remaining));
    EXPECT_EQ(remaining, 5);
    EXPECT_STREQ(bytes, "bc");
    EXPECT_FALSE(file.readFromBlock(1, 1, bytes, remaining));
    EXPECT_FALSE(file.writeToBlock(1, 1, bytes, remaining));
    EXPECT_EQ(file.size(), 65537);

    // The one-byte mapping of the last block must not serve the longer one.
    ASSERT_TRUE(file.seek(131071));
    EXPECT_EQ(file.write("z"), 1);
    ASSERT_NE(file.block(1), nullptr);
    EXPECT_EQ(file.block(1)[65535], 'z');
    ASSERT_TRUE(file.resize(3));
    EXPECT_EQ(file.pos(), 3);
    EXPECT_EQ(file.block(1), nullptr);
}

TEST_F(RandomFiles, OffsetsGoBeyond4GiB)
{
    constexpr qint64 far = (5ll << 30) + 65530;
    RandomFile file(path(), 1);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(far));
    ASSERT_EQ(file.write("across a border"), 15);
    EXPECT_EQ(file.size(), far + 15);
    ASSERT_TRUE(file.seek(1 << 30));
    EXPECT_EQ(file.read(3), QByteArray(3, '\0'));
    ASSERT_TRUE(file.seek(far + 3));
    EXPECT_EQ(file.read(100), "oss a border");
}

TEST_F(RandomFiles, GrowthThatTheSystemRefusesIsAShortWrite)
{
    make(QByteArray(99995, 'x'));
    RandomFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    qint64 partly = 0;
    qint64 nothing = 0;
    {
        const FileSizeLimit limit(100000);
        if (!limit.works) {
            GTEST_SKIP() << "no limit for the size of files";
        }
        ASSERT_TRUE(file.seek(99990));
        partly = file.write(QByteArray(100, 'y'));
        nothing = file.write(QByteArray(100, 'y'));
    }
    EXPECT_EQ(partly, 5);
    EXPECT_EQ(nothing, -1);
    EXPECT_FALSE(file.errorString().isEmpty());
    EXPECT_EQ(content(), QByteArray(99990, 'x') + "yyyyy");
}

TEST_F(RandomFiles, BlocksThatCannotBeMappedAreNotRead)
{
    class Endless : public RandomFile
    {
    public:
        explicit Endless(const QString& path)
            : RandomFile(path)
        {
            setSizeEstimator([] { return ~0ull; });
        }
    };
    Endless file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_EQ(file.size(), std::numeric_limits<qint64>::max());
    ASSERT_TRUE(file.seek(file.size() - 100));
    char bytes[10];
    EXPECT_EQ(file.read(bytes, 10), -1);
    EXPECT_EQ(file.write(bytes, 10), -1);
    EXPECT_EQ(file.write(bytes, 200), -1); // would end beyond what a position can tell
    EXPECT_NE(file.error(), QFileDevice::NoError);
}

TEST(SizeEstimator, CountsWhatAFileWouldHold)
{
    constexpr qint64 far = 5ll << 30;
    SizeEstimator estimator;
    ASSERT_TRUE(estimator.open(QIODevice::WriteOnly));
    for (const auto& [position, size] : {std::pair(0ll, 4ll), {2, 6}, {0, 6}, {far, far + 4}}) {
        EXPECT_TRUE(estimator.seek(position));
        EXPECT_EQ(estimator.write("0123"), 4);
        EXPECT_EQ(estimator.size(), size);
    }
    estimator.close();
    ASSERT_TRUE(estimator.open(QIODevice::Append));
    EXPECT_EQ(estimator.openMode(), QIODevice::Append | QIODevice::WriteOnly | QIODevice::Unbuffered);
    EXPECT_EQ(estimator.write("yz"), 2);
    EXPECT_EQ(estimator.size(), far + 6);
    estimator.close();
    ASSERT_TRUE(estimator.open(QIODevice::ReadWrite | QIODevice::Truncate));
    EXPECT_EQ(estimator.size(), 0);
}

} // namespace
} // namespace veltor::test
