#include "Platform.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryFile>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#endif

namespace veltor::test {

#ifdef Q_OS_UNIX

bool makePipe(const QString& path)
{
    return mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
}

int forked(const std::function<int()>& action, User user)
{
    const bool becomes = user != User::Same && geteuid() == 0;
    if (user == User::Another && !becomes) {
        return NoFork;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(120);
        umask(077);
        const bool became = !becomes || setuid(user == User::Ordinary ? 65534 : 65533) == 0;
        _exit(became ? action() : 99);
    }
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void endThisThread()
{
    pthread_exit(nullptr);
}

/// A new thread's stack shall be this large.
bool setStackSize(std::size_t bytes)
{
    pthread_attr_t attributes;
    return pthread_attr_init(&attributes) == 0 && pthread_attr_setstacksize(&attributes, bytes) == 0 &&
           pthread_setattr_default_np(&attributes) == 0;
}

NoThreads::NoThreads()
    : works(setStackSize(SIZE_MAX / 4))
{}

NoThreads::~NoThreads()
{
    setStackSize(8U << 20);
}

bool lockFile(int descriptor, Locking kind)
{
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_len = 100;
    switch (kind) {
    case Locking::Flock:
        return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    case Locking::Posix:
        return fcntl(descriptor, F_SETLK, &range) == 0;
    case Locking::OpenFile:
        return fcntl(descriptor, F_OFD_SETLK, &range) == 0;
    case Locking::Lease:
        return fcntl(descriptor, F_SETLEASE, F_WRLCK) == 0;
    }
    return false;
}

FileSizeLimit::FileSizeLimit(unsigned bytes)
    : works(true)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    m_former = limit.rlim_cur;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit()
{
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = m_former;
    setrlimit(RLIMIT_FSIZE, &limit);
}

#else

bool makePipe(const QString&)
{
    return false;
}

int forked(const std::function<int()>&, User)
{
    return NoFork;
}

void endThisThread() {}

NoThreads::NoThreads()
    : works(false)
{}

NoThreads::~NoThreads() = default;

bool lockFile(int, Locking)
{
    return false;
}

FileSizeLimit::FileSizeLimit(unsigned)
    : works(false)
{}

FileSizeLimit::~FileSizeLimit() = default;

#endif

QString placeOnAnotherDrive()
{
    const QString own = QDir::tempPath().left(3);
    for (const QFileInfo& drive : QDir::drives()) {
        for (const char* place : {"", "tmp"}) {
            const QString path = drive.filePath() + QLatin1String(place);
            if (!path.startsWith(own) && QTemporaryFile(path + QStringLiteral("/XXXXXX")).open()) {
                return path;
            }
        }
    }
    return {};
}

} // namespace veltor::test
