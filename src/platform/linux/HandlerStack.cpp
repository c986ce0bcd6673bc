// An alternate signal stack for the calling thread.

#include "platform/HandlerStack.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>

namespace veltor::platform {
namespace {

// Symbol look-up and logging need some 50 KiB, sanitizers several times that.
constexpr std::size_t stackSize = std::size_t{1} << 20;

std::size_t guardSize() noexcept
{
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

HandlerStack::HandlerStack() noexcept
{
    void* const memory = mmap(nullptr, guardSize() + stackSize, PROT_NONE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        return;
    }
    m_memory = memory;
    stack_t former{};
    stack_t stack{};
    stack.ss_sp = static_cast<char*>(memory) + guardSize();
    stack.ss_size = stackSize;
    m_active =
        mprotect(stack.ss_sp, stackSize, PROT_READ | PROT_WRITE) == 0 && sigaltstack(&stack, &former) == 0;
    if (m_active && (former.ss_flags & SS_DISABLE) == 0) {
        m_formerStack = former.ss_sp;
        m_formerSize = former.ss_size;
    }
}

HandlerStack::~HandlerStack()
{
    if (!m_memory) {
        return;
    }
    stack_t current{};
    sigaltstack(nullptr, &current);
    if (m_active && current.ss_sp == static_cast<char*>(m_memory) + guardSize()) {
        if (current.ss_flags & SS_ONSTACK) {
            return; // the process exits from the crash handler, which stands on this very stack
        }
        stack_t former{};
        former.ss_sp = m_formerStack;
        former.ss_size = m_formerSize;
        former.ss_flags = m_formerStack ? 0 : SS_DISABLE;
        sigaltstack(&former, nullptr);
    }
    munmap(m_memory, guardSize() + stackSize);
}

} // namespace veltor::platform
