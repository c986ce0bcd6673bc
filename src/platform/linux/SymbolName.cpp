// Demangled names.

#include "platform/linux/SymbolName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace veltor::platform {

std::string readableName(const char* name)
{
    constexpr std::size_t maxSymbolLength = 200;
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    std::string text = demangled ? demangled.get() : name;
    if (text.size() > maxSymbolLength) {
        std::size_t end = maxSymbolLength;
        // Not within a UTF-8 sequence.
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
            --end;
        }
        text.resize(end);
    }
    return text;
}

} // namespace veltor::platform
