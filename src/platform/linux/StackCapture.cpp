// The calling thread's return addresses by the runtime's unwinder.

#include "platform/StackCapture.h"

#include <unwind.h>

namespace veltor::platform {
namespace {

struct Walk
{
    void** frames;
    int capacity;
    int count = -1; // the frame of captureStack() itself comes first and is left out
};

_Unwind_Reason_Code visit(_Unwind_Context* context, void* argument)
{
    auto& walk = *static_cast<Walk*>(argument);
    if (walk.count >= 0) {
        walk.frames[walk.count] = reinterpret_cast<void*>(_Unwind_GetIP(context));
    }
    ++walk.count;
    return walk.count == walk.capacity ? _URC_END_OF_STACK : _URC_NO_REASON;
}

} // namespace

[[gnu::noinline]] int captureStack(void** frames, int capacity) noexcept
{
    if (capacity <= 0) {
        return 0;
    }
    Walk walk{frames, capacity};
    _Unwind_Backtrace(visit, &walk);
    // Above the outermost function the unwinder may see a null return address.
    if (walk.count > 0 && !frames[walk.count - 1]) {
        --walk.count;
    }
    return walk.count > 0 ? walk.count : 0;
}

} // namespace veltor::platform
