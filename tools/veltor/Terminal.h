#pragma once

#include <QtCore/QString>

#include <cstdio>

/// What the tool asks of the system it runs on; TerminalPosix.cpp and TerminalWindows.cpp.
namespace veltor::tool::terminal {

/// Called first: the standard streams carry bytes as they stand, line ends included.
void prepareStreams();

/// True when @p stream leads to a person's terminal.
bool isTerminal(std::FILE* stream);

/// Writes text to a stream in UTF-8, on a Windows console in its own characters whatever the code page is.
void put(std::FILE* stream, const QString& text);

/// Between the two calls, the first interrupt from the keyboard calls @p handler (in a signal handler, or
/// in a thread of the system's) and a second one kills the process. The handler may only touch lock-free
/// atomics.
void watchInterrupt(void (*handler)());
void unwatchInterrupt();

} // namespace veltor::tool::terminal
