// The crash file, made at the crash.

#include "platform/CrashFile.h"

#include "platform/CrashFileName.h"
#include "platform/CrashText.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace veltor::platform {
namespace {

constexpr int maxNames = 100;
constexpr std::size_t maxPath = 4096;

struct Prepared
{
    CrashFilePlan plan;
    std::unique_ptr<const Prepared> former; // never freed: a crash may be at work with it
};

std::mutex prepareLock; // guards newest
std::unique_ptr<const Prepared> newest;
std::atomic<const Prepared*> current{nullptr};

FixedText<wchar_t, maxPath> path;
char shownPath[3 * maxPath + 1];

HANDLE createNew(const wchar_t* name, DWORD flags) noexcept
{
    return CreateFileW(name, GENERIC_WRITE | (flags & FILE_FLAG_DELETE_ON_CLOSE ? DELETE : 0), 0, nullptr,
                       CREATE_NEW, FILE_ATTRIBUTE_NORMAL | flags, nullptr);
}

HANDLE createUnderNewName(const CrashFilePlan& plan, const CrashState& crash) noexcept
{
    path.cut(0);
    path.add(plan.directory.c_str());
    path.add(L'\\');
    addCrashFileName(path, plan.nameTemplate.c_str(), crash);
    const std::size_t size = path.size();
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < maxNames && path.isWhole(); ++attempt) {
        path.cut(size);
        if (attempt > 0) {
            path.add(L'.');
            path.addDecimal(attempt, 1);
        }
        file = createNew(path.data(), 0);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) {
            break;
        }
    }
    return file;
}

const char* shown() noexcept
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), shownPath,
                                         static_cast<int>(sizeof shownPath) - 1, nullptr, nullptr);
    shownPath[size] = '\0';
    return shownPath;
}

} // namespace

std::error_code setCrashFile(CrashFilePlan plan)
{
    auto next = std::make_unique<Prepared>();
    next->plan = std::move(plan);
    const bool none = next->plan.nameTemplate.empty();
    if (!none) {
        const std::filesystem::path probe =
            next->plan.directory / (L".crash-" + std::to_wstring(GetCurrentProcessId()) + L".probe");
        HANDLE const file = createNew(probe.c_str(), FILE_FLAG_DELETE_ON_CLOSE);
        if (file == INVALID_HANDLE_VALUE) {
            return {static_cast<int>(GetLastError()), std::system_category()};
        }
        CloseHandle(file);
    }
    const std::lock_guard lock(prepareLock);
    current = none ? nullptr : next.get();
    next->former = std::move(newest);
    newest = std::move(next);
    return {};
}

void writeCrashFile(const CrashState& crash, RawText& words) noexcept
{
    const Prepared* const prepared = current;
    if (!prepared) {
        return;
    }
    const CrashFilePlan& plan = prepared->plan;
    HANDLE const file = createUnderNewName(plan, crash);
    bool written = false;
    DWORD reason = GetLastError();
    if (file != INVALID_HANDLE_VALUE) {
        RawText out(reinterpret_cast<RawHandle>(file));
        writeJson(out, crash,
                  {plan.application.c_str(), plan.applicationVersion.c_str(), plan.libraryVersion.c_str()});
        written = out.flush();
        reason = GetLastError();
        CloseHandle(file);
        if (!written) {
            DeleteFileW(path.data());
        }
    }
    if (written) {
        words.text("crash file: ").text(shown()).text("\n");
    } else {
        words.text("no crash file ")
            .text(shown())
            .text(": error ")
            .decimal(static_cast<long long>(reason))
            .text("\n");
    }
}

bool isOwnFile(const std::filesystem::path& file) noexcept
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

} // namespace veltor::platform
