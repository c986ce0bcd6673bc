#include "Terminal.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <atomic>

namespace veltor::tool::terminal {
namespace {

std::atomic<void (*)()> g_handler{nullptr};

/// The first interrupt takes the handler; without one the system does what it always does.
BOOL WINAPI onControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    auto* const handler = g_handler.exchange(nullptr);
    if (!handler) {
        return FALSE;
    }
    handler();
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

void put(std::FILE* stream, const QString& text)
{
    if (!isTerminal(stream)) {
        const QByteArray bytes = text.toUtf8();
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
        std::fflush(stream);
        return;
    }
    std::fflush(stream);
    const std::wstring characters = text.toStdWString();
    constexpr std::size_t mostAtOnce = 8192; // older systems pass them through a buffer of 64 KiB
    for (std::size_t done = 0; done < characters.size();) {
        const auto count = static_cast<DWORD>(std::min(characters.size() - done, mostAtOnce));
        DWORD written = 0;
        if (!WriteConsoleW(handleOf(stream), characters.data() + done, count, &written, nullptr) ||
            written == 0) {
            return;
        }
        done += written;
    }
}

void watchInterrupt(void (*handler)())
{
    g_handler = handler;
    SetConsoleCtrlHandler(&onControl, TRUE);
}

void unwatchInterrupt()
{
    SetConsoleCtrlHandler(&onControl, FALSE);
    g_handler = nullptr;
}

} // namespace veltor::tool::terminal
