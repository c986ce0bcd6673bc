// What Linux tells of an ARM processor.

#include "platform/CpuFeatures.h"

#ifdef __aarch64__
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

namespace veltor::platform {

bool systemReportsArmCrc32() noexcept
{
#ifdef __aarch64__
    return (::getauxval(AT_HWCAP) & HWCAP_CRC32) != 0;
#else
    return false;
#endif
}

} // namespace veltor::platform
