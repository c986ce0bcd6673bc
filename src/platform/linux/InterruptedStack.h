#pragma once

#include "platform/CrashState.h"

#include <ucontext.h>

namespace veltor::platform {

/// The code that a signal interrupted, as its handler's context tells it; for signal handlers.
class InterruptedStack
{
public:
    explicit InterruptedStack(ucontext_t& context) noexcept
        : m_context(context)
    {}

    void takeRegisters(CrashState& crash) const noexcept;

    /// Fills the frames of @p crash, each as soon as it is known, since a damaged stack may break the walk.
    /// A program counter that leads nowhere is followed by its caller: that changes the context, which may
    /// not be returned to.
    void takeFrames(CrashState& crash) noexcept;

    /// Whether the C library's allocator is at work below the signal, perhaps with its lock taken.
    [[nodiscard]] bool isAllocating() const noexcept;

private:
    ucontext_t& m_context;
};

} // namespace veltor::platform
