#pragma once

#include "platform/NativeString.h"

#include <cstdint>
#include <memory>
#include <system_error>

namespace veltor::platform {

enum class FileKind
{
    Unknown, ///< ask for the status
    File,
    Folder,
    Link,  ///< symbolic, or what the system has of the kind; never entered unless asked to
    Other, ///< pipe, socket, device
};

/// What a file is, without being opened.
struct FileStatus
{
    FileKind kind = FileKind::Unknown;
    std::uint64_t volume = 0; ///< with number: which file it is
    std::uint64_t number = 0;
    std::uint64_t mount = 0; ///< through which mount it was reached; 0 when unknown
    std::uint64_t sizeBytes = 0;
    std::int64_t modifiedMs = 0; ///< since 1970, UTC

    [[nodiscard]] bool isSameFile(const FileStatus& other) const
    {
        return volume == other.volume && number == other.number;
    }
    [[nodiscard]] bool isSameMount(const FileStatus& other) const
    {
        return volume == other.volume && (mount == other.mount || mount == 0 || other.mount == 0);
    }
};

enum class Links
{
    Refuse, ///< a link is not the folder it leads to
    Follow,
};

/// An open folder. What is done by name is done in it and nowhere else, whatever becomes of the path that it
/// was opened by: the names are single ones, and no link is followed unless asked to. One thread at a time.
class Directory
{
public:
    struct Name
    {
        NativeString text;
        FileKind kind = FileKind::Unknown;
        bool hidden = false; ///< by a mark of the file system; a dot in front is none
    };

    Directory() noexcept;
    ~Directory();
    Directory(Directory&& other) noexcept;
    Directory& operator=(Directory&& other) noexcept;

    [[nodiscard]] bool isOpen() const noexcept { return m_folder != nullptr; }
    void close() noexcept;

    std::error_code open(const NativeString& path, Links links);
    /// Opens a folder in @p parent, which must be another object.
    /// @param grant  gives the own user all rights to the folder first, where that is needed
    std::error_code openIn(const Directory& parent, const NativeString& name, Links links,
                           bool grant = false);
    /// Opens the folder that @p child lies in at this moment.
    std::error_code openAbove(const Directory& child);

    /// The next name, "." and ".." left out; false at the end, or with @p error set.
    bool next(Name& name, std::error_code& error);
    /// Begins anew with what is there now.
    void rewind();

    std::error_code status(FileStatus& status) const;
    std::error_code statusOf(const NativeString& name, Links links, FileStatus& status) const;

    /// Removes what is no folder; a link itself, never what it leads to.
    std::error_code removeFile(const NativeString& name);
    /// Removes an empty folder.
    std::error_code removeFolder(const NativeString& name);

    /// Makes a file with these bytes for the own user alone; an error when the name is taken.
    std::error_code makeMark(const NativeString& name, const char* text) const;
    /// Whether there is a plain file of the own user by that name, with only that name. What it holds does
    /// not count: who made it may have been killed before it was written.
    [[nodiscard]] bool hasMark(const NativeString& name) const;

private:
    friend class FolderLock;
    struct Folder;
    std::unique_ptr<Folder> m_folder;
};

/// What a failed removal or opening means for who walks a tree.
[[nodiscard]] bool isGone(const std::error_code& error) noexcept;     ///< there is no such name
[[nodiscard]] bool isNotEmpty(const std::error_code& error) noexcept; ///< the folder holds something
[[nodiscard]] bool isNoFolder(const std::error_code& error) noexcept; ///< a link or file, not a folder
[[nodiscard]] bool isFolder(const std::error_code& error) noexcept;   ///< of removeFile(): perhaps a folder

} // namespace veltor::platform
