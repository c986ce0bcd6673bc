#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__x86_64__) || defined(_M_X64)
#define VELTOR_CRC32C_X86 1
#define VELTOR_CRC32C_X86_64 1
// GCC for 64-bit Windows cannot align the stack for spilled vector registers (GCC bug 54412).
#if !defined(_WIN32) || !defined(__GNUC__) || defined(__clang__)
#define VELTOR_CRC32C_AVX512 1
#endif
#elif defined(__i386__) || defined(_M_IX86)
#define VELTOR_CRC32C_X86 1
#elif (defined(__aarch64__) && !defined(__AARCH64EB__)) || defined(_M_ARM64)
#define VELTOR_CRC32C_ARM64 1
#endif

// Instructions beyond the base set are allowed function by function, so that the library still runs
// where they are missing; MSVC allows all of them everywhere.
#ifdef _MSC_VER
#define VELTOR_CRC32C_TARGET(features)
#else
#define VELTOR_CRC32C_TARGET(features) __attribute__((target(features)))
#endif

/// The variants of crc32c(), each with its contract; all but the first need the processor's consent.
namespace veltor::utils::crc32cvariants {

std::uint32_t portable(std::uint32_t previous, const void* data, std::size_t size) noexcept;
#ifdef VELTOR_CRC32C_X86
std::uint32_t sse42(std::uint32_t previous, const void* data, std::size_t size) noexcept;
#endif
#ifdef VELTOR_CRC32C_AVX512
std::uint32_t avx512(std::uint32_t previous, const void* data, std::size_t size) noexcept;
#endif
#ifdef VELTOR_CRC32C_ARM64
std::uint32_t armv8(std::uint32_t previous, const void* data, std::size_t size) noexcept;
#endif

} // namespace veltor::utils::crc32cvariants
