#pragma once

#include "Console.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <stdexcept>

/// What the commands of the tool share: exit codes, the usage fault and the table's entry.
namespace veltor::tool {

/// Exit codes of every command.
enum ExitCode
{
    Done = 0,
    Failed = 1,
    Usage = 2,
    Interrupted = 130
};

/// The words on the command line do not fit; caught by main(), which prints the one line of text, says where
/// help is to be had and ends with Usage.
class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const QString& text)
        : std::runtime_error(text.toStdString())
    {}
};

/// One entry of the tool's table: `veltor NAME ARGUMENTS...`.
struct Command
{
    const char* name;
    const char* summary;                  ///< in the context "veltor", untranslated
    int (*run)(const QStringList& words); ///< gets the words after the name
};

int runDistance(const QStringList& words);
int runGeodesic(const QStringList& words);
int runJournal(const QStringList& words);
int runMeasure(const QStringList& words);

} // namespace veltor::tool
