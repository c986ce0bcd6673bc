// Memory figures against limits, and the heap's as lines of the log.

#include <veltor/utils/MemoryMonitor.h>

#include "platform/HeapInfo.h"
#include "platform/MemoryInfo.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltor::utils {
namespace {

/// A run of bits in a limit word. The word, from bit 0: function (3), size (10), unit (2), percentage
/// (15, where 32767 is all of the memory).
struct Field
{
    unsigned shift;
    quint32 mask; // unshifted

    [[nodiscard]] constexpr quint32 get(quint32 word) const { return (word >> shift) & mask; }
    [[nodiscard]] constexpr quint32 set(quint32 word, quint32 value) const
    {
        return (word & ~(mask << shift)) | ((value & mask) << shift);
    }
};

constexpr Field functionField{0, 0x7};
constexpr Field sizeField{3, 0x3FF};
constexpr Field unitField{13, 0x3};
constexpr Field percentField{15, 0x7FFF};
constexpr unsigned wholeMemory = 32767;

constexpr quint32 scaledPercent(double percent)
{
    if (!(percent > 0)) { // NaN too
        return 0;
    }
    return percent > 100 ? wholeMemory : static_cast<quint32>((percent * wholeMemory + 50) / 100);
}

constexpr quint32 limitWord(double percent, unsigned size, quint32 unit, quint32 function)
{
    const quint32 sized = unitField.set(sizeField.set(0, size), unit);
    return percentField.set(functionField.set(sized, function), scaledPercent(percent));
}

constexpr quint32 defaultErrorWord =
    limitWord(MemoryMonitor::defaultErrorPercent, MemoryMonitor::defaultErrorSize,
              MemoryMonitor::defaultErrorUnit, MemoryMonitor::defaultErrorFunc);
constexpr quint32 defaultWarningWord =
    limitWord(MemoryMonitor::defaultWarningPercent, MemoryMonitor::defaultWarningSize,
              MemoryMonitor::defaultWarningUnit, MemoryMonitor::defaultWarningFunc);

quint64 sizeLimit(quint32 word)
{
    const quint32 unit = unitField.get(word);
    const unsigned shift = unit == MemoryMonitor::KiB ? 10 : unit == MemoryMonitor::GiB ? 30 : 20;
    return quint64{sizeField.get(word)} << shift;
}

quint64 percentLimit(quint32 word, quint64 total)
{
    const double scaled = percentField.get(word);
    return static_cast<quint64>(std::round(static_cast<double>(total) * scaled / wholeMemory));
}

quint64 limitInBytes(quint32 word, quint64 total)
{
    switch (functionField.get(word)) {
    case MemoryMonitor::NoLimit:
        return 0;
    case MemoryMonitor::SizeOnly:
        return sizeLimit(word);
    case MemoryMonitor::PercentOnly:
        return percentLimit(word, total);
    case MemoryMonitor::Larger:
        return std::max(percentLimit(word, total), sizeLimit(word));
    default:
        return std::min(percentLimit(word, total), sizeLimit(word));
    }
}

bool dependsOnTotal(quint32 word)
{
    const quint32 function = functionField.get(word);
    return function == MemoryMonitor::PercentOnly || function == MemoryMonitor::Smaller ||
           function == MemoryMonitor::Larger;
}

quint32 counter(std::uint64_t value)
{
    return static_cast<quint32>(std::min<std::uint64_t>(value, std::numeric_limits<quint32>::max()));
}

} // namespace

TotalMem::TotalMem() noexcept
{
    fill();
}

void TotalMem::fill() noexcept
{
    const platform::PhysicalMemory memory = platform::physicalMemory();
    m_total = memory.total;
    m_freeBytes = memory.available;
}

TotalMem& TotalMem::update() noexcept
{
    fill();
    return *this;
}

double TotalMem::percentFree() const noexcept
{
    return static_cast<double>(m_freeBytes) * 100 / static_cast<double>(m_total);
}

QString TotalMem::heap() const
{
    const platform::HeapStatistics sum = platform::heapStatistics();
    return QStringLiteral("Heap count: %0, region count: %1, region committed size: %2, "
                          "region uncommitted size: %3, allocations: %4, used bytes: %5, "
                          "overhead bytes: %6, uncommitted ranges: %7, uncommitted size: %8, "
                          "free blocks: %9, free size: %10")
        .arg(counter(sum.heaps))
        .arg(counter(sum.regions))
        .arg(counter(sum.regionCommitted))
        .arg(counter(sum.regionUncommitted))
        .arg(counter(sum.allocations))
        .arg(counter(sum.used))
        .arg(counter(sum.overhead))
        .arg(counter(sum.uncommittedRanges))
        .arg(counter(sum.uncommitted))
        .arg(counter(sum.freeBlocks))
        .arg(counter(sum.free));
}

quint64 TotalMem::containerLimit()
{
    return platform::containerMemoryLimit();
}

MemoryMonitor::MemoryMonitor()
    : m_errorLimit(defaultErrorWord)
    , m_warningLimit(defaultWarningWord)
{
    forceUpdate();
}

void MemoryMonitor::setPercentLimit(LimitMasks limits, double percent) noexcept
{
    const quint32 scaled = scaledPercent(percent);
    if (limits.testFlag(ErrorLimitMask)) {
        m_errorLimit = percentField.set(m_errorLimit, scaled);
    }
    if (limits.testFlag(WarningLimitMask)) {
        m_warningLimit = percentField.set(m_warningLimit, scaled);
    }
}

void MemoryMonitor::setSizeLimit(LimitMasks limits, unsigned size, SizeUnit unit) noexcept
{
    if (limits.testFlag(ErrorLimitMask)) {
        m_errorLimit = unitField.set(sizeField.set(m_errorLimit, size), unit);
    }
    if (limits.testFlag(WarningLimitMask)) {
        m_warningLimit = unitField.set(sizeField.set(m_warningLimit, size), unit);
    }
}

void MemoryMonitor::setLimitFunc(LimitMasks limits, Function function) noexcept
{
    if (limits.testFlag(ErrorLimitMask)) {
        m_errorLimit = functionField.set(m_errorLimit, function);
    }
    if (limits.testFlag(WarningLimitMask)) {
        m_warningLimit = functionField.set(m_warningLimit, function);
    }
}

void MemoryMonitor::setCheck(State state, unsigned intervalMs) noexcept
{
    if (state < m_checks.size()) {
        m_checks[state] = intervalMs;
    }
}

quint64 MemoryMonitor::errorLimit() noexcept
{
    if (dependsOnTotal(m_errorLimit)) {
        fill();
    }
    return limitInBytes(m_errorLimit, available());
}

quint64 MemoryMonitor::warningLimit() noexcept
{
    if (dependsOnTotal(m_warningLimit)) {
        fill();
    }
    return limitInBytes(m_warningLimit, available());
}

void MemoryMonitor::updateDeadLine() noexcept
{
    m_deadline.setRemainingTime(m_checks[m_lastState], Qt::CoarseTimer);
}

void MemoryMonitor::forceUpdate() noexcept
{
    fill();
    if (free() < limitInBytes(m_errorLimit, available())) {
        m_lastState = Error;
    } else if (free() >= limitInBytes(m_warningLimit, available())) {
        m_lastState = Normal;
    } else {
        m_lastState = Warning;
    }
    updateDeadLine();
}

} // namespace veltor::utils
