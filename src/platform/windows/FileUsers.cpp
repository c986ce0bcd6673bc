// Who uses a file: the Restart Manager knows. Its library is loaded when first asked, since not every system
// has it, and it tells of files only.
#include "platform/FileUsers.h"

#include "platform/windows/Handle.h"

#include <io.h>
#include <restartmanager.h>

#include <cstring>

namespace veltor::platform {
namespace {

/// The functions of the Restart Manager.
struct Manager
{
    HMODULE library = LoadLibraryExW(L"rstrtmgr.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    decltype(&RmStartSession) start = nullptr;
    decltype(&RmRegisterResources) add = nullptr;
    decltype(&RmGetList) list = nullptr;
    decltype(&RmEndSession) end = nullptr;

    Manager()
    {
        load(start, "RmStartSession");
        load(add, "RmRegisterResources");
        load(list, "RmGetList");
        load(end, "RmEndSession");
    }

    [[nodiscard]] bool isThere() const { return start && add && list && end; }

private:
    template <typename Function>
    void load(Function& function, const char* name)
    {
        if (library) {
            const FARPROC address = GetProcAddress(library, name);
            static_assert(sizeof function == sizeof address);
            std::memcpy(&function, &address, sizeof function);
        }
    }
};

const Manager& manager()
{
    static const Manager manager; // the library stays loaded
    return manager;
}

std::int64_t milliseconds(FILETIME time)
{
    // From tenths of microseconds since 1601.
    const auto ticks = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return ticks == 0 ? 0 : static_cast<std::int64_t>(ticks / 10000) - 11644473600000;
}

std::wstring userOf(DWORD pid)
{
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
    HANDLE opened = nullptr;
    if (!process || !OpenProcessToken(process.get(), TOKEN_QUERY, &opened)) {
        return {};
    }
    const Handle token(opened);
    alignas(TOKEN_USER) unsigned char user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = 0;
    if (!GetTokenInformation(token.get(), TokenUser, user, sizeof user, &size)) {
        return {};
    }
    TOKEN_USER record;
    std::memcpy(&record, user, sizeof record);
    wchar_t name[257];
    wchar_t domain[257];
    DWORD nameSize = 257;
    DWORD domainSize = 257;
    SID_NAME_USE use{};
    return LookupAccountSidW(nullptr, record.User.Sid, name, &nameSize, domain, &domainSize, &use)
               ? std::wstring(name, nameSize)
               : std::wstring();
}

/// A session of the Restart Manager with one file in it.
class Session
{
public:
    explicit Session(const std::wstring& path)
    {
        wchar_t key[CCH_RM_SESSION_KEY + 1] = {};
        const wchar_t* file = path.c_str();
        m_error = manager().start(&m_session, 0, key);
        m_started = m_error == ERROR_SUCCESS;
        if (m_started) {
            m_error = manager().add(m_session, 1, &file, 0, nullptr, 0, nullptr);
        }
    }
    ~Session()
    {
        if (m_started) {
            manager().end(m_session);
        }
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    std::vector<RM_PROCESS_INFO> list()
    {
        std::vector<RM_PROCESS_INFO> processes;
        UINT needed = 0;
        UINT count = 0;
        DWORD reasons = 0;
        // Others may come between two calls.
        for (int attempt = 0; m_error == ERROR_SUCCESS && attempt < 8; ++attempt) {
            count = static_cast<UINT>(processes.size());
            const DWORD error = manager().list(m_session, &needed, &count, processes.data(), &reasons);
            if (error != ERROR_MORE_DATA) {
                m_error = error;
                break;
            }
            processes.resize(needed + 4u);
        }
        processes.resize(m_error == ERROR_SUCCESS ? count : 0);
        return processes;
    }

    [[nodiscard]] DWORD error() const { return m_error; }

private:
    DWORD m_session = 0;
    DWORD m_error = ERROR_SUCCESS;
    bool m_started = false;
};

} // namespace

FileUsers fileUsers(const NativeString& path)
{
    FileUsers result;
    if (!manager().isThere()) {
        result.error = systemError(ERROR_CALL_NOT_IMPLEMENTED);
        return result;
    }
    Session session(path);
    for (const RM_PROCESS_INFO& process : session.list()) {
        FileUser user;
        user.pid = process.Process.dwProcessId;
        user.name = process.strAppName;
        user.user = userOf(process.Process.dwProcessId);
        user.startMs = milliseconds(process.Process.ProcessStartTime);
        user.uses = UseUntold;
        result.users.push_back(std::move(user));
    }
    if (session.error() != ERROR_SUCCESS) {
        result.error = systemError(session.error());
    }
    return result;
}

FileUsers lockHolders(int fd)
{
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(fd)); // NOLINT: the system's own convention
    std::wstring path(32768, L'\0');
    const DWORD size = GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()), 0);
    if (size == 0 || size >= path.size()) {
        FileUsers nothing;
        nothing.error = systemError();
        return nothing;
    }
    path.resize(size);
    return fileUsers(path);
}

} // namespace veltor::platform
