#pragma once

// What the targets share: the demand that fails, and an input in lines.

#include <QtCore/QString>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace veltor::fuzz {

/// Ends the run when something does not hold; what is said of it stands before the stack.
inline void demand(bool holds, const char* what, const QString& detail = {})
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s %s\n", what, qUtf8Printable(detail));
        std::abort();
    }
}

inline std::string_view textOf(const uint8_t* bytes, size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}

inline QString decoded(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// Takes the first line off; what follows the last one is empty.
inline std::string_view takeLine(std::string_view& rest)
{
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return line;
}

} // namespace veltor::fuzz
