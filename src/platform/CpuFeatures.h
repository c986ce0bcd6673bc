#pragma once

namespace veltor::platform {

/// Instruction sets beyond the processor family's base that this process may execute: the processor
/// has them and the operating system keeps their registers.
struct CpuFeatures
{
    bool sse42 = false;
    bool avx512Clmul = false; ///< AVX-512F, VPCLMULQDQ and PCLMULQDQ together.
    bool armCrc32 = false;
};

/// Asks the processor or the operating system anew each time: callers keep the answer. Thread-safe.
CpuFeatures cpuFeatures() noexcept;

/// The operating system's word on ARMv8's CRC instructions, which user code cannot probe itself;
/// false on other processors. Thread-safe.
bool systemReportsArmCrc32() noexcept;

} // namespace veltor::platform
