// The own account: who it is, and what belongs to it.
#include "platform/windows/Account.h"

#include <aclapi.h>
#include <sddl.h>

namespace veltor::platform {

std::vector<unsigned char> tokenRecord(TOKEN_INFORMATION_CLASS which)
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) {
        return {};
    }
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), which, nullptr, 0, &size);
    std::vector<unsigned char> record(size);
    if (size == 0 || !GetTokenInformation(token.get(), which, record.data(), size, &size)) {
        record.clear();
    }
    return record; // moved, never copied: it points into itself
}

std::wstring ownUserOnly()
{
    std::vector<unsigned char> user = tokenRecord(TokenUser);
    wchar_t* text = nullptr;
    if (user.empty() ||
        !ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text)) {
        return {};
    }
    const std::wstring sid = text;
    LocalFree(text);
    return L"D:P(A;OICI;FA;;;" + sid + L")(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";
}

bool isOwn(HANDLE file)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                        &descriptor) != ERROR_SUCCESS) {
        return false;
    }
    std::vector<unsigned char> user = tokenRecord(TokenUser);
    std::vector<unsigned char> maker = tokenRecord(TokenOwner);
    const bool own =
        (!user.empty() && EqualSid(owner, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid)) ||
        (!maker.empty() && EqualSid(owner, reinterpret_cast<TOKEN_OWNER*>(maker.data())->Owner));
    LocalFree(descriptor);
    return own;
}

} // namespace veltor::platform
