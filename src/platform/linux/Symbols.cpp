// Names of this process's code, from the symbol tables of the files that are mapped.

#include "platform/Symbols.h"

#include "platform/linux/SymbolName.h"

#include <elfutils/libdwfl.h>
#include <link.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <unordered_map>

namespace veltor::platform {
namespace {

constexpr std::size_t maxRemembered = 4096;

std::mutex engineLock; // guards the engine; never destroyed, as crashes happen at exit as well
std::atomic<bool> engineReleased{false};
thread_local bool insideEngine = false;

/// How often libraries were loaded and unloaded so far.
struct Loads
{
    unsigned long long added = 0;
    unsigned long long removed = 0;
    bool operator==(const Loads& other) const noexcept
    {
        return added == other.added && removed == other.removed;
    }
};

Loads countLoads() noexcept
{
    Loads loads;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* argument) {
            *static_cast<Loads*>(argument) = {info->dlpi_adds, info->dlpi_subs};
            return 1; // the counts are the same with every module
        },
        &loads);
    return loads;
}

/// libdw's view of this process, with a memo: stacks repeat themselves.
class Engine
{
public:
    Engine() noexcept
        : m_session(dwfl_begin(&m_callbacks))
    {}

    ~Engine()
    {
        // After a crash inside of libdw there is nothing left to tidy up, and the lock is held.
        if (insideEngine) {
            return;
        }
        const std::lock_guard lock(engineLock);
        engineReleased = true;
        dwfl_end(m_session);
    }

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    const CodeLocation& locate(std::uint64_t address)
    {
        refresh();
        if (const auto known = m_memo.find(address); known != m_memo.end()) {
            return known->second;
        }
        if (m_memo.size() >= maxRemembered) {
            m_memo.clear();
        }
        return m_memo.emplace(address, lookUp(address)).first->second;
    }

private:
    void refresh()
    {
        const Loads loads = countLoads();
        if (!m_session || loads == m_loads) {
            return;
        }
        m_memo.clear();
        m_loads = loads;
        dwfl_report_begin(m_session);
        dwfl_linux_proc_report(m_session, getpid());
        dwfl_report_end(m_session, nullptr, nullptr);
    }

    CodeLocation lookUp(std::uint64_t address) const
    {
        CodeLocation location;
        Dwfl_Module* const module = m_session ? dwfl_addrmodule(m_session, address) : nullptr;
        if (!module) {
            return location;
        }
        Dwarf_Addr start = 0;
        Dwarf_Addr end = 0;
        const char* const file =
            dwfl_module_info(module, nullptr, &start, &end, nullptr, nullptr, nullptr, nullptr);
        // To libdw the last module reaches up to the end of all addresses.
        if (address < start || address >= end) {
            return location;
        }
        if (file) {
            location.module = file;
        }
        if (const char* name = dwfl_module_addrname(module, address)) {
            location.symbol = readableName(name);
        }
        return location;
    }

    // No search path: only the files that are mapped, with no separate debug information.
    Dwfl_Callbacks m_callbacks = {dwfl_linux_proc_find_elf, noDebugInfo, nullptr, nullptr};
    Dwfl* m_session;
    Loads m_loads;
    std::unordered_map<std::uint64_t, CodeLocation> m_memo;

    static int noDebugInfo(Dwfl_Module*, void**, const char*, Dwarf_Addr, const char*, const char*, GElf_Word,
                           char**) noexcept
    {
        return -1;
    }
};

struct InsideEngine
{
    InsideEngine() noexcept { insideEngine = true; }
    ~InsideEngine() { insideEngine = false; }
    InsideEngine(const InsideEngine&) = delete;
    InsideEngine& operator=(const InsideEngine&) = delete;
};

} // namespace

CodeLocation locateCode(std::uint64_t address)
{
    if (insideEngine) {
        return {};
    }
    const InsideEngine inside;
    const std::lock_guard lock(engineLock);
    if (engineReleased) {
        return {};
    }
    static Engine engine;
    return engine.locate(address);
}

} // namespace veltor::platform
