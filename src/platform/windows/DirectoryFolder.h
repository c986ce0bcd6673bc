#pragma once

#include "platform/Directory.h"
#include "platform/windows/Handle.h"

namespace veltor::platform {

/// An open folder on Windows: names are put behind its path, which cannot come to mean another folder while
/// the handle is there, as this one shares no deletion (the root of a walk apart).
struct Directory::Folder
{
    ~Folder() { endNames(); }

    void endNames()
    {
        if (names != INVALID_HANDLE_VALUE) { // NOLINT: the system's own convention
            FindClose(names);
            names = INVALID_HANDLE_VALUE; // NOLINT
        }
    }

    [[nodiscard]] std::wstring pathOf(const std::wstring& name) const
    {
        return path.back() == L'\\' ? path + name : path + L'\\' + name;
    }

    std::wstring path;
    Handle handle;
    HANDLE names = INVALID_HANDLE_VALUE; // NOLINT
};

/// Opens a folder; an error when it is none, or a link and these are refused.
std::error_code openFolder(const std::wstring& path, Links links, DWORD access, DWORD share, Handle& handle);

} // namespace veltor::platform
