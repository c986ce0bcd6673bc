#include "Terminal.h"

#include <csignal>

#include <unistd.h>

namespace veltor::tool::terminal {
namespace {

void (*g_handler)() = nullptr;
void (*g_former)(int) = SIG_DFL;

extern "C" void onInterrupt(int signal)
{
    g_handler();
    std::signal(signal, SIG_DFL);
}

} // namespace

void prepareStreams() {}

bool isTerminal(std::FILE* stream)
{
    return ::isatty(::fileno(stream)) != 0;
}

void put(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

void watchInterrupt(void (*handler)())
{
    g_handler = handler;
    g_former = std::signal(SIGINT, &onInterrupt);
}

void unwatchInterrupt()
{
    std::signal(SIGINT, g_former);
}

} // namespace veltor::tool::terminal
