#pragma once

#include "platform/Directory.h"
#include "platform/windows/Handle.h"

#include <string>
#include <vector>

namespace veltor::platform {

/// An open folder on Windows: names are put behind its path, which cannot come to mean another folder while
/// the handle is there, as this one shares no deletion (the root of a walk apart).
struct Directory::Folder
{
    [[nodiscard]] std::wstring pathOf(const std::wstring& name) const
    {
        return path.back() == L'\\' ? path + name : path + L'\\' + name;
    }

    std::wstring path;
    Handle handle;
    // Names that the system gave at once; the position of the next one, if there is one.
    std::vector<LONGLONG> names;
    std::size_t next = 0;
    bool more = false;
    bool begun = false;
};

/// Opens a folder; an error when it is none, or a link and these are refused.
std::error_code openFolder(const std::wstring& path, Links links, DWORD access, DWORD share, Handle& handle);

} // namespace veltor::platform
