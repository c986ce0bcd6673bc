// Named locks: who of this process's threads owns one; between processes a locked file decides.

#include "platform/NamedLock.h"

#include "platform/linux/LockFile.h"

#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>

// A named lock is a file of the shared memory's file system; see docs/decisions/named-mutex-file.md.
//
//  1. A process has one record, and one open file, for each name. The file's lock is the process's; which
//     thread has it, and how often, the record says.
//  2. Nothing waits while it holds the table's mutex, and no descriptor is made or closed without it: so a
//     fork, which takes it, finds all records whole and knows every descriptor.
//  3. One thread of a process at most waits in the kernel, the others wait for the record.

namespace veltor::platform {
namespace {

using Clock = std::chrono::steady_clock;
using ThreadId = std::uint64_t;

constexpr const char* Directory = "/dev/shm";

/// The longest time between two looks at a lock that is waited for with a limit.
constexpr std::chrono::milliseconds LongestPause{13};

struct Record
{
    explicit Record(const std::string& path)
        : file(path)
    {}

    LockFile file;
    std::condition_variable changed; // when the record gets free
    std::atomic<ThreadId> owner{0};  // 0: none
    long levels = 0;                 // the owner's alone
    int handles = 0;
    bool awaited = false; // by a thread in the kernel

    [[nodiscard]] bool isFree() const noexcept { return owner == 0 && !awaited; }
};

using Records = std::map<std::string, Record>; // by path
using Entry = Records::value_type;

struct Table
{
    Table();

    std::mutex mutex; // guards the map and what it holds
    Records records;
    pthread_key_t owning = 0; // set in threads that have owned something
    bool works = false;
};

/// Never destroyed: handles may be closed after this source's statics are.
Table& table()
{
    static auto* const table = new Table;
    return *table;
}

/// Not one that the thread library gives, which come again after a thread's end.
ThreadId thisThread() noexcept
{
    static std::atomic<ThreadId> last{0};
    thread_local const ThreadId id = ++last;
    return id;
}

void makeFree(Record& record, void (LockFile::*unlock)() noexcept) noexcept
{
    (record.file.*unlock)();
    record.levels = 0;
    record.owner = 0;
    record.changed.notify_all();
}

void dropUnused(Records& records, const std::string& path) noexcept
{
    const auto found = records.find(path);
    if (found->second.handles == 0 && found->second.owner == 0) {
        records.erase(found);
    }
}

/// At a thread's end, with the number of rounds to wait: other destructors of thread data may still unlock.
void endThread(void* rounds) noexcept
{
    Table& all = table();
    if (const auto left = reinterpret_cast<std::uintptr_t>(rounds); left > 1) {
        ::pthread_setspecific(all.owning, reinterpret_cast<void*>(left - 1));
        return;
    }
    const std::lock_guard guard(all.mutex);
    for (auto next = all.records.begin(); next != all.records.end();) {
        const auto entry = next++;
        if (entry->second.owner == thisThread()) {
            makeFree(entry->second, &LockFile::abandon);
            dropUnused(all.records, entry->first);
        }
    }
}

/// The descriptors that a child inherits are the parent's locks: they would outlive it.
void startChild() noexcept
{
    for (auto& [path, record] : table().records) {
        record.file.close();
        record.owner = 0;
        record.levels = 0;
        record.awaited = false;
        // The threads that wait for it are not here; to destroy it would be to wait for them.
        new (&record.changed) std::condition_variable;
    }
    table().mutex.unlock();
}

Table::Table()
{
    works = ::pthread_key_create(&owning, endThread) == 0 &&
            ::pthread_atfork([] { table().mutex.lock(); }, [] { table().mutex.unlock(); }, startChild) == 0;
}

/// Waiting is a cancellation point, but a lock's functions pass no exceptions on.
class Uncancelled
{
public:
    Uncancelled() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_former); }
    ~Uncancelled() { ::pthread_setcancelstate(m_former, nullptr); }
    Uncancelled(const Uncancelled&) = delete;
    Uncancelled& operator=(const Uncancelled&) = delete;

private:
    int m_former = 0;
};

/// Any bytes of any length become a file name.
std::string pathOf(const std::string& name)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (std::size_t at = 0; at < name.size(); at += 1u << 30) {
        const std::string piece = name.substr(at, 1u << 30);
        hash.addData(QByteArray::fromRawData(piece.data(), static_cast<int>(piece.size())));
    }
    return std::string(Directory) + "/veltor-mutex-2-" + hash.result().toHex().toStdString();
}

