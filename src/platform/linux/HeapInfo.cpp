// The state of the C library's heaps.

#include "platform/HeapInfo.h"

#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>

#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#endif

namespace veltor::platform {

#if defined(__GLIBC__)
namespace {

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

/// The number in name="number"; 0 when there is none.
std::uint64_t attribute(std::string_view line, std::string_view name)
{
    const std::string opening = std::string(name) + "=\"";
    const std::size_t at = line.find(opening);
    std::uint64_t value = 0;
    if (at != std::string_view::npos) {
        std::from_chars(line.data() + at + opening.size(), line.data() + line.size(), value);
    }
    return value;
}

/// Sums up the library's report: an element <heap> for each arena, then the figures of the process.
class ReportReader
{
public:
    void read(std::string_view line)
    {
        if (contains(line, "<heap ")) {
            m_inHeap = true;
            m_committed = 0;
            m_mapped = 0;
            m_regions = 1;
        } else if (contains(line, "</heap>")) {
            m_inHeap = false;
            addHeap();
        } else if (m_inHeap) {
            readInHeap(line);
        } else if (contains(line, "<total type=\"mmap\"")) {
            m_sum.allocations = attribute(line, "count");
            m_sum.used += attribute(line, "size");
        }
    }

    [[nodiscard]] const HeapStatistics& sum() const { return m_sum; }

private:
    void readInHeap(std::string_view line)
    {
        const std::uint64_t size = attribute(line, "size");
        if (contains(line, "<total type=\"fast\"") || contains(line, "<total type=\"rest\"")) {
            m_sum.freeBlocks += attribute(line, "count");
            m_free += size;
        } else if (contains(line, "<system type=\"current\"")) {
            m_committed = size;
        } else if (contains(line, "<aspace type=\"mprotect\"")) {
            m_mapped = size;
        } else if (contains(line, "<aspace type=\"subheaps\"")) {
            m_regions = size;
        }
    }

    void addHeap()
    {
        ++m_sum.heaps;
        m_sum.regions += m_regions;
        m_sum.regionCommitted += m_committed;
        m_sum.free += m_free;
        // The report is not one instant's: what is free may exceed what was committed a moment before.
        m_sum.used += m_committed > m_free ? m_committed - m_free : 0;
        m_free = 0;
        if (m_mapped > m_committed) {
            ++m_sum.uncommittedRanges;
            m_sum.uncommitted += m_mapped - m_committed;
            m_sum.regionUncommitted += m_mapped - m_committed;
        }
    }

    HeapStatistics m_sum;
    bool m_inHeap = false;
    std::uint64_t m_committed = 0;
    std::uint64_t m_mapped = 0;
    std::uint64_t m_regions = 1;
    std::uint64_t m_free = 0;
};

} // namespace

HeapStatistics heapStatistics()
{
    char* report = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = ::open_memstream(&report, &size);
    if (stream == nullptr) {
        return {};
    }
    const bool told = ::malloc_info(0, stream) == 0;
    const bool whole = std::fclose(stream) == 0;
    ReportReader reader;
    if (told && whole) {
        std::string_view rest(report, size);
        while (!rest.empty()) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            reader.read(line);
            rest.remove_prefix(line.size() < rest.size() ? line.size() + 1 : line.size());
        }
    }
    std::free(report);
    return reader.sum();
}

#else

HeapStatistics heapStatistics()
{
    return {};
}

#endif

} // namespace veltor::platform
