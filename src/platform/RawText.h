#pragma once

#include <cstddef>
#include <cstdint>

namespace veltor::platform {

/// A descriptor, or on Windows a handle; -1 is none on both.
using RawHandle = std::intptr_t;
constexpr RawHandle noHandle = -1;

/// Writes all bytes, in pieces if the system wants it so; false when it refused. A signal handler may call
/// it.
bool writeRaw(RawHandle handle, const char* bytes, std::size_t size) noexcept;

/// Text on its way to a handle, collected in a buffer of its own: no allocation, no lock, no locale, so that
/// a signal handler may use it. After a refused write the rest is dropped.
class RawText
{
public:
    explicit RawText(RawHandle handle) noexcept
        : m_handle(handle)
    {}
    ~RawText() { flush(); }
    RawText(const RawText&) = delete;
    RawText& operator=(const RawText&) = delete;

    RawText& text(const char* text) noexcept;
    RawText& decimal(long long number) noexcept;
    /// With at least so many digits.
    RawText& decimal(long long number, int digits) noexcept;
    /// "0x1234abcd".
    RawText& hex(std::uint64_t number) noexcept;
    /// Two digits a byte.
    RawText& hexBytes(const unsigned char* bytes, int count) noexcept;
    /// A JSON string in quotation marks, of UTF-8 in which each wrong byte becomes U+FFFD.
    RawText& json(const char* text) noexcept;

    /// False when anything so far could not be written.
    bool flush() noexcept;
    [[nodiscard]] std::uint64_t written() const noexcept { return m_written; }

private:
    void put(char character) noexcept;

    RawHandle m_handle;
    bool m_good = true;
    std::size_t m_size = 0;
    std::uint64_t m_written = 0;
    char m_buffer[512];
};

} // namespace veltor::platform
