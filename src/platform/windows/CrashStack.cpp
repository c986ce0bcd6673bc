// Registers and frames of a thread from the context of its exception.

#include "platform/windows/CrashStack.h"

#include "platform/CrashModules.h"

#include <cstddef>
#include <iterator>

namespace veltor::platform {
namespace {

struct RegisterPlace
{
    const char* name;
    std::size_t offset;
};

#if defined(_WIN64)
using Word = DWORD64;
constexpr RegisterPlace registerPlaces[] = {
    {"rip", offsetof(CONTEXT, Rip)}, {"rsp", offsetof(CONTEXT, Rsp)}, {"rbp", offsetof(CONTEXT, Rbp)},
    {"rax", offsetof(CONTEXT, Rax)}, {"rbx", offsetof(CONTEXT, Rbx)}, {"rcx", offsetof(CONTEXT, Rcx)},
    {"rdx", offsetof(CONTEXT, Rdx)}, {"rsi", offsetof(CONTEXT, Rsi)}, {"rdi", offsetof(CONTEXT, Rdi)},
    {"r8", offsetof(CONTEXT, R8)},   {"r9", offsetof(CONTEXT, R9)},   {"r10", offsetof(CONTEXT, R10)},
    {"r11", offsetof(CONTEXT, R11)}, {"r12", offsetof(CONTEXT, R12)}, {"r13", offsetof(CONTEXT, R13)},
    {"r14", offsetof(CONTEXT, R14)}, {"r15", offsetof(CONTEXT, R15)},
};
#else
using Word = DWORD;
constexpr RegisterPlace registerPlaces[] = {
    {"eip", offsetof(CONTEXT, Eip)}, {"esp", offsetof(CONTEXT, Esp)}, {"ebp", offsetof(CONTEXT, Ebp)},
    {"eax", offsetof(CONTEXT, Eax)}, {"ebx", offsetof(CONTEXT, Ebx)}, {"ecx", offsetof(CONTEXT, Ecx)},
    {"edx", offsetof(CONTEXT, Edx)}, {"esi", offsetof(CONTEXT, Esi)}, {"edi", offsetof(CONTEXT, Edi)},
};
#endif

static_assert(std::size(registerPlaces) <= CrashState::maxRegisters);

bool readWords(Word address, Word* words, int count) noexcept
{
    SIZE_T done = 0;
    const SIZE_T size = static_cast<SIZE_T>(count) * sizeof(Word);
    return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(address), words, size,
                             &done) &&
           done == size;
}

/// False when there is no room for more.
bool addFrame(Word address, CrashState& crash) noexcept
{
    const int count = crash.frameCount;
    if (address == 0 && count > 0) {
        return false; // above the outermost function
    }
    crash.frames[count] = reinterpret_cast<void*>(address);
    crash.frameCount = count + 1;
    return count + 1 < CrashState::maxFrames;
}

} // namespace

void takeRegisters(const CONTEXT& context, CrashState& crash) noexcept
{
    for (const RegisterPlace& place : registerPlaces) {
        const void* const value = reinterpret_cast<const char*>(&context) + place.offset;
        crash.registers[crash.registerCount++] = {place.name, *static_cast<const Word*>(value)};
    }
}

#if defined(_WIN64)
void followStack(const CONTEXT& context, CrashState& crash) noexcept
{
    CONTEXT at = context;
    while (addFrame(at.Rip, crash)) {
        DWORD64 base = 0;
        if (PRUNTIME_FUNCTION const function = RtlLookupFunctionEntry(at.Rip, &base, nullptr)) {
            void* handlerData = nullptr;
            DWORD64 frame = 0;
            RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, at.Rip, function, &at, &handlerData, &frame, nullptr);
        } else { // a function that calls none, or no function at all: its caller's address is on top
            if (!readWords(at.Rsp, &at.Rip, 1)) {
                return;
            }
            at.Rsp += sizeof(Word);
        }
    }
}
#else
void followStack(const CONTEXT& context, CrashState& crash) noexcept
{
    static CrashModule module; // too large for a stack that may be nearly full
    Word caller = 0;
    if (!addFrame(context.Eip, crash) || (!findCrashModule(context.Eip, module) &&
                                          readWords(context.Esp, &caller, 1) && !addFrame(caller, crash))) {
        return;
    }
    Word frame = context.Ebp;
    Word link[2]; // the caller's frame and the address to return to
    while (frame % sizeof(Word) == 0 && readWords(frame, link, 2) && addFrame(link[1], crash)) {
        if (link[0] <= frame) {
            return;
        }
        frame = link[0];
    }
}
#endif

} // namespace veltor::platform
