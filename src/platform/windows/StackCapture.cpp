// The calling thread's return addresses.

#include "platform/StackCapture.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#if defined(_MSC_VER)
#define VELTOR_OWN_FRAME __declspec(noinline)
#else
#define VELTOR_OWN_FRAME __attribute__((noinline))
#endif

namespace veltor::platform {

VELTOR_OWN_FRAME int captureStack(void** frames, int capacity) noexcept
{
    if (capacity <= 0) {
        return 0;
    }
    constexpr DWORD ownFrame = 1;
    return RtlCaptureStackBackTrace(ownFrame, static_cast<DWORD>(capacity), frames, nullptr);
}

} // namespace veltor::platform
