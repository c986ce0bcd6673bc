// The console of Windows.

#include "Terminal.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace veltor::tool::terminal {
namespace {

std::atomic<void (*)()> g_handler{nullptr};

BOOL WINAPI onControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    g_handler.load()();
    return TRUE;
}

HANDLE handleOf(std::FILE* stream)
{
    return reinterpret_cast<HANDLE>(
        _get_osfhandle(_fileno(stream))); // NOLINT: the C runtime's own convention
}

} // namespace

void prepareStreams()
{
    for (std::FILE* const stream : {stdin, stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
}

bool isTerminal(std::FILE* stream)
{
    DWORD mode = 0; // _isatty() also holds printers and the null device for one
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool takesColours()
{
    return false; // older consoles show the sequences themselves
}

int put(std::FILE* stream, const std::string& text)
{
    errno = 0;
    if (!isTerminal(stream)) {
        const bool done =
            std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
        return done ? 0 : errno != 0 ? errno : EIO;
    }
    std::fflush(stream);
    const int size = static_cast<int>(text.size());
    std::wstring characters(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, characters.data(), size);
    characters.resize(static_cast<std::size_t>(length));
    constexpr std::size_t mostAtOnce = 8192; // older systems pass them through a buffer of 64 KiB
    for (std::size_t done = 0; done < characters.size();) {
        const auto count = static_cast<DWORD>(std::min(characters.size() - done, mostAtOnce));
        DWORD written = 0;
        if (!WriteConsoleW(handleOf(stream), characters.data() + done, count, &written, nullptr) ||
            written == 0) {
            return EIO;
        }
        done += written;
    }
    return 0;
}

bool isClosedPipe(int errorNumber)
{
    return errorNumber == EPIPE || errorNumber == EINVAL; // the C runtime knows no better for a broken pipe
}

void onInterrupt(void (*handler)())
{
    g_handler = handler;
    SetConsoleCtrlHandler(&onControl, TRUE);
}

void endProcess(int exitCode)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::_Exit(exitCode);
}

std::string userLanguage()
{
    const char* const all = std::getenv("LC_ALL");
    if (all != nullptr && *all != '\0') {
        return all;
    }
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    std::string language;
    for (const wchar_t* c = name; *c != L'\0'; ++c) {
        language += static_cast<char>(*c); // ASCII by definition
    }
    return language;
}

void makeMessagesEnglish() {}

} // namespace veltor::tool::terminal
