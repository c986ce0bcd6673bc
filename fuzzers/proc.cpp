// Any bytes as the lists of locks, mappings, processes and mounts that the kernel gives: read line by line,
// without a crash, and without a number that is not in the line.

#include "Fuzz.h"

#include "platform/linux/ProcText.h"

using veltor::fuzz::demand;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace veltor::platform;
    const std::string_view text = veltor::fuzz::textOf(bytes, size);
    const auto inside = [text](std::string_view part) {
        return part.empty() ||
               (part.data() >= text.data() && part.data() + part.size() <= text.data() + text.size());
    };
    forEachLine(text, [&](std::string_view line) {
        const auto lock = parseLockLine(line);
        demand(!lock || line.find(std::to_string(lock->file.inode)) != std::string_view::npos,
               "a lock's inode is in its line");
        const auto map = parseMapLine(line);
        const auto mount = parseMountLine(line);
        demand(!map || inside(map->range), "a mapping's range is in its line");
        demand(!mount ||
                   (inside(mount->type) && inside(mount->options) && mount->place.size() <= line.size()),
               "a mount's words are in its line");
    });
    const auto stat = parseProcessStat(text);
    demand(!stat || inside(stat->name), "a process's name is in the text");
    static_cast<void>(parseProcessUser(text));
    return 0;
}