WaitResult own(Record& record, LockFile::Outcome outcome) noexcept
{
    constexpr std::uintptr_t rounds = 3; // of the four that every system grants
    record.owner = thisThread();
    record.levels = 1;
    ::pthread_setspecific(table().owning, reinterpret_cast<void*>(rounds));
    return outcome == LockFile::Outcome::Abandoned ? WaitResult::Abandoned : WaitResult::Acquired;
}

/// @return 0 or an error
int waitInKernel(Record& record, std::unique_lock<std::mutex>& guard) noexcept
{
    const int fd = record.file.descriptor();
    record.awaited = true;
    guard.unlock();
    const int error = LockFile::waitFor(fd);
    guard.lock();
    record.awaited = false;
    return error == EBADF ? 0 : error; // closed by the host: the file is opened anew
}

WaitResult acquire(Record& record, std::optional<Clock::time_point> deadline, int& error) noexcept
{
    std::unique_lock guard(table().mutex);
    const auto fail = [&record] {
        record.changed.notify_all(); // others may do better
        return WaitResult::Failed;
    };
    std::chrono::milliseconds pause{1};
    for (;;) {
        auto wake = deadline;
        if (record.isFree()) {
            const LockFile::Outcome outcome = record.file.tryLock(error);
            if (outcome == LockFile::Outcome::Failed) {
                return fail();
            }
            if (outcome != LockFile::Outcome::Busy) {
                return own(record, outcome);
            }
            if (!deadline) {
                error = waitInKernel(record, guard);
                if (error != 0) {
                    return fail();
                }
                continue;
            }
            // The kernel knows no wait with a limit: look again, ever more patiently.
            wake = std::min(*deadline, Clock::now() + pause);
            pause = std::min(pause * 2, LongestPause);
        }
        if (!deadline) {
            record.changed.wait(guard);
        } else if (Clock::now() >= *deadline) {
            return WaitResult::Busy;
        } else {
            record.changed.wait_until(guard, *wake);
        }
    }
}

WaitResult lockEntry(void* handle, std::optional<Clock::time_point> deadline, LockError& error) noexcept
{
    if (!handle) {
        error = {EBADF, {}};
        return WaitResult::Failed;
    }
    auto& [path, record] = *static_cast<Entry*>(handle);
    if (record.owner == thisThread()) {
        ++record.levels;
        return WaitResult::Acquired;
    }
    const Uncancelled uncancelled;
    int code = 0;
    const WaitResult result = acquire(record, deadline, code);
    if (result == WaitResult::Failed) {
        error = {code, path};
    }
    return result;
}

} // namespace

bool NamedLock::open(const std::string& name) noexcept
try {
    close();
    m_error = {};
    const Uncancelled uncancelled;
    const std::string path = pathOf(name);
    Table& all = table();
    const std::lock_guard guard(all.mutex);
    Entry& entry = *all.records.try_emplace(path, path).first;
    Record& record = entry.second;
    const int error = !all.works ? EAGAIN : record.file.descriptor() < 0 ? record.file.open() : 0;
    if (error != 0) {
        dropUnused(all.records, path);
        m_error = {error, path};
        return false;
    }
    ++record.handles;
    m_handle = &entry;
    return true;
} catch (const std::exception&) {
    m_error = {ENOMEM, {}};
    return false;
}

void NamedLock::close() noexcept
{
    if (!m_handle) {
        return;
    }
    const Uncancelled uncancelled;
    Table& all = table();
    const std::lock_guard guard(all.mutex);
    auto& [path, record] = *static_cast<Entry*>(std::exchange(m_handle, nullptr));
    --record.handles;
    dropUnused(all.records, path);
}

WaitResult NamedLock::lock() noexcept
{
    return lockEntry(m_handle, std::nullopt, m_error);
}

WaitResult NamedLock::lockFor(std::chrono::milliseconds limit) noexcept
{
    // Not beyond what the clock can count.
    constexpr std::chrono::milliseconds longest = std::chrono::hours(24 * 365 * 100);
    return lockEntry(m_handle, Clock::now() + std::clamp(limit, std::chrono::milliseconds(0), longest),
                     m_error);
}

bool NamedLock::unlock() noexcept
{
    if (!m_handle) {
        return false;
    }
    Record& record = static_cast<Entry*>(m_handle)->second;
    if (record.owner != thisThread()) {
        return false;
    }
    if (record.levels > 1) {
        --record.levels;
        return true;
    }
    const Uncancelled uncancelled;
    const std::lock_guard guard(table().mutex);
    makeFree(record, &LockFile::release);
    return true;
}

} // namespace veltor::platform
