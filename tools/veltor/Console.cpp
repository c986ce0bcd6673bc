#include "Command.h"
#include "Terminal.h"

#include <QtCore/QBuffer>

#include <array>
#include <atomic>
#include <cstdio>

namespace veltor::tool {
namespace {

std::atomic<bool> interruptSeen{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

} // namespace

InterruptWatch::InterruptWatch()
{
    interruptSeen.store(false);
    terminal::watchInterrupt([] { interruptSeen.store(true); });
}

InterruptWatch::~InterruptWatch()
{
    terminal::unwatchInterrupt();
}

bool InterruptWatch::interrupted()
{
    return interruptSeen.load();
}

void print(const QString& text)
{
    terminal::put(stdout, text);
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
    terminal::put(stderr, text + QLatin1Char('\n'));
}

void printProgress(const QString& line)
{
    // Blanks over what the line before left: not every console knows the sequence that clears.
    static int shown = 0;
    const QString cleared = line.leftJustified(shown);
    terminal::put(stderr, QLatin1Char('\r') + cleared + (line.isEmpty() ? QStringLiteral("\r") : QString()));
    shown = line.size();
}

bool hasTerminal()
{
    return terminal::isTerminal(stderr);
}

} // namespace veltor::tool
