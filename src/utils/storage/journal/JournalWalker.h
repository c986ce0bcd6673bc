#pragma once

#include "utils/storage/Fault.h"
#include "utils/storage/journal/FileChain.h"
#include "utils/storage/journal/JournalFormat.h"
#include "utils/storage/journal/JournalInput.h"

#include <functional>

namespace veltor::utils::journal {

/// One file entry with what its chain of change blocks was found to hold.
struct WalkedFile
{
    FileChain chain;
    QString name;
    quint16 nameLength = 0;
};

/// Takes the space of every visited record out of what the journal holds. Records do not overlap, so a
/// walk that runs out of it goes in circles or over the same records again.
class RecordBudget
{
public:
    explicit RecordBudget(quint64 journalSize) noexcept
        : m_left(journalSize)
    {}

    [[nodiscard]] bool take(quint64 bytes) noexcept
    {
        if (bytes > m_left) {
            return false;
        }
        m_left -= bytes;
        return true;
    }

private:
    quint64 m_left;
};

/// Walks a journal once, in the order in which damage is reported; see docs/journal.md.
///
/// Validate accepts a whole journal only: the walk ends at the first fault and says which it is.
/// Salvage takes what can be restored, silently. An append that a kill left unfinished is completed in
/// memory and costs nothing else; a file whose chain breaks is kept with the blocks before the break and
/// ends the walk, as does an entry that cannot be read.
///
/// After a loss of power, while salvaging: what was written behind the last sync may be there or not, in any
/// order. Only what was synced before could be needed, and that is whole; so a chain may go on behind its stored
/// end, or the way to its last blocks may be missing, if these are whole. A first block bound by another size
/// than the file's is none, whoever links to it.
///
/// No length or link of the journal decides an allocation or how long the walk takes: it is linear in
/// the journal's size and needs the memory of one JournalInput.
class JournalWalker
{
public:
    enum class Mode
    {
        Validate,
        Salvage
    };

    /// What may have happened to the journal.
    enum class Rules
    {
        Format,   ///< the death of its process
        PowerLoss ///< the death of the system too, while it was being synced by io::Barriers
    };

    /// Gets each file in chain order; false refuses it as one that cannot be opened.
    using FileVisitor = std::function<bool(const WalkedFile&)>;

    JournalWalker(QIODevice& journal, Mode mode, Rules rules = Rules::Format);

    /// True when the journal was walked to its end and is whole, or merely unfinished when salvaging.
    bool walk(const FileVisitor& visitor);

    /// The first fault; without a text while there is none.
    [[nodiscard]] const Fault& fault() const noexcept { return m_fault; }
    /// What the header says; its version is null when it could not be read.
    [[nodiscard]] const Header& header() const noexcept { return m_header; }
    /// The layout of the header's version, nothing when it is unknown.
    [[nodiscard]] std::optional<Layout> layout() const noexcept { return m_layout; }
    [[nodiscard]] quint64 freeBlockCount() const noexcept { return m_freeBlockCount; }
    /// The last entry visited, 0 for none.
    [[nodiscard]] quint64 lastEntry() const noexcept { return m_lastEntry; }

private:
    enum class Outcome
    {
        Whole,
        Broken,
        Unreadable
    };

    bool walkHeader();
    bool isFirstEntryUnlinked();
    bool checkHeader();
    bool walkFiles(const FileVisitor& visitor);
    bool walkFree();

    Outcome walkFile(WalkedFile& file);
    bool checkEntry(const FileEntry& entry);
    bool endFiles(const FileVisitor& visitor, quint64 beforeLast, bool broken);
    bool takeLastFile(const FileVisitor& visitor);
    Outcome walkChanges(FileChain& chain);
    [[nodiscard]] bool isEndOfChanges(FileChain& chain, quint64 before, quint64 stored, bool met, bool broken);
    bool takeTail(FileChain& chain, quint64 stored);
    [[nodiscard]] bool isStrayFirstChange(const FileChain& chain, quint64 previous,
                                          const ChangeHead& head) const;
    [[nodiscard]] bool salvagesPowerLoss() const;
    bool readChange(quint64 offset, quint64 previous, ChangeHead& head);
    bool checkChangeData(quint64 offset, const ChangeHead& head);
    bool readName(WalkedFile& file);
    bool checkFree(const FreeRecord& record);

    const char* readRecord(quint64 offset, quint64 size);
    bool fail(const QString& message);

    QIODevice& m_journal;
    Mode m_mode;
    Rules m_rules;
    JournalInput m_input;
    RecordBudget m_budget;
    Header m_header;
    std::optional<Layout> m_layout;
    quint64 m_freeBlockCount = 0;
    quint64 m_lastEntry = 0;
    bool m_metLastFile = false; // the one that the header names
    Fault m_fault;
};

/// Finds out that a chain goes in a circle, in the memory of two offsets and before it was followed three
/// times round (Brent's method); a circle back to its first member at once.
class CircleWatch
{
public:
    explicit CircleWatch(quint64 first) noexcept
        : m_first(first)
        , m_remembered(first)
    {}

    /// True when @p next was visited before, as far as known.
    [[nodiscard]] bool meets(quint64 next) noexcept
    {
        if (next == m_first || next == m_remembered) {
            return true;
        }
        if (++m_steps == m_reach) {
            m_remembered = next;
            m_reach *= 2;
            m_steps = 0;
        }
        return false;
    }

private:
    quint64 m_first;
    quint64 m_remembered;
    quint64 m_steps = 0;
    quint64 m_reach = 1;
};

/// True when @p journal can be read, and is empty or cut off within the header of a journal that protects
/// nothing yet: what a kill leaves while a journal is being created.
bool isUnfinishedCreation(QIODevice& journal);

/// True when @p journal can be read, and is all zeros: what a loss of power leaves of bytes that were never on
/// the disk.
bool isBlank(QIODevice& journal);

} // namespace veltor::utils::journal
