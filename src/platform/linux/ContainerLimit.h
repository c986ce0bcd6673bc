#pragma once

#include <cstdint>
#include <string>

namespace veltor::platform {

/// The smallest memory limit in bytes that the control groups of a process set; 0 when none does.
///
/// @param membership  file that lists the process's groups, as /proc/self/cgroup
/// @param root  directory at which the groups are mounted; both generations of them are understood
/// @param machineBytes  a limit that is not below the machine's memory counts as none
std::uint64_t containerMemoryLimit(const std::string& membership, const std::string& root,
                                   std::uint64_t machineBytes);

} // namespace veltor::platform
