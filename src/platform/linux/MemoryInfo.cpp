// The machine's memory, out of /proc/meminfo.

#include "platform/MemoryInfo.h"
#include "platform/linux/ContainerLimit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string_view>

namespace veltor::platform {
namespace {

/// The value of a line "name:   1234 kB", in bytes.
std::optional<std::uint64_t> meminfoBytes(std::string_view text, std::string_view name)
{
    std::size_t at = text.find(name);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    at = text.find_first_not_of(' ', at + name.size());
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::uint64_t kibibytes = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + at, end, kibibytes);
    // A number that the end of the text cuts short is none.
    if (parsed.ec != std::errc() || parsed.ptr == end) {
        return std::nullopt;
    }
    return kibibytes << 10;
}

/// Both figures stand within the first lines, so that a short read of the file serves.
std::optional<PhysicalMemory> readMeminfo(int fd)
{
    char buffer[256];
    ssize_t size = 0;
    do {
        size = ::pread(fd, buffer, sizeof buffer, 0);
    } while (size < 0 && errno == EINTR);
    if (size <= 0) {
        return std::nullopt;
    }
    const std::string_view text(buffer, static_cast<std::size_t>(size));
    const auto total = meminfoBytes(text, "MemTotal:");
    const auto available = meminfoBytes(text, "\nMemAvailable:");
    if (!total || !available) {
        return std::nullopt;
    }
    return PhysicalMemory{*total, *available};
}

int openMeminfo() noexcept
{
    return ::open("/proc/meminfo", O_RDONLY | O_CLOEXEC);
}

/// Opening and closing cost as much as reading does: the file stays open until the library is unloaded. A
/// host that closes all descriptors closes this one too, and may use its number for a file of its own.
class KeptMeminfo
{
public:
    KeptMeminfo() noexcept
        : m_fd(openMeminfo())
    {
        m_known = ::fstat(m_fd, &m_file) == 0;
    }
    ~KeptMeminfo()
    {
        if (isOurs()) {
            ::close(m_fd);
        }
    }
    KeptMeminfo(const KeptMeminfo&) = delete;
    KeptMeminfo& operator=(const KeptMeminfo&) = delete;

    [[nodiscard]] std::optional<PhysicalMemory> read() const
    {
        return isOurs() ? readMeminfo(m_fd) : std::nullopt;
    }

private:
    [[nodiscard]] bool isOurs() const noexcept
    {
        struct stat now = {};
        return m_known && ::fstat(m_fd, &now) == 0 && now.st_dev == m_file.st_dev &&
               now.st_ino == m_file.st_ino;
    }

    int m_fd;
    bool m_known = false;
    struct stat m_file = {};
};

} // namespace

PhysicalMemory queryPhysicalMemory() noexcept
{
    static const KeptMeminfo kept;
    if (const auto memory = kept.read()) {
        return *memory;
    }
    if (const int fd = openMeminfo(); fd >= 0) {
        const auto memory = readMeminfo(fd);
        ::close(fd);
        if (memory) {
            return *memory;
        }
    }
    // No /proc, or a kernel without its own estimate: what is free at once.
    struct sysinfo info;
    if (::sysinfo(&info) != 0) {
        return {};
    }
    const std::uint64_t unit = info.mem_unit;
    return {info.totalram * unit, (std::uint64_t{info.freeram} + info.bufferram) * unit};
}

std::uint64_t containerMemoryLimit()
{
    return containerMemoryLimit("/proc/self/cgroup", "/sys/fs/cgroup", physicalMemory().total);
}

} // namespace veltor::platform
