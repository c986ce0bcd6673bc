#pragma once

#include <veltor/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QFlags>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <iterator>
#include <memory>
#include <vector>

namespace veltor::utils {

/// What lies in a tree of folders. A plain value.
struct TreeEntry
{
    /// What a name stands for.
    enum Kind
    {
        File = 1,   ///< a file of bytes
        Folder = 2, ///< a folder; a link to one where links are followed
        Link = 4,   ///< another symbolic link
        Other = 8,  ///< a pipe, a socket, a device
    };
    Q_DECLARE_FLAGS(Kinds, Kind)

    QString name;          ///< without folders; bytes that are no text stand in it as \\xNN
    QString path;          ///< from the root of the walk, separated by '/'
    QByteArray bytes;      ///< the same as the system has it; on Windows in UTF-8
    bool isText = true;    ///< the path opens the file; else only the bytes do
    Kind kind = File;      ///< what it is
    bool isLinked = false; ///< it is itself a link, or was reached through one
    int depth = 0;         ///< 1 for what lies in the root
    qint64 sizeBytes = 0;  ///< with TreeRules::withStatus, else 0
    qint64 modifiedMs = 0; ///< since 1970, UTC; with TreeRules::withStatus, else 0
};

/// A folder that could not be read, or a file whose status could not. A plain value.
struct TreeFailure
{
    QString path;   ///< from the root of the walk; empty for the root itself
    QString reason; ///< why, for the user
};

/// What a TreeWalker shows, and in which order. A plain value.
struct TreeRules
{
    /// In which order the names of a folder come.
    enum Order
    {
        AsFound, ///< as the file system has them; in bounded memory
        ByName,  ///< by the codes of their characters; the names of the folders on the way are held
    };

    /// Patterns with `*`, `?` and `[...]`, one of which a name must fit as a whole; none for all names.
    /// Folders whose names do not fit are entered all the same.
    QStringList names;
    /// How patterns and names are compared, see fileNameCase().
    Qt::CaseSensitivity nameCase = Qt::CaseSensitive;
    TreeEntry::Kinds kinds = TreeEntry::File; ///< what is shown
    bool hidden = true;                       ///< also what is hidden, by a dot or a mark, and what is in it
    int leastDepth = 1;                       ///< nothing above is shown
    int longestDepth = 1000000;               ///< nothing below is shown or entered
    Order order = AsFound;                    ///< of the names of a folder
    bool foldersLast = false;                 ///< a folder is shown after what is in it
    bool followLinks = false;                 ///< see TreeWalker
    bool crossMounts = true;                  ///< enter other file systems
    bool withStatus = false;                  ///< with size and time, for a system call each
    /// Called now and then, with the number of names seen so far, shown or not. @return false to end the walk
    std::function<bool(qint64 seen)> progress;
};

/// A walk through a folder and all below it, an entry at a time.
///
///     TreeRules rules;
///     rules.names = QStringList{QStringLiteral("*.shp")};
///     for (const TreeEntry& entry : TreeWalker(project, rules)) {
///         ... entry.path ...
///     }
///
/// A folder is read when the walk comes to it. Others may change the tree meanwhile: what is there all the
/// time is shown once, what comes or goes meanwhile may be shown or not, and what takes a folder's place does
/// not lead the walk out of the tree. Memory is bounded by the depth, and by the names of the folders on the
/// way when they are sorted; open descriptors are bounded.
///
/// Links. One that is not followed is an entry of its own. When links are followed, a link to a folder is a
/// folder, and entered unless the walk is just in that folder or came to it by a link before; so each walk
/// ends. A link that leads to nothing remains a link.
///
/// An object is for one thread at a time.
class VELTOR_UTILS_EXPORT TreeWalker
{
public:
    /// Nothing is read yet but the root itself, which may be a link.
    explicit TreeWalker(const QString& root, TreeRules rules = {});
    ~TreeWalker();
    /// @p other may only be assigned to or destroyed.
    /// @{
    TreeWalker(TreeWalker&& other) noexcept;
    TreeWalker& operator=(TreeWalker&& other) noexcept;
    /// @}
    TreeWalker(const TreeWalker&) = delete;
    TreeWalker& operator=(const TreeWalker&) = delete;

    /// Goes to the next entry. @return false at the end, and when the progress function ended the walk
    bool next();
    /// The entry that the last next() went to; valid until the next one.
    [[nodiscard]] const TreeEntry& entry() const;
    /// What is in the folder of entry() is left out; without effect on anything else, and on a folder
    /// that is shown after what is in it.
    void skipFolder();

    /// The progress function ended the walk.
    [[nodiscard]] bool isCanceled() const;
    /// What could not be read so far; the first 100.
    [[nodiscard]] const std::vector<TreeFailure>& failures() const;
    /// How many there were in all; 0 when all was seen.
    [[nodiscard]] qint64 failureCount() const;

    /// Goes through a walker; all that a range-based `for` needs.
    class Iterator
    {
    public:
        /// Goes once, and forwards.
        using iterator_category = std::input_iterator_tag;
        using value_type = TreeEntry;           ///< what it goes over
        using difference_type = std::ptrdiff_t; ///< without a meaning
        using pointer = const TreeEntry*;       ///< to the walker's own
        using reference = const TreeEntry&;     ///< to the walker's own

        /// The end.
        Iterator() = default;
        /// The entry that @p walker goes to next.
        explicit Iterator(TreeWalker& walker)
            : m_walker(walker.next() ? &walker : nullptr)
        {}
        /// The entry.
        const TreeEntry& operator*() const { return m_walker->entry(); }
        /// The entry.
        const TreeEntry* operator->() const { return &m_walker->entry(); }
        /// Goes on.
        Iterator& operator++()
        {
            m_walker = m_walker->next() ? m_walker : nullptr;
            return *this;
        }
        /// Both are at the end, or at the same walker's entry.
        bool operator==(const Iterator& other) const { return m_walker == other.m_walker; }
        /// Not equal.
        bool operator!=(const Iterator& other) const { return m_walker != other.m_walker; }

    private:
        TreeWalker* m_walker = nullptr;
    };

    /// The next entry, from which the walk goes on; to be called once.
    [[nodiscard]] Iterator begin() { return Iterator(*this); }
    /// The end.
    [[nodiscard]] Iterator end() { return {}; }

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TreeEntry::Kinds)

} // namespace veltor::utils
