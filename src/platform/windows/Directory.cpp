// Folders by their paths, each held open so that its path stays true.
#include "platform/windows/DirectoryFolder.h"

namespace veltor::platform {
namespace {

constexpr DWORD ListAccess = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD ShareNoDelete = FILE_SHARE_READ | FILE_SHARE_WRITE;

constexpr DWORD NotAFile = 336; // ERROR_DIRECTORY_NOT_SUPPORTED, which not all headers have

std::error_code resultOf(BOOL done)
{
    return done ? std::error_code() : systemError();
}

FileKind kindOf(DWORD attributes, DWORD reparseTag)
{
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag)) {
        return FileKind::Link;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Folder
           : (attributes & FILE_ATTRIBUTE_DEVICE) != 0  ? FileKind::Other
                                                        : FileKind::File;
}

std::int64_t milliseconds(FILETIME time)
{
    const auto ticks = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return static_cast<std::int64_t>(ticks / 10000) - 11644473600000;
}

std::error_code statusOfHandle(HANDLE handle, FileStatus& status)
{
    BY_HANDLE_FILE_INFORMATION found{};
    if (!GetFileInformationByHandle(handle, &found)) {
        return systemError();
    }
    FILE_ATTRIBUTE_TAG_INFO tag{};
    GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &tag, sizeof tag);
    status.kind = kindOf(found.dwFileAttributes, tag.ReparseTag);
    status.volume = found.dwVolumeSerialNumber;
    status.number = (static_cast<std::uint64_t>(found.nFileIndexHigh) << 32) | found.nFileIndexLow;
    status.sizeBytes = (static_cast<std::uint64_t>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
    status.modifiedMs = milliseconds(found.ftLastWriteTime);
    return {};
}

Handle openForStatus(const std::wstring& path, Links links)
{
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (links == Links::Refuse ? FILE_FLAG_OPEN_REPARSE_POINT : 0u);
    return Handle(
        CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, ShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
}

} // namespace

std::error_code openFolder(const std::wstring& path, Links links, DWORD access, DWORD share, Handle& handle)
{
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (links == Links::Refuse ? FILE_FLAG_OPEN_REPARSE_POINT : 0u);
    Handle opened(CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, flags, nullptr));
    if (!opened) {
        return systemError();
    }
    FileStatus status;
    if (const std::error_code error = statusOfHandle(opened.get(), status)) {
        return error;
    }
    if (status.kind != FileKind::Folder) {
        return systemError(ERROR_DIRECTORY);
    }
    handle = std::move(opened);
    return {};
}

Directory::Directory() noexcept = default;
Directory::~Directory() = default;
Directory::Directory(Directory&& other) noexcept = default;
Directory& Directory::operator=(Directory&& other) noexcept = default;

void Directory::close() noexcept
{
    m_folder.reset();
}

std::error_code Directory::open(const NativeString& path, Links links)
{
    auto folder = std::make_unique<Folder>();
    folder->path = path;
    const std::error_code error = openFolder(path, links, ListAccess, ShareAll, folder->handle);
    if (!error) {
        m_folder = std::move(folder);
    }
    return error;
}

std::error_code Directory::openIn(const Directory& parent, const NativeString& name, Links links, bool)
{
    auto folder = std::make_unique<Folder>();
    folder->path = name == L"." ? parent.m_folder->path : parent.m_folder->pathOf(name);
    const DWORD share = name == L"." ? ShareAll : ShareNoDelete;
    const std::error_code error = openFolder(folder->path, links, ListAccess, share, folder->handle);
    if (!error) {
        m_folder = std::move(folder);
    }
    return error;
}

std::error_code Directory::openAbove(const Directory& child)
{
    const std::wstring& path = child.m_folder->path;
    return open(path.substr(0, path.rfind(L'\\')), Links::Refuse);
}

bool Directory::next(Name& name, std::error_code& error)
{
    // By the handle: a search by the path would be an opening of its own, which a lock may refuse.
    Folder& folder = *m_folder;
    for (;;) {
        if (!folder.more) {
            folder.names.resize(8192);
            const auto which = folder.begun ? FileIdBothDirectoryInfo : FileIdBothDirectoryRestartInfo;
            if (!GetFileInformationByHandleEx(folder.handle.get(), which, folder.names.data(),
                                              static_cast<DWORD>(folder.names.size() * sizeof(LONGLONG)))) {
                const DWORD code = GetLastError();
                error = code == ERROR_NO_MORE_FILES || code == ERROR_FILE_NOT_FOUND ? std::error_code()
                                                                                    : systemError(code);
                return false;
            }
            folder.begun = folder.more = true;
            folder.next = 0;
        }
        const auto* const bytes = reinterpret_cast<const unsigned char*>(folder.names.data()) + folder.next;
        const auto* const entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(bytes);
        folder.next += entry->NextEntryOffset;
        folder.more = entry->NextEntryOffset != 0;
        const std::wstring text(entry->FileName, entry->FileNameLength / sizeof(wchar_t));
        if (text != L"." && text != L"..") {
            name.text = text;
            name.kind = kindOf(entry->FileAttributes, entry->EaSize); // where the system puts the tag
            name.hidden = (entry->FileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
            return true;
        }
    }
}

void Directory::rewind()
{
    m_folder->begun = m_folder->more = false;
}

std::error_code Directory::status(FileStatus& status) const
{
    return statusOfHandle(m_folder->handle.get(), status);
}

std::error_code Directory::statusOf(const NativeString& name, Links links, FileStatus& status) const
{
    const Handle handle = openForStatus(m_folder->pathOf(name), links);
    return handle ? statusOfHandle(handle.get(), status) : systemError();
}

std::error_code Directory::removeFile(const NativeString& name)
{
    const std::wstring path = m_folder->pathOf(name);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return systemError();
    }
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return resultOf(DeleteFileW(path.c_str()));
    }
    FileStatus status;
    if (const std::error_code error = statusOf(name, Links::Refuse, status)) {
        return error;
    }
    // Of a link to a folder, this removes the link.
    return status.kind == FileKind::Link ? resultOf(RemoveDirectoryW(path.c_str())) : systemError(NotAFile);
}

std::error_code Directory::removeFolder(const NativeString& name)
{
    const std::wstring path = m_folder->pathOf(name);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
    return resultOf(RemoveDirectoryW(path.c_str()));
}

std::error_code Directory::makeMark(const NativeString& name, const char* text) const
{
    const Handle file(CreateFileW(m_folder->pathOf(name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, nullptr));
    const auto size = static_cast<DWORD>(std::char_traits<char>::length(text));
    DWORD written = 0;
    return file && WriteFile(file.get(), text, size, &written, nullptr) ? std::error_code() : systemError();
}

bool Directory::hasMark(const NativeString& name) const
{
    const DWORD attributes = GetFileAttributesW(m_folder->pathOf(name).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

bool isGone(const std::error_code& error) noexcept
{
    return error.value() == ERROR_FILE_NOT_FOUND || error.value() == ERROR_PATH_NOT_FOUND;
}

bool isNotEmpty(const std::error_code& error) noexcept
{
    return error.value() == ERROR_DIR_NOT_EMPTY;
}

bool isNoFolder(const std::error_code& error) noexcept
{
    return error.value() == ERROR_DIRECTORY;
}

bool isFolder(const std::error_code& error) noexcept
{
    return error.value() == NotAFile;
}

} // namespace veltor::platform
