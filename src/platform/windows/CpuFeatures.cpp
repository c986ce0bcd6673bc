// What Windows tells of an ARM processor.

#include "platform/CpuFeatures.h"

#if defined(_M_ARM64) || defined(__aarch64__)
#include <windows.h>
#endif

namespace veltor::platform {

bool systemReportsArmCrc32() noexcept
{
#if defined(_M_ARM64) || defined(__aarch64__)
    return ::IsProcessorFeaturePresent(PF_ARM_V8_CRC32_INSTRUCTIONS_AVAILABLE) != 0;
#else
    return false;
#endif
}

} // namespace veltor::platform
