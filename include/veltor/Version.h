#pragma once

#include <veltor/Export.h>

/// The version, by the rules of semantic versioning: a new major number breaks callers, and renames the
/// library file; a new minor number adds; a new patch number mends. This header is the one home of the
/// three numbers: the build, the packages and the tool take them from here.
/// @{
#define VELTOR_UTILS_VERSION_MAJOR 1
#define VELTOR_UTILS_VERSION_MINOR 0
#define VELTOR_UTILS_VERSION_PATCH 0
/// @}

/// Three numbers as one that can be compared, in the preprocessor too; minor and patch are below 256.
#define VELTOR_UTILS_VERSION_CHECK(major, minor, patch) (((major) << 16) | ((minor) << 8) | (patch))

/// The version of the headers that the caller is compiled with, as one number:
///
///     #if VELTOR_UTILS_VERSION >= VELTOR_UTILS_VERSION_CHECK(1, 2, 0)
#define VELTOR_UTILS_VERSION                                                                                 \
    VELTOR_UTILS_VERSION_CHECK(VELTOR_UTILS_VERSION_MAJOR, VELTOR_UTILS_VERSION_MINOR,                       \
                               VELTOR_UTILS_VERSION_PATCH)

namespace veltor {

/// The version of the library that was loaded, as VELTOR_UTILS_VERSION counts it. It may be older or newer
/// than the headers, where the caller was not built on the machine on which it runs. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT int version() noexcept;

/// The same as text, "1.0.0"; the string lives as long as the library is loaded. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT const char* versionText() noexcept;

} // namespace veltor
