// The lock of a folder is a handle that shares no deletion; who cleans up asks for the right to delete.
#include "platform/FolderLock.h"

#include "platform/windows/Account.h"
#include "platform/windows/DirectoryFolder.h"

#include <sddl.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace veltor::platform {

struct FolderLock::Holder
{
    std::wstring path;
    Handle handle;
    bool mayDelete = false;
};

namespace {

constexpr DWORD HoldAccess = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | READ_CONTROL | SYNCHRONIZE;
constexpr DWORD ShareNoDelete = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD ShareAll = ShareNoDelete | FILE_SHARE_DELETE;

/// Makes a folder for the own user alone; with the rights of the folder above where that cannot be.
BOOL makePrivateFolder(const std::wstring& path)
{
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    ConvertStringSecurityDescriptorToSecurityDescriptorW(ownUserOnly().c_str(), SDDL_REVISION_1,
                                                         &attributes.lpSecurityDescriptor, nullptr);
    const BOOL made = CreateDirectoryW(path.c_str(), &attributes);
    const DWORD code = GetLastError();
    LocalFree(attributes.lpSecurityDescriptor);
    SetLastError(code);
    return made;
}

FolderLock::Outcome outcomeOf(const std::error_code& error)
{
    switch (error.value()) {
    case ERROR_SHARING_VIOLATION:
        return FolderLock::Outcome::InUse;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return FolderLock::Outcome::Gone;
    case ERROR_DIRECTORY:
    case ERROR_ACCESS_DENIED:
        return FolderLock::Outcome::Foreign;
    default:
        return FolderLock::Outcome::Failed;
    }
}

std::error_code renameByHandle(HANDLE handle, const std::wstring& to)
{
    const std::size_t bytes = to.size() * sizeof(wchar_t);
    std::vector<std::byte> record(sizeof(FILE_RENAME_INFO) + bytes);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(record.data());
    info->ReplaceIfExists = FALSE;
    info->FileNameLength = static_cast<DWORD>(bytes);
    std::memcpy(info->FileName, to.data(), bytes);
    return SetFileInformationByHandle(handle, FileRenameInfo, info, static_cast<DWORD>(record.size()))
               ? std::error_code()
               : systemError();
}

} // namespace

FolderLock::FolderLock() noexcept = default;
FolderLock::~FolderLock() = default;
FolderLock::FolderLock(FolderLock&& other) noexcept = default;
FolderLock& FolderLock::operator=(FolderLock&& other) noexcept = default;

FolderLock::Outcome FolderLock::make(const Directory& base, const NativeString& name, std::error_code& error)
{
    auto holder = std::make_unique<Holder>();
    holder->path = base.m_folder->pathOf(name);
    if (!makePrivateFolder(holder->path)) {
        error = systemError();
        return isTaken(error) ? Outcome::Exists : Outcome::Failed;
    }
    // Without the right to delete, so that the folder may be somebody's current one.
    error = openFolder(holder->path, Links::Refuse, HoldAccess, ShareNoDelete, holder->handle);
    if (error) {
        return outcomeOf(error);
    }
    m_holder = std::move(holder);
    return Outcome::Taken;
}

FolderLock::Outcome FolderLock::take(const Directory& base, const NativeString& name, std::error_code& error)
{
    auto holder = std::make_unique<Holder>();
    holder->path = base.m_folder->pathOf(name);
    holder->mayDelete = true;
    error = openFolder(holder->path, Links::Refuse, HoldAccess | DELETE, ShareNoDelete, holder->handle);
    if (error) {
        return outcomeOf(error);
    }
    if (!isOwn(holder->handle.get())) {
        return Outcome::Foreign;
    }
    m_holder = std::move(holder);
    return Outcome::Taken;
}

bool FolderLock::isHeld() const noexcept
{
    return m_holder && m_holder->handle;
}

void FolderLock::release() noexcept
{
    m_holder.reset();
}

std::error_code FolderLock::rename(const Directory& base, const NativeString& from, const NativeString& to)
{
    return moveOut(base, from, base.m_folder->pathOf(to));
}

std::error_code FolderLock::moveOut(const Directory&, const NativeString&, const NativeString& path)
{
    if (!isHeld()) {
        return systemError(ERROR_INVALID_HANDLE);
    }
    if (!m_holder->mayDelete) {
        m_holder->handle.reset();
        std::error_code error =
            openFolder(m_holder->path, Links::Refuse, HoldAccess | DELETE, ShareNoDelete, m_holder->handle);
        if (error) { // somebody is in it
            static_cast<void>(
                openFolder(m_holder->path, Links::Refuse, HoldAccess, ShareNoDelete, m_holder->handle));
            return error;
        }
        m_holder->mayDelete = true;
    }
    const std::error_code error = renameByHandle(m_holder->handle.get(), path);
    if (!error) {
        m_holder->path = path;
    }
    return error;
}

std::error_code FolderLock::removeEmpty(Directory&, const NativeString&)
{
    FILE_DISPOSITION_INFO info{TRUE};
    if (!isHeld() || !m_holder->mayDelete) {
        return systemError(ERROR_INVALID_HANDLE);
    }
    if (!SetFileInformationByHandle(m_holder->handle.get(), FileDispositionInfo, &info, sizeof info)) {
        return systemError();
    }
    release(); // with this it is gone
    return {};
}

std::error_code FolderLock::open(Directory& folder) const
{
    auto opened = std::make_unique<Directory::Folder>();
    opened->path = m_holder ? m_holder->path : std::wstring();
    const std::error_code error =
        openFolder(opened->path, Links::Refuse, FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                   ShareAll, opened->handle);
    if (!error) {
        folder.m_folder = std::move(opened);
    }
    return error;
}

bool isOpenToReplacement(const NativeString&, std::error_code&)
{
    return false; // a folder here has its own list of who may do what, its deletion included
}

std::error_code renameToNew(const NativeString& from, const NativeString& to)
{
    return MoveFileExW(from.c_str(), to.c_str(), 0) ? std::error_code() : systemError();
}

std::error_code makeFolder(const NativeString& path)
{
    return CreateDirectoryW(path.c_str(), nullptr) ? std::error_code() : systemError();
}

bool isTaken(const std::error_code& error) noexcept
{
    return error.value() == ERROR_ALREADY_EXISTS || error.value() == ERROR_FILE_EXISTS;
}

} // namespace veltor::platform
