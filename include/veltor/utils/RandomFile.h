#pragma once

#include <veltor/Export.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <array>
#include <functional>
#include <memory>

namespace veltor::utils {

/// How many blocks a RandomFile keeps mapped: a current limit that adapts between a floor and a ceiling.
/// A plain value; reentrant.
class VELTOR_UTILS_EXPORT RandomFileSetup
{
public:
    /// @param limits  current, minimum and maximum limit in blocks, taken as given
    /// @param threshold  taken as given
    RandomFileSetup(std::array<unsigned, 3> limits, unsigned threshold) noexcept;

    /// A limit that never grows: @p blocks (0 counts as 1) is the current limit and the maximum; the
    /// minimum is 1, the threshold 1000. Not explicit: a number of blocks is a setup.
    RandomFileSetup(unsigned blocks) noexcept; // NOLINT(google-explicit-constructor)

    /// Blocks that may be mapped now.
    [[nodiscard]] unsigned curLimit() const noexcept { return m_limits[0]; }
    /// The floor of curLimit().
    [[nodiscard]] unsigned minLimit() const noexcept { return m_limits[1]; }
    /// The ceiling of curLimit().
    [[nodiscard]] unsigned maxLimit() const noexcept { return m_limits[2]; }
    /// A bound above the maximum limit, for whoever shares a budget of blocks among files; RandomFile
    /// itself does not consult it.
    [[nodiscard]] unsigned threshold() const noexcept { return m_threshold; }

    /// Whether the current limit is below its ceiling.
    [[nodiscard]] bool canIncrease() const noexcept { return curLimit() < maxLimit(); }
    /// Whether it is above its floor.
    [[nodiscard]] bool canReduce() const noexcept { return curLimit() > minLimit(); }
    /// Blocks by which the current limit can grow; 0 when it is at or above the maximum.
    [[nodiscard]] unsigned increaseLimit() const noexcept;
    /// Blocks by which the current limit can shrink; 0 when it is at or below the minimum.
    [[nodiscard]] unsigned reduceLimit() const noexcept;

    /// Sets the current limit (0 counts as 1); the minimum and the maximum move when it lies outside them.
    void setCurLimit(unsigned blocks) noexcept;
    /// Sets the threshold; one below the maximum limit becomes the maximum + 1.
    void setThreshold(unsigned threshold) noexcept;
    /// Lifts a threshold that lies below the maximum limit to the maximum + 1.
    void fixThreshold() noexcept;

private:
    std::array<unsigned, 3> m_limits; // current, minimum, maximum
    unsigned m_threshold;
};

/// A file for fast random access: it is mapped into memory in blocks of 64 KiB, and the blocks used last
/// stay mapped. A read or write of a mapped block is a copy in memory, without a system call.
///
/// The number of blocks kept adapts: when one is needed again shortly after it was evicted, the limit
/// grows by one, up to the setup's maximum. Use it for many small accesses that return to the same
/// places. To stream through a file once QFile is several times as fast, as mapping a block costs more
/// than copying it; to let a file grow by small writes too, unless resize() has made the room before.
///
/// It reads and writes as any QFile, always unbuffered. A write beyond the end extends the file; bytes
/// that were skipped read as zeros. A file opened WriteOnly or Append cannot be written through the map,
/// and is written as QFile does it.
///
/// The size is asked once and kept: refresh() after somebody else has changed it. A file that another
/// process cuts short while blocks are mapped is no such case: touching a mapped page that no longer
/// exists, like a disk error or writing into a hole of a full disk, ends the process with a bus error
/// (on Windows: an in-page exception). Growing by writing is safe: the space is reserved first, and a
/// full disk gives a short write.
///
/// Threads: owner thread only.
class VELTOR_UTILS_EXPORT RandomFile : public QFile
{
    Q_OBJECT

public:
    /// Bytes in a block, the last one excepted.
    static constexpr unsigned BlockSize = 65536;
    /// Blocks of a file that is made without a setup.
    static constexpr unsigned DefaultBlockCount = 32;

    /// A closed file without a name, with a fixed limit of 32 blocks.
    explicit RandomFile(QObject* parent = nullptr);
    /// A closed file. A current limit of 0 in @p setup counts as 1.
    explicit RandomFile(const QString& name, RandomFileSetup setup = DefaultBlockCount,
                        QObject* parent = nullptr);
    /// The same by a file's path.
    explicit RandomFile(const QFileInfo& file, RandomFileSetup setup = DefaultBlockCount,
                        QObject* parent = nullptr);
    /// Closes.
    ~RandomFile() override;

    /// Opens as QFile does, always unbuffered.
    bool open(OpenMode mode) override;
    /// Unmaps all blocks and closes.
    void close() override;

    /// The file's size in bytes; while it is open, as it was when it was asked first or changed here.
    [[nodiscard]] qint64 size() const override;
    /// Forgets the size, so that it is asked anew; blocks that a changed size makes stale are mapped anew.
    void refresh() noexcept;
    /// Sets the length in bytes; blocks that this would make stale are unmapped first. A position beyond
    /// the new end moves to it. False, with the length as it was, when the system refuses.
    bool resize(qint64 size) override;
    /// Moves the position; beyond the end is allowed, and extends nothing by itself.
    bool seek(qint64 position) override;

    /// Blocks that may be mapped at once, at this moment.
    [[nodiscard]] unsigned blockCount() const noexcept;
    /// Sets that number (0 counts as 1); its bounds move when it lies outside them. Blocks above it are
    /// unmapped, the least recently used first.
    void setBlockCount(unsigned blocks);
    /// The limits as they are now.
    [[nodiscard]] const RandomFileSetup& setup() const noexcept;

    /// Bytes in block @p index: 65536, what remains for the last block, 0 beyond the end.
    [[nodiscard]] unsigned blockSize(unsigned long long index) const;

    /// The mapped bytes of block @p index, blockSize() of them, and makes it the most recently used.
    ///
    /// They stay valid until the next call that reads, writes, maps, resizes or closes. They are writable
    /// only when the file was opened for reading and writing; writing to others ends the process.
    /// @return null beyond the end, for a file that is closed or not open for reading, and when the system
    ///         cannot map it (then error() tells why)
    unsigned char* block(unsigned long long index);

    /// Copies bytes of block @p index from byte @p offset on to @p data: at most @p remaining, and at most
    /// to the block's end. @p remaining goes down by what was copied.
    /// @return false, with nothing copied, when there is nothing to copy or the block cannot be mapped
    bool readFromBlock(unsigned long long index, unsigned offset, char* data, long long& remaining);
    /// The same into the block; never extends the file. False also for a file not open for reading and
    /// writing.
    bool writeToBlock(unsigned long long index, unsigned offset, const char* data, long long& remaining);

    /// Unmaps all blocks and forgets what was evicted; the limit stays.
    void clear();

protected:
    /// Replaces the source of size(), for what QFile finds no size for, a block device for one. It must
    /// never tell more bytes than there are. An empty function restores QFile's own.
    void setSizeEstimator(std::function<unsigned long long()> sizeEstimator);

    /// Bytes read; fewer than @p length at the end or when a block cannot be mapped; -1 when that is the
    /// first one.
    qint64 readData(char* data, qint64 length) override;
    /// Bytes written; fewer than @p length when a block cannot be mapped or the file cannot be extended;
    /// -1 when nothing could be written.
    qint64 writeData(const char* data, qint64 length) override;

private:
    class Private;
    std::unique_ptr<Private> m_p;
};

} // namespace veltor::utils
