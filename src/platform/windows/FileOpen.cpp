// Opening files that strangers may have named, and asking what they are.

#include "platform/FileOpen.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <aclapi.h>

#include <fcntl.h>
#include <io.h>

#include <vector>

namespace veltor::platform {
namespace {

HANDLE handleOf(int fd) noexcept
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(fd)); // NOLINT: the C runtime's own convention
}

OpenedFile failed(OpenFault fault, DWORD error)
{
    OpenedFile file;
    file.fault = fault;
    file.error = static_cast<int>(error);
    return file;
}

OpenedFile refused(int fd, OpenFault fault)
{
    _close(fd);
    return failed(fault, 0);
}

std::wstring finalPath(HANDLE handle)
{
    std::wstring path(32768, L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    path.resize(length < path.size() ? length : 0);
    return path;
}

bool isLink(HANDLE handle)
{
    BY_HANDLE_FILE_INFORMATION found;
    return GetFileInformationByHandle(handle, &found) &&
           (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// The user's own number, as bytes; empty when the system does not tell.
std::vector<unsigned char> userOf(HANDLE token, TOKEN_INFORMATION_CLASS kind)
{
    DWORD size = 0;
    GetTokenInformation(token, kind, nullptr, 0, &size);
    std::vector<unsigned char> bytes(size);
    if (size == 0 || !GetTokenInformation(token, kind, bytes.data(), size, &size)) {
        bytes.clear();
    }
    return bytes;
}

} // namespace

OpenedFile openFile(const NativePath& path, FileOpening opening)
{
    const DWORD access = opening.write ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
    const DWORD attributes = FILE_ATTRIBUTE_NORMAL | (opening.refuseLink ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    const HANDLE handle = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      opening.createNew ? CREATE_NEW : OPEN_EXISTING, attributes, nullptr);
    if (handle == INVALID_HANDLE_VALUE) { // NOLINT: the system's own convention
        const DWORD error = GetLastError();
        const DWORD found = GetFileAttributesW(path.c_str());
        const bool folder = found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool absent = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return failed(folder                       ? OpenFault::NotRegular
                      : absent                     ? OpenFault::Absent
                      : error == ERROR_FILE_EXISTS ? OpenFault::Exists
                                                   : OpenFault::System,
                      error);
    }
    if (opening.refuseLink && isLink(handle)) {
        CloseHandle(handle);
        return failed(OpenFault::Link, 0);
    }
    OpenedFile file;
    const int flags = _O_BINARY | (opening.write ? _O_RDWR : _O_RDONLY);
    file.fd = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), flags);
    if (file.fd < 0) {
        CloseHandle(handle);
        return failed(OpenFault::System, ERROR_TOO_MANY_OPEN_FILES);
    }
    // A pipe or a console has no file information at all.
    if (!fileIo().status(file.fd, file.status)) {
        const DWORD error = GetLastError();
        const bool disk = GetFileType(handle) == FILE_TYPE_DISK;
        _close(file.fd);
        return failed(disk ? OpenFault::System : OpenFault::NotRegular, error);
    }
    return file.status.regular ? file : refused(file.fd, OpenFault::NotRegular);
}

NativePath pathOf(int fd)
{
    const std::wstring path = finalPath(handleOf(fd));
    constexpr std::size_t prefix = 4; // \\?\ before a drive's letter
    return path.size() > prefix + 1 && path[prefix + 1] == L':' ? path.substr(prefix) : path;
}

ConfinedFolder::ConfinedFolder(const NativePath& path)
    : m_handle(reinterpret_cast<std::intptr_t>(
          CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)))
    , m_error(m_handle == -1 ? static_cast<int>(GetLastError()) : 0)
{}

ConfinedFolder::~ConfinedFolder()
{
    if (m_handle != -1) {
        CloseHandle(reinterpret_cast<HANDLE>(m_handle)); // NOLINT: the system's own convention
    }
}

/// The system resolves the whole name at once; where that led is asked of the open file.
OpenedFile ConfinedFolder::open(const NativePath& name, By) const
{
    if (m_handle == -1) {
        return failed(OpenFault::System, static_cast<DWORD>(m_error));
    }
    // A colon is a drive, or a stream of another file.
    if (name.empty() || name.find(L':') != NativePath::npos || name[0] == L'/' || name[0] == L'\\') {
        return failed(OpenFault::Outside, 0);
    }
    const std::wstring home = finalPath(reinterpret_cast<HANDLE>(m_handle)) + L'\\'; // NOLINT: see above
    std::wstring path = home + name;
    for (wchar_t& letter : path) {
        letter = letter == L'/' ? L'\\' : letter;
    }
    OpenedFile file = openFile(path, {true, false, true});
    if (file.fd >= 0 && finalPath(handleOf(file.fd)).compare(0, home.size(), home) != 0) {
        return refused(file.fd, OpenFault::Outside);
    }
    return file;
}

bool names(const NativePath&, const FileIdentity&)
{
    return true; // an open file cannot be renamed or deleted
}

bool belongsToUser(int fd)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(handleOf(fd), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                        nullptr, &descriptor) != ERROR_SUCCESS) {
        return false;
    }
    HANDLE token = nullptr;
    bool same = false;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        // An administrator's files belong to the group: what the token makes owner of new files counts too.
        const auto user = userOf(token, TokenUser);
        const auto maker = userOf(token, TokenOwner);
        same =
            (!user.empty() && EqualSid(owner, reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid)) ||
            (!maker.empty() && EqualSid(owner, reinterpret_cast<const TOKEN_OWNER*>(maker.data())->Owner));
        CloseHandle(token);
    }
    LocalFree(descriptor);
    return same;
}

bool restrictAccess(int, unsigned)
{
    return true;
}

unsigned currentUser() noexcept
{
    return 0;
}

Presence presenceOf(const NativePath& path)
{
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return Presence::Present;
    }
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Presence::Absent
                                                                          : Presence::Unknown;
}

bool isRegular(const NativePath& path)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) ==
               0;
}

} // namespace veltor::platform
