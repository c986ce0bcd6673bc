// The console of POSIX systems.

#include "Terminal.h"

#include <QTextCodec>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace veltor::tool::terminal {
namespace {

void (*g_handler)() = nullptr;

extern "C" void callHandler(int)
{
    const int error = errno;
    g_handler();
    errno = error;
}

} // namespace

void prepareStreams()
{
    constexpr int modes[] = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1) {
            // In the wrong direction, so that using a stream that was closed fails as it would have.
            static_cast<void>(::open("/dev/null", modes[descriptor]));
        }
    }
    // Names are bytes, and almost always UTF-8, also where the locale says ASCII.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

bool isTerminal(std::FILE* stream)
{
    return ::isatty(::fileno(stream)) != 0;
}

bool takesColours()
{
    const char* const kind = std::getenv("TERM");
    return kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

int put(std::FILE* stream, const std::string& text)
{
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0) {
        return 0;
    }
    return errno != 0 ? errno : EIO;
}

bool isClosedPipe(int errorNumber)
{
    return errorNumber == EPIPE;
}

void onInterrupt(void (*handler)())
{
    struct sigaction action = {};
    if (::sigaction(SIGINT, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) {
        return;
    }
    g_handler = handler;
    action = {};
    action.sa_handler = &callHandler;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
}

void endProcess(int exitCode)
{
    ::_exit(exitCode);
}

std::string userLanguage()
{
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return "C";
}

void makeMessagesEnglish()
{
    std::setlocale(LC_MESSAGES, "C");
}

} // namespace veltor::tool::terminal
