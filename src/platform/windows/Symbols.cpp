// Names of functions by DbgHelp.

#include "platform/Symbols.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <dbghelp.h>

#include <algorithm>
#include <cstddef>

namespace veltor::platform {
namespace {

constexpr ULONG maxSymbolLength = 200;
constexpr DWORD maxModuleLength = 260;

class Engine
{
public:
    Engine() noexcept { SymInitialize(GetCurrentProcess(), nullptr, TRUE); }
    ~Engine() { SymCleanup(GetCurrentProcess()); }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
};

std::string symbolAt(std::uint64_t address)
{
    alignas(SYMBOL_INFO) char memory[sizeof(SYMBOL_INFO) + maxSymbolLength] = {};
    auto* const symbol = reinterpret_cast<SYMBOL_INFO*>(memory);
    symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
    symbol->MaxNameLen = maxSymbolLength;
    if (!SymFromAddr(GetCurrentProcess(), address, nullptr, symbol)) {
        return {};
    }
    // The length reported is that of the whole name, which may have been cut.
    return {symbol->Name, std::min(symbol->NameLen, maxSymbolLength - 1)};
}

std::wstring moduleAt(std::uint64_t address)
{
    const DWORD64 base = SymGetModuleBase64(GetCurrentProcess(), address);
    if (base == 0) {
        return {};
    }
    wchar_t file[maxModuleLength];
    const auto module = reinterpret_cast<HMODULE>(static_cast<std::uintptr_t>(base));
    return {file, GetModuleFileNameW(module, file, maxModuleLength)};
}

} // namespace

CodeLocation locateCode(std::uint64_t address)
{
    static const Engine engine;
    return {symbolAt(address), moduleAt(address)};
}

} // namespace veltor::platform
