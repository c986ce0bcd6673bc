#pragma once

#include <cstdio>
#include <string>

/// What the tool asks of the system it runs on; TerminalPosix.cpp and TerminalWindows.cpp.
namespace veltor::tool::terminal {

/// Called before all else: the standard streams carry bytes as they stand, line ends included, and none of
/// their places can be taken by a file that is opened later.
void prepareStreams();

/// True when @p stream leads to a person's terminal.
[[nodiscard]] bool isTerminal(std::FILE* stream);

/// True when the terminals of this system show the sequences for colours.
[[nodiscard]] bool takesColours();

/// Writes UTF-8 text to a stream, on a Windows console in its own characters whatever the code page is.
/// @return 0, or the number of the system's error
int put(std::FILE* stream, const std::string& text);

/// True for the error of writing to a pipe that nobody reads.
[[nodiscard]] bool isClosedPipe(int errorNumber);

/// From now on an interrupt from the keyboard calls @p handler, in a signal handler or a thread of the
/// system's, so that it may only touch lock-free atomics and call endProcess(). Without effect in a
/// process that was started with interrupts ignored.
void onInterrupt(void (*handler)());

/// Ends the process at once, from anywhere.
[[noreturn]] void endProcess(int exitCode);

/// The language of the user by the system's own settings, as "ru_RU".
[[nodiscard]] std::string userLanguage();

/// Makes the system's own messages English, where the process decides over their language.
void makeMessagesEnglish();

} // namespace veltor::tool::terminal
