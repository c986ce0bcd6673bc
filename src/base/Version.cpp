// The version of the library that was loaded.

#include <veltor/Version.h>

#define VELTOR_TEXT_OF(number) #number
#define VELTOR_TEXT(number) VELTOR_TEXT_OF(number)

namespace veltor {

int version() noexcept
{
    return VELTOR_UTILS_VERSION;
}

const char* versionText() noexcept
{
    return VELTOR_TEXT(VELTOR_UTILS_VERSION_MAJOR) "." VELTOR_TEXT(
        VELTOR_UTILS_VERSION_MINOR) "." VELTOR_TEXT(VELTOR_UTILS_VERSION_PATCH);
}

} // namespace veltor
