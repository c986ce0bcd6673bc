#pragma once

// What only some operating systems have. Tests reach the system itself here alone.

#include <QtCore/QString>

#include <functional>

namespace veltor::test {

/// Makes a named pipe; false where there is no such file.
bool makePipe(const QString& path);

/// Who runs a child.
enum class User
{
    Same,
    Ordinary, ///< not root, where root started the tests
    Another,  ///< yet another one
};

constexpr int NoFork = -2;

/// What @p action returns in a forked child of one thread, -1 when it crashed, NoFork where that cannot be.
int forked(const std::function<int()>& action, User user = User::Same);

/// Ends the calling thread as a cancellation does, by unwinding; returns where threads end otherwise.
void endThisThread();

/// While it lives, no thread can be started; or it does not work.
class NoThreads
{
public:
    NoThreads();
    ~NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

    const bool works;
};

/// The ways to lock a file.
enum class Locking
{
    Flock,
    Posix,
    OpenFile,
    Lease,
};

/// Locks an open file for writing, without waiting; false when it cannot be.
bool lockFile(int descriptor, Locking kind);

/// Lets no file of this process grow beyond a size while it lives.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(unsigned bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    const bool works;

private:
    unsigned long long m_former = 0;
};

/// A writable place on a drive other than that of the temporary files; empty when there is none.
QString placeOnAnotherDrive();

} // namespace veltor::test
