#pragma once

#include <veltor/Export.h>

#include <QtCore/QFlags>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

namespace veltor::utils {

/// One lock on a file, or the wait for one. A plain value.
struct LockEntry
{
    /// Who the lock belongs to, and how it was taken.
    enum Kind
    {
        Flock,    ///< an open file's, by `flock()`
        Posix,    ///< a process's, by `fcntl(F_SETLK)` or `lockf()`
        OpenFile, ///< an open file's, by `fcntl(F_OFD_SETLK)`
        Lease,    ///< who opens the file must wait until the holder agrees
        Other,    ///< of another kind
    };

    Kind kind = Other;      ///< its kind
    bool exclusive = false; ///< for writing; shared with others that read when false
    bool waiting = false;   ///< not held yet
    qint64 begin = 0;       ///< first byte of the range
    qint64 last = -1;       ///< last byte of the range; -1 for all there ever will be
    qint64 pid = 0;         ///< the process that took it, which may have left it to another; 0 when unknown
};

/// One process that uses a file. A plain value.
struct LockHolder
{
    /// How it uses the file.
    enum Use
    {
        OpenForReading = 1, ///< as an open file
        OpenForWriting = 2, ///< as an open file
        Mapped = 4,         ///< into its memory; a library, say
        Running = 8,        ///< it is the process's program
        CurrentFolder = 16, ///< its working folder
        RootFolder = 32,    ///< as after `chroot()`
        Untold = 64,        ///< the system does not say how
    };
    Q_DECLARE_FLAGS(Uses, Use)

    qint64 pid = 0;       ///< its number
    QString name;         ///< of its program, shortened by the system; anything may stand in it
    QString user;         ///< whose process it is; a number where the account has no name, empty when unknown
    qint64 startedMs = 0; ///< since 1970, UTC; 0 when unknown
    Uses uses;            ///< all of them together; none when only the system's list of locks names it
    std::vector<LockEntry> locks; ///< that it holds or waits for
};

/// One reason for which a file cannot be written. A plain value.
struct WriteObstacle
{
    /// What stands in the way.
    enum Kind
    {
        NoFolder,       ///< the folder `place` does not exist
        NotAFolder,     ///< `place`, on the way to the file, is something else
        NoPassage,      ///< the folder `place` may not be entered by this user
        LinkLoop,       ///< links lead in a circle
        NameTooLong,    ///< for the file system
        Unreachable,    ///< another reason of the system's
        IsFolder,       ///< it is a folder itself
        NoRights,       ///< this user may not write it, or not make it in the folder `place`
        ReadOnlyMark,   ///< nobody may write it
        ImmutableMark,  ///< marked as never to be changed; for a new file, its folder
        AppendMark,     ///< may only be extended
        ReadOnlyMount,  ///< the file system is mounted for reading only
        RunningProgram, ///< processes run it
        DiskFull,       ///< less room than wanted
        NoMoreFiles,    ///< no room for another file in the file system's table
        QuotaFull,      ///< this user's or group's share of the disk is used up
        Locked,         ///< processes hold locks on it; programs that heed locks cannot write it
        InUse,          ///< processes have it open, which may forbid others to (Windows)
    };

    Kind kind = Unreachable; ///< its kind
    QString place;           ///< see the kinds; empty for the file itself
    QString text;            ///< the reason for the user, as a part of a sentence
};

/// Which processes use a file or folder and how, and why it cannot be written.
///
///     if (!file.open(QIODevice::ReadWrite)) {
///         showMessage(LockInfo(file.fileName()).whyNotWritable());
///     }
///
/// All is found out when the object is made, without opening the file and without changing anything of it,
/// and is true for that moment only: to be asked after a failure, for the message, not before an attempt. On
/// Linux it is a walk over all processes, some ten microseconds each; those of other users are looked into as
/// far as the system allows, and what was not seen is said. Processes are recognised by the file itself, not
/// by its name: through other names, in containers, and after it was deleted while they use it. On Windows
/// the Restart Manager tells of processes that have a file (not a folder) open, without locks.
///
/// Reentrant; the object is for one thread at a time.
class VELTOR_UTILS_EXPORT LockInfo
{
public:
    /// Looks now.
    /// @param path         a file or folder; links are followed. It need not exist
    /// @param wantedBytes  how much is to be written: obstacles are told when there is less room
    explicit LockInfo(const QString& path, qint64 wantedBytes = 1);
    ~LockInfo();
    /// @p other may only be assigned to or destroyed.
    /// @{
    LockInfo(LockInfo&& other) noexcept;
    LockInfo& operator=(LockInfo&& other) noexcept;
    /// @}
    LockInfo(const LockInfo&) = delete;
    LockInfo& operator=(const LockInfo&) = delete;

    /// As given.
    [[nodiscard]] QString path() const;
    /// It exists and can be reached.
    [[nodiscard]] bool exists() const;

    /// The processes that use it, this one among them if it does.
    [[nodiscard]] const std::vector<LockHolder>& holders() const;
    /// Locks of processes that are not among the holders, since these are not seen at all, in containers say.
    [[nodiscard]] const std::vector<LockEntry>& otherLocks() const;
    /// What of the processes could not be seen, for the user; empty when holders() is complete.
    [[nodiscard]] QString whatIsHidden() const;
    /// How many processes could not be looked into, or only in part; more may be hidden altogether.
    [[nodiscard]] int hiddenProcesses() const;

    /// What stands against writing it, the plainest first. None found is no promise that a write succeeds.
    [[nodiscard]] const std::vector<WriteObstacle>& obstacles() const;
    /// One sentence for the user with the first of the obstacles; empty when there is none.
    [[nodiscard]] QString whyNotWritable() const;

    /// The process as it is named to a user: program, number and user, on one line.
    [[nodiscard]] static QString describe(const LockHolder& holder);

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(LockHolder::Uses)

} // namespace veltor::utils
