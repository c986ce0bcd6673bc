// Case in names: folders do not tell it apart, unless they are marked to.
#include "platform/FileRules.h"

#include "platform/windows/Handle.h"

namespace veltor::platform {

bool comparesCase(const NativeString& folder) noexcept
{
    constexpr auto caseInfo = static_cast<FILE_INFO_BY_HANDLE_CLASS>(23); // FileCaseSensitiveInfo
    ULONG flags = 0;
    const Handle handle(CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return handle && GetFileInformationByHandleEx(handle.get(), caseInfo, &flags, sizeof flags) &&
           (flags & 1u) != 0;
}

} // namespace veltor::platform
