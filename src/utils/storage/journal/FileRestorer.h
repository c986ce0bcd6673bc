#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/io/DeviceIo.h"
#include "utils/storage/journal/JournalInput.h"
#include "utils/storage/journal/JournalWalker.h"

#include <functional>
#include <vector>

namespace veltor::utils::journal {

/// Puts one protected file back from its blocks, newest first, so that the oldest bytes win.
///
/// Nothing of the file changes unless the saved bytes explain its whole old length. Bytes that an older cut
/// takes away again are not written, nor are zeros where zeros stand or a hole will do.
class FileRestorer
{
public:
    enum class Outcome
    {
        Restored,
        Failed,
        Stopped, ///< by the observer
    };

    /// Writes also what seems to stand there already: after a failed sync the disk may know better.
    void setRewrites(bool rewrites) noexcept { m_rewrites = rewrites; }

    /// Called after each block; false stops.
    using Observer = std::function<bool()>;

    /// @param name  what the file is called in faults
    FileRestorer(JournalInput& journal, const FileChain& chain, QIODevice& file, QString name);

    /// Back to what it was when it was added.
    Outcome restore(const Observer& observer);

    /// Back to what it was when @p lastChange was its last block; none newer: nothing to do.
    Outcome restoreTo(quint64 lastChange);

    [[nodiscard]] const Fault& fault() const noexcept { return m_fault; }

private:
    struct Block
    {
        quint64 offset;
        ChangeHead head;
        quint64 dataAt;
        quint64 limit; ///< bytes of the file at or beyond it are cut off again by an older block
    };
    using Step = std::function<bool(const Block&)>;

    bool readLayout();
    bool walk(quint64 until, const Step& step);
    bool readHead(quint64 newer, Block& block);
    bool isLengthExplained();
    bool restoreBlock(const Block& block);
    bool checkData(const Block& block);
    bool restorePiece(quint64 position, const char* data, qint64 length);
    bool standsThere(quint64 position, const char* data, qint64 length);
    bool cut(quint64 size);
    bool finish();
    bool fail(const QString& text, const QString& reason = {});

    JournalInput& m_input;
    const FileChain& m_chain;
    io::DeviceIo m_io;
    QString m_name;
    Layout m_layout = Layout::Checksummed;
    bool m_rewrites = false;
    quint64 m_size = 0; // of the file, as it is now
    std::vector<char> m_standing;
    Fault m_fault;
};

} // namespace veltor::utils::journal
