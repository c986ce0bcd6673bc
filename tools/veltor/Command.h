#pragma once

#include <veltor/json/JsonFormatter.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <stdexcept>

/// What the commands of the tool share: exit codes, the usage fault and the way to the console.
namespace veltor::tool {

/// Exit codes of every command.
enum ExitCode
{
    Done = 0,
    Failed = 1,
    Usage = 2
};

/// The words on the command line do not fit; caught by main(), which prints the text and ends with Usage.
class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const QString& text)
        : std::runtime_error(text.toStdString())
    {}
};

/// Text to standard output and standard error, in UTF-8 (a Windows console gets its own characters).
/// printError() adds the line break.
void print(const QString& text);
void printError(const QString& text);

/// @p object to standard output, with a line end behind it.
void printJson(const QJsonObject& object, const json::Format& layout = json::JsonFormatter::formatIndented,
               json::EndOfLine endOfLine = json::EndOfLine::Lf);

/// Replaces the progress line on standard error, which must be a terminal; an empty one removes it.
void printProgress(const QString& line);

/// True when standard error is a terminal, where a progress line makes sense.
bool hasTerminal();

/// While one exists, the first interrupt from the keyboard only sets interrupted(); a second one kills the
/// process. One at a time.
class InterruptWatch
{
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    [[nodiscard]] static bool interrupted();
};

/// One entry of the tool's table: `veltor NAME ARGUMENTS...`. `run` gets the words after the name.
struct Command
{
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

int runCrash(const QStringList& arguments);
int runDistance(const QStringList& arguments);
int runJournal(const QStringList& arguments);
int runMeasure(const QStringList& arguments);

} // namespace veltor::tool
