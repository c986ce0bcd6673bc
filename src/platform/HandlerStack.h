#pragma once

#include <cstddef>

namespace veltor::platform {

/// Room for the crash handler on a thread whose own stack is full, for as long as the object lives: made
/// first thing in a thread's run(), destroyed on the same thread. On Linux an alternate signal stack of 1 MiB
/// with a guard page, of which only touched pages cost memory; the thread's former one is put back at the
/// end. On Windows a part of the thread's own stack that is kept free until the thread ends. Where there is
/// no memory left for it the thread runs without.
class HandlerStack
{
public:
    HandlerStack() noexcept;
    ~HandlerStack();
    HandlerStack(const HandlerStack&) = delete;
    HandlerStack& operator=(const HandlerStack&) = delete;

    /// Whether the system granted it.
    [[nodiscard]] bool isActive() const noexcept { return m_active; }

private:
    bool m_active = false;
    void* m_memory = nullptr;
    void* m_formerStack = nullptr;
    std::size_t m_formerSize = 0;
};

} // namespace veltor::platform
