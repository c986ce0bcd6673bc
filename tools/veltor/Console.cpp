// The tool's ways to standard output, standard error and the keyboard, on top of what the system has.

#include "Console.h"

#include "Command.h"
#include "JsonText.h"
#include "Language.h"
#include "Terminal.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/json/JsonFormatter.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>

namespace veltor::tool {
namespace {

std::atomic<bool> isWatched{false};
std::atomic<bool> interruptSeen{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

std::string pending; // for standard output

void flushOutput()
{
    if (pending.empty()) {
        return;
    }
    const std::string text = std::move(pending);
    pending.clear();
    if (const int error = terminal::put(stdout, text)) {
        throw OutputError(error);
    }
}

} // namespace

OutputError::OutputError(int errorNumber)
    : std::runtime_error(Text::tr("стандартный вывод: %1").arg(systemReason(errorNumber)).toStdString())
    , m_isClosedPipe(terminal::isClosedPipe(errorNumber))
{}

void print(std::string_view utf8)
{
    constexpr std::size_t piece = 1 << 16;
    static const bool isTerminal = terminal::isTerminal(stdout);
    pending += utf8;
    if (isTerminal || pending.size() >= piece) {
        flushOutput();
    }
}

void print(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    print(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

void printData(std::string_view utf8)
{
    static const bool isTerminal = terminal::isTerminal(stdout);
    if (isTerminal) {
        print(shownJson(QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()))));
    } else {
        print(utf8);
    }
}

bool hasColours()
{
    return terminal::isTerminal(stdout) && terminal::takesColours() &&
           qEnvironmentVariableIsEmpty("NO_COLOR");
}

void finishOutput()
{
    flushOutput();
    // Some systems tell of a full disk only now.
    if (std::fclose(stdout) != 0) {
        throw OutputError(errno);
    }
}

void printError(const QString& text)
{
    try {
        flushOutput();
    } catch (const OutputError&) { // NOLINT(bugprone-empty-catch): the fault to be told goes first
    }
    terminal::put(stderr, (text + QLatin1Char('\n')).toStdString());
}

void printJson(const QJsonObject& object)
{
    JsonText json(json::JsonFormatter::formatIndented);
    json.value(object);
    print(json.take() + '\n');
}

void printProgress(const QString& line)
{
    // Blanks over what the line before left: not every console knows the sequence that clears.
    static int shown = 0;
    const QString cleared = line.leftJustified(shown);
    terminal::put(stderr,
                  QString(QLatin1Char('\r') + cleared + (line.isEmpty() ? QStringLiteral("\r") : QString()))
                      .toStdString());
    shown = static_cast<int>(line.size());
}

bool hasTerminal()
{
    return terminal::isTerminal(stderr);
}

void prepareInterrupt()
{
    terminal::onInterrupt([] {
        if (!isWatched.load() || interruptSeen.exchange(true)) {
            terminal::endProcess(Interrupted);
        }
    });
}

InterruptWatch::InterruptWatch()
{
    interruptSeen.store(false);
    isWatched.store(true);
}

InterruptWatch::~InterruptWatch()
{
    isWatched.store(false);
}

bool InterruptWatch::interrupted()
{
    return interruptSeen.load();
}

void InterruptWatch::endProcess()
{
    if (hasTerminal()) {
        printProgress(QString());
    }
    pending.clear();
    printError(Text::tr("veltor: прервано"));
    terminal::endProcess(Interrupted);
}

} // namespace veltor::tool
