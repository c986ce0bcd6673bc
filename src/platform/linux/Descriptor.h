#pragma once

#include <unistd.h>

#include <utility>

namespace veltor::platform {

/// Owns an open descriptor; -1 for none.
class Descriptor
{
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int fd) noexcept
        : m_fd(fd)
    {}
    Descriptor(Descriptor&& other) noexcept
        : m_fd(other.release())
    {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(other.release());
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    [[nodiscard]] int get() const noexcept { return m_fd; }
    explicit operator bool() const noexcept { return m_fd >= 0; }
    int release() noexcept { return std::exchange(m_fd, -1); }
    void reset(int fd = -1) noexcept
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

} // namespace veltor::platform
