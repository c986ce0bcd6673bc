// What stands against writing to a file: the way to it, rights, marks, the volume and its room.
#include "platform/WriteFacts.h"

#include "platform/windows/Handle.h"

#include <vector>

namespace veltor::platform {
namespace {

using Way = WriteFacts::Way;

std::wstring folderOf(const std::wstring& path)
{
    return path.substr(0, path.rfind(L'\\'));
}

bool isFolder(const std::wstring& path)
{
    // A drive needs its backslash.
    const DWORD attributes = GetFileAttributesW((path + L'\\').c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void goThere(const std::wstring& path, WriteFacts& facts)
{
    facts.place = path;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        facts.way = Way::There;
        facts.kind = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Folder
                     : (attributes & FILE_ATTRIBUTE_DEVICE) != 0  ? FileKind::Other
                                                                  : FileKind::File;
        facts.readOnlyMark = facts.kind == FileKind::File && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
        return;
    }
    const DWORD code = GetLastError();
    facts.error = systemError(code);
    if (code == ERROR_FILENAME_EXCED_RANGE) {
        facts.way = Way::NameTooLong;
    }
    if (code != ERROR_FILE_NOT_FOUND && code != ERROR_PATH_NOT_FOUND) {
        return;
    }
    std::wstring missing = path;
    std::wstring folder = folderOf(path);
    if (isFolder(folder)) {
        facts.way = Way::New;
        facts.place = folder;
        facts.error.clear();
        return;
    }
    while (folder.size() < missing.size() && !isFolder(folder)) {
        missing = folder;
        folder = folderOf(folder);
    }
    facts.place = missing;
    facts.way =
        GetFileAttributesW(missing.c_str()) == INVALID_FILE_ATTRIBUTES ? Way::NoFolder : Way::NotAFolder;
}

/// Whether the lists of rights refuse it to this user; false when that cannot be learnt.
bool refuses(const std::wstring& path, DWORD wanted)
{
    constexpr SECURITY_INFORMATION parts =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    GetFileSecurityW(path.c_str(), parts, nullptr, 0, &size);
    std::vector<unsigned char> descriptor(size);
    HANDLE process = nullptr;
    HANDLE thread = nullptr;
    if (size == 0 || !GetFileSecurityW(path.c_str(), parts, descriptor.data(), size, &size) ||
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE, &process)) {
        return false;
    }
    const Handle own(process);
    if (!DuplicateToken(own.get(), SecurityImpersonation, &thread)) {
        return false;
    }
    const Handle token(thread);
    GENERIC_MAPPING mapping{FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE, FILE_ALL_ACCESS};
    PRIVILEGE_SET privileges{};
    DWORD privilegesSize = sizeof privileges;
    DWORD granted = 0;
    BOOL allowed = FALSE;
    return AccessCheck(descriptor.data(), token.get(), wanted, &mapping, &privileges, &privilegesSize,
                       &granted, &allowed) &&
           !allowed;
}

void lookAtVolume(WriteFacts& facts)
{
    const std::wstring folder = facts.way == Way::New ? facts.place : folderOf(facts.place);
    ULARGE_INTEGER available{};
    if (GetDiskFreeSpaceExW((folder + L'\\').c_str(), &available, nullptr, nullptr)) {
        facts.freeBytes = available.QuadPart; // the quota taken into account
    }
    std::wstring volume(MAX_PATH + 1, L'\0');
    DWORD flags = 0;
    if (GetVolumePathNameW((folder + L'\\').c_str(), volume.data(), static_cast<DWORD>(volume.size())) &&
        GetVolumeInformationW(volume.c_str(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0)) {
        facts.readOnlyMount = (flags & FILE_READ_ONLY_VOLUME) != 0;
    }
}

} // namespace

WriteFacts writeFacts(const NativeString& path, std::uint64_t)
{
    WriteFacts facts;
    goThere(path, facts);
    if (facts.way == Way::There || facts.way == Way::New) {
        facts.noRights = refuses(facts.place, facts.way == Way::New ? FILE_ADD_FILE : FILE_WRITE_DATA);
        lookAtVolume(facts);
    }
    return facts;
}

} // namespace veltor::platform
