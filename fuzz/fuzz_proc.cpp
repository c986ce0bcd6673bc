// Any bytes as the lists of locks, mappings, processes and mounts that the kernel gives: read line by line,
// without a crash, and without a number that is not in the line.

#include "platform/linux/ProcText.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace veltor::platform;
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const auto inside = [text](std::string_view part) {
        return part.empty() ||
               (part.data() >= text.data() && part.data() + part.size() <= text.data() + text.size());
    };
    forEachLine(text, [&](std::string_view line) {
        if (const auto lock = parseLockLine(line);
            lock && line.find(std::to_string(lock->file.inode)) == std::string_view::npos) {
            std::abort();
        }
        const auto map = parseMapLine(line);
        const auto mount = parseMountLine(line);
        if ((map && !inside(map->range)) || (mount && (!inside(mount->type) || !inside(mount->options) ||
                                                       mount->place.size() > line.size()))) {
            std::abort();
        }
    });
    const auto stat = parseProcessStat(text);
    if (stat && !inside(stat->name)) {
        std::abort();
    }
    static_cast<void>(parseProcessUser(text));
    return 0;
}
