#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <map>
#include <optional>
#include <set>
#include <vector>

/// The manifest of a transaction: which names will mean which files once it is committed. Bytes and order
/// only; docs/journal.md describes the format, src/utils/storage/TransactionNames.cpp what is done with it.
namespace veltor::utils::journal {

/// One line of a manifest.
struct NameRecord
{
    enum class Kind : quint8
    {
        Create = 1, ///< `name` is the new file that lies hidden as `number`
        Remove = 2, ///< `name` is no more; as `number` it is moved aside
        Rename =
            3, ///< `name` becomes `target`; as `number` it is moved aside, what it replaces as `replaced`
        Sealed = 4, ///< the last one before the commit; `number` counts those before it
        Moved = 5,  ///< after the commit: everything that had to be moved aside is
    };

    Kind kind = Kind::Create;
    quint32 number = 0;   ///< 0 for a file whose hidden name is known from an earlier record
    quint32 replaced = 0; ///< 0 when nothing is replaced, or likewise
    QString name;
    QString target;
};

/// True for a name of a file in or beneath a folder: relative, without "." and "..", empty parts, drives and
/// streams; it can be stored.
[[nodiscard]] bool isNameBeneath(const QString& name);

/// The record's bytes; a manifest is manifestHead() and records. The names must pass isNameBeneath().
[[nodiscard]] QByteArray encodeRecord(const NameRecord& record);
[[nodiscard]] QByteArray manifestHead();

/// What the records of a manifest make of the names.
class NameMap
{
public:
    /// Where a file lies until the commit.
    struct Place
    {
        quint32 hidden = 0; ///< 0: not hidden
        QString name;       ///< its name before the transaction, if not hidden
    };
    enum class Meaning
    {
        Untouched, ///< what is on the disk
        Nothing,   ///< there is no such file any more
        File,      ///< the file at the place
    };
    struct Found
    {
        Meaning meaning = Meaning::Untouched;
        Place place;
    };
    struct Move
    {
        Place from;
        QString to;
        bool replaces = false; ///< a file stands at `to` that is to go; otherwise none may
    };
    /// What a commit does: first all that is to be put aside, then all moves, each once, in any order.
    struct Plan
    {
        std::vector<std::pair<QString, quint32>> aside;
        std::vector<Move> moves;
    };

    /// Takes one more record; false, with nothing changed, when it contradicts those before it.
    [[nodiscard]] bool apply(const NameRecord& record);
    [[nodiscard]] bool canTake(const NameRecord& record) const;
    [[nodiscard]] Found find(const QString& name) const;
    [[nodiscard]] Plan plan() const;
    /// Whether a record has given this hidden name.
    [[nodiscard]] bool knows(quint32 hidden) const { return m_hidden.count(hidden) != 0; }

private:
    /// A file whose name was touched.
    struct File
    {
        QString original; // empty: made in the transaction
        quint32 hidden = 0;
        QString target; // empty: none
    };

    [[nodiscard]] bool isFree(quint32 hidden) const { return hidden != 0 && m_hidden.count(hidden) == 0; }
    std::size_t add(File file);
    std::size_t take(const QString& name, quint32 hidden);

    std::vector<File> m_files;
    std::map<QString, std::optional<std::size_t>> m_names; // nothing: the name means no file
    std::set<quint32> m_hidden;
};

/// A manifest that was read.
struct Manifest
{
    std::vector<NameRecord> records; ///< up to the seal
    NameMap names;
    bool sealed = false; ///< complete: its transaction came to its commit
    bool moved = false;  ///< and all that had to be moved aside is
    qint64 size = 0;     ///< bytes up to the seal, or up to the end: where the next record goes

    /// The longest that is read.
    static constexpr qint64 MaxSize = 64 * 1024 * 1024;

    /// Reads bytes from anywhere; nothing when they are no manifest, damaged, or contradict themselves. What
    /// follows the seal is not judged: a kill may have cut it.
    [[nodiscard]] static std::optional<Manifest> parse(const QByteArray& bytes);
};

} // namespace veltor::utils::journal
