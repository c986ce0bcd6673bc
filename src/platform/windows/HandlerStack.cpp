// A part of the calling thread's stack that stays free for the crash handler.

#include "platform/HandlerStack.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace veltor::platform {

HandlerStack::HandlerStack() noexcept
{
    ULONG size = 128 * 1024;
    m_active = SetThreadStackGuarantee(&size) != 0;
}

HandlerStack::~HandlerStack() = default;

} // namespace veltor::platform
