// Names beneath a folder by their whole paths, after every part was seen not to be a link. Who may change
// these names meanwhile could lead elsewhere: the rights of the folder are what protects here.

#include "platform/NameIo.h"
#include "platform/FileOpen.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace veltor::platform {
namespace {

std::wstring wholePath(const NameIo::Path& folder, const NameIo::Path& name)
{
    std::wstring path = (folder / name).make_preferred().wstring();
    constexpr std::size_t shortPath = 248;
    if (path.size() < shortPath || path.rfind(LR"(\\?\)", 0) == 0) {
        return path;
    }
    return path.rfind(LR"(\\)", 0) == 0 ? LR"(\\?\UNC\)" + path.substr(2) : LR"(\\?\)" + path;
}

int lastError() noexcept
{
    return static_cast<int>(GetLastError());
}

int errorUnless(BOOL done) noexcept
{
    return done ? 0 : lastError();
}

/// 0 when no part before the last one is a link or missing.
int checkWay(const NameIo::Path& folder, const NameIo::Path& name)
{
    NameIo::Path way;
    for (const NameIo::Path& part : name.parent_path()) {
        way /= part;
        const DWORD attributes = GetFileAttributesW(wholePath(folder, way).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            return lastError();
        }
        if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
            return ERROR_PATH_NOT_FOUND;
        }
        if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
            return ERROR_CANT_ACCESS_FILE;
        }
    }
    return 0;
}

bool tellIdentity(const std::wstring& path, FileIdentity& identity)
{
    const HANDLE handle = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) { // NOLINT: the system's own convention
        return false;
    }
    BY_HANDLE_FILE_INFORMATION information;
    const bool told = GetFileInformationByHandle(handle, &information) != 0;
    CloseHandle(handle);
    if (told) {
        identity = {information.dwVolumeSerialNumber,
                    (static_cast<unsigned long long>(information.nFileIndexHigh) << 32U) |
                        information.nFileIndexLow};
    }
    return told;
}

NameStatus::Kind kindOf(DWORD attributes) noexcept
{
    if (attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) {
        return NameStatus::Kind::Other;
    }
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? NameStatus::Kind::Folder : NameStatus::Kind::File;
}

} // namespace

NameStatus NameIo::look(const Path& folder, const Path& name)
{
    NameStatus found;
    found.changeable = true; // the attempt tells
    found.error = checkWay(folder, name);
    if (found.error != 0) {
        return found;
    }
    const std::wstring path = wholePath(folder, name);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        found.error = lastError();
        found.kind =
            found.error == ERROR_FILE_NOT_FOUND ? NameStatus::Kind::Missing : NameStatus::Kind::Unknown;
        found.impossible = found.error == ERROR_FILENAME_EXCED_RANGE || found.error == ERROR_INVALID_NAME;
        return found;
    }
    found.kind = kindOf(attributes);
    tellIdentity(path, found.identity);
    return found;
}

int NameIo::createFile(const Path& folder, const Path& name)
{
    if (const int error = checkWay(folder, name)) {
        return error;
    }
    const HANDLE handle = CreateFileW(wholePath(folder, name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    const int error = errorUnless(handle != INVALID_HANDLE_VALUE); // NOLINT: the system's own convention
    return error != 0 ? error : errorUnless(CloseHandle(handle));
}

int NameIo::createFolder(const Path& folder, const Path& name)
{
    const int error = checkWay(folder, name);
    return error != 0 ? error : errorUnless(CreateDirectoryW(wholePath(folder, name).c_str(), nullptr));
}

int NameIo::move(const Path& folder, const Path& from, const Path& to, bool replace, bool through)
{
    for (const Path* const name : {&from, &to}) {
        if (const int error = checkWay(folder, *name)) {
            return error;
        }
    }
    const DWORD how =
        (replace ? MOVEFILE_REPLACE_EXISTING : 0U) | (through ? MOVEFILE_WRITE_THROUGH : 0U);
    return errorUnless(MoveFileExW(wholePath(folder, from).c_str(), wholePath(folder, to).c_str(), how));
}

int NameIo::removeFile(const Path& folder, const Path& name)
{
    const int error = checkWay(folder, name);
    return error != 0 ? error : errorUnless(DeleteFileW(wholePath(folder, name).c_str()));
}

int NameIo::removeFolder(const Path& folder, const Path& name)
{
    const int error = checkWay(folder, name);
    return error != 0 ? error : errorUnless(RemoveDirectoryW(wholePath(folder, name).c_str()));
}

int NameIo::open(const Path& folder, const Path& name, int& fd)
{
    const NameStatus found = look(folder, name);
    if (found.kind != NameStatus::Kind::File) {
        return found.error != 0 ? found.error : ERROR_CANT_ACCESS_FILE;
    }
    const OpenedFile opened = openFile(wholePath(folder, name), {true, false, true});
    fd = opened.fd;
    return fd >= 0 ? 0 : opened.error != 0 ? opened.error : ERROR_CANT_ACCESS_FILE;
}

int NameIo::syncFolder(const Path& folder, const Path& name)
{
    if (const int error = checkWay(folder, name)) {
        return error;
    }
    const HANDLE handle = CreateFileW(wholePath(folder, name).c_str(), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const bool opened = handle != INVALID_HANDLE_VALUE; // NOLINT: the system's own convention
    const int error = errorUnless(opened && FlushFileBuffers(handle));
    if (opened) {
        CloseHandle(handle);
    }
    const bool cannot = error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_FUNCTION ||
                        error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_HANDLE;
    return cannot ? 0 : error;
}

int NameIo::list(const Path& folder, const Path& name, std::vector<Path>& names)
{
    if (const int error = checkWay(folder, name)) {
        return error;
    }
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(wholePath(folder, name / L"*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) { // NOLINT: the system's own convention
        return lastError();
    }
    do {
        if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
            names.emplace_back(entry.cFileName);
        }
    } while (FindNextFileW(search, &entry));
    const int error = lastError();
    FindClose(search);
    return error == ERROR_NO_MORE_FILES ? 0 : error;
}

} // namespace veltor::platform
