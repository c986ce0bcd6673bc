#include "Command.h"

#include <QtCore/QBuffer>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace veltor::tool {
namespace {

void put(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

std::atomic<bool> interruptSeen{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

extern "C" void onInterrupt(int signal)
{
    interruptSeen.store(true);
    std::signal(signal, SIG_DFL);
}

} // namespace

InterruptWatch::InterruptWatch()
    : m_former(std::signal(SIGINT, &onInterrupt))
{
    interruptSeen.store(false);
}

InterruptWatch::~InterruptWatch()
{
    std::signal(SIGINT, m_former);
}

bool InterruptWatch::interrupted()
{
    return interruptSeen.load();
}

void print(const QString& text)
{
    put(stdout, text);
}

void printJson(const QJsonObject& object, const json::Format& layout, json::EndOfLine endOfLine)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    json::JsonFormatter(IOPtr(&buffer, [](QIODevice*) {}), layout).setEndOfLine(endOfLine).write(object);
    constexpr std::array lineEnds{"\n", "\r\n", "\r"};
    buffer.write(lineEnds[static_cast<size_t>(endOfLine)]);
    print(QString::fromUtf8(buffer.data()));
}

void printError(const QString& text)
{
    put(stderr, text + QLatin1Char('\n'));
}

void printProgress(const QString& line)
{
    put(stderr, QStringLiteral("\r\033[K") + line);
}

bool hasTerminal()
{
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return ::isatty(STDERR_FILENO) != 0;
#endif
}

} // namespace veltor::tool
