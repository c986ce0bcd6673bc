// Positioned reads and writes.

#include "platform/FileIo.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <io.h>

#include <algorithm>

namespace veltor::platform {
namespace {

HANDLE handleOf(int fd) noexcept
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(fd)); // NOLINT: the C runtime's own convention
}

OVERLAPPED at(std::int64_t position) noexcept
{
    OVERLAPPED overlapped = {};
    overlapped.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    overlapped.OffsetHigh = static_cast<DWORD>(position >> 32);
    return overlapped;
}

/// One call moves at most 1 GiB: the system's own count has 32 bits.
DWORD piece(std::int64_t left) noexcept
{
    return static_cast<DWORD>(std::min<std::int64_t>(left, 1 << 30));
}

} // namespace

std::int64_t FileIo::size(int fd)
{
    LARGE_INTEGER size;
    return GetFileSizeEx(handleOf(fd), &size) ? size.QuadPart : -1;
}

std::int64_t FileIo::readAt(int fd, std::int64_t position, char* buffer, std::int64_t length)
{
    std::int64_t done = 0;
    while (done < length) {
        OVERLAPPED overlapped = at(position + done);
        DWORD got = 0;
        if (!ReadFile(handleOf(fd), buffer + done, piece(length - done), &got, &overlapped)) {
            return done > 0 || GetLastError() == ERROR_HANDLE_EOF ? done : -1;
        }
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

std::int64_t FileIo::writeAt(int fd, std::int64_t position, const char* data, std::int64_t length)
{
    std::int64_t done = 0;
    while (done < length) {
        OVERLAPPED overlapped = at(position + done);
        DWORD put = 0;
        if (!WriteFile(handleOf(fd), data + done, piece(length - done), &put, &overlapped) || put == 0) {
            break;
        }
        done += put;
    }
    return done;
}

bool FileIo::resize(int fd, std::int64_t size)
{
    LARGE_INTEGER end;
    end.QuadPart = size;
    return SetFilePointerEx(handleOf(fd), end, nullptr, FILE_BEGIN) && SetEndOfFile(handleOf(fd));
}

bool FileIo::status(int fd, FileStatus& status)
{
    BY_HANDLE_FILE_INFORMATION found;
    if (!GetFileInformationByHandle(handleOf(fd), &found)) {
        return false;
    }
    const unsigned long long number = found.nFileIndexHigh;
    const std::int64_t size = found.nFileSizeHigh;
    status.identity = {found.dwVolumeSerialNumber, (number << 32) | found.nFileIndexLow};
    status.size = (size << 32) | found.nFileSizeLow;
    status.names = found.nNumberOfLinks;
    status.regular = GetFileType(handleOf(fd)) == FILE_TYPE_DISK &&
                     (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    return true;
}

bool FileIo::sync(int fd)
{
    return FlushFileBuffers(handleOf(fd)) != 0;
}

int FileIo::removeName(const NativePath& path)
{
    return DeleteFileW(path.c_str()) ? 0 : static_cast<int>(GetLastError());
}

} // namespace veltor::platform
