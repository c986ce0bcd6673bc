// The memory limit that the process's control group sets.

#include "platform/linux/ContainerLimit.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace veltor::platform {
namespace {

constexpr std::uint64_t noLimit = std::numeric_limits<std::uint64_t>::max();

/// A group's own limit; "max" and a file that is missing are none.
std::uint64_t limitInFile(const std::string& path)
{
    std::ifstream file(path);
    std::uint64_t limit = 0;
    return file >> limit ? limit : noLimit;
}

/// A group is bound by those above it as well. Directories that do not exist are passed over: inside a
/// container the group may be named by its path on the machine.
std::uint64_t smallestLimit(const std::string& mount, std::string group, const char* file)
{
    std::uint64_t smallest = noLimit;
    while (true) {
        smallest = std::min(smallest, limitInFile(mount + group + '/' + file));
        const std::size_t slash = group.rfind('/');
        if (slash == std::string::npos) {
            return smallest;
        }
        group.resize(slash);
    }
}

bool namesMemory(const std::string& controllers)
{
    return (',' + controllers + ',').find(",memory,") != std::string::npos;
}

} // namespace

std::uint64_t containerMemoryLimit(const std::string& membership, const std::string& root,
                                   std::uint64_t machineBytes)
{
    std::uint64_t limit = noLimit;
    std::ifstream file(membership);
    // Each line is "number:controllers:group"; the second generation's has no controllers.
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = first == std::string::npos ? first : line.find(':', first + 1);
        if (second == std::string::npos) {
            continue;
        }
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const std::string group = line.substr(second + 1);
        if (controllers.empty()) {
            limit = std::min(limit, smallestLimit(root, group, "memory.max"));
        } else if (namesMemory(controllers)) {
            limit = std::min(limit, smallestLimit(root + "/memory", group, "memory.limit_in_bytes"));
        }
    }
    return limit < machineBytes ? limit : 0;
}

} // namespace veltor::platform
