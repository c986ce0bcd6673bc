#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <stdexcept>
#include <string_view>

/// The tool's ways to standard output, standard error and the keyboard. Main thread only, but for
/// interrupted().
namespace veltor::tool {

/// Standard output cannot be written; caught by main(), which ends with Failed.
class OutputError : public std::runtime_error
{
public:
    /// @param errorNumber  the system's, as in errno
    explicit OutputError(int errorNumber);

    /// The reader went away: nothing to complain of.
    [[nodiscard]] bool isClosedPipe() const { return m_isClosedPipe; }

private:
    bool m_isClosedPipe;
};

/// Text to standard output, in UTF-8 (a Windows console gets its own characters). It is collected and
/// written in larger pieces, on a terminal with every call.
/// @throws OutputError
/// @{
void print(const QString& text);
void print(std::string_view utf8);
/// @}

/// Data with texts from outside to standard output, unchanged but on a terminal, which would obey some of it.
/// @throws OutputError
void printData(std::string_view utf8);

/// Writes what was collected, and closes standard output: called once, by main().
/// @throws OutputError
void finishOutput();

/// Text to standard error, with a line break behind it, after what was printed so far.
void printError(const QString& text);

/// @p object to standard output by JsonText, indented, with a line end behind it.
void printJson(const QJsonObject& object);

/// Replaces the progress line on standard error, which must be a terminal; an empty one removes it.
void printProgress(const QString& line);

/// True when standard error is a terminal, where a progress line makes sense.
[[nodiscard]] bool hasTerminal();

/// True when standard output is a terminal that takes the sequences for colours, and NO_COLOR is not set.
[[nodiscard]] bool hasColours();

/// From now on an interrupt from the keyboard ends the process with Interrupted, unless it was started with
/// interrupts ignored.
void prepareInterrupt();

/// While one exists, the first interrupt only sets interrupted(). One at a time.
class InterruptWatch
{
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    [[nodiscard]] static bool interrupted();

    /// Says so and ends the process with Interrupted, whatever its threads are waiting for.
    [[noreturn]] static void endProcess();
};

} // namespace veltor::tool
