#pragma once

#include <veltor/Export.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFlags>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <array>

namespace veltor::utils {

/// A snapshot of the machine's physical memory. When the operating system does not tell, both figures are
/// 0.
///
/// Threads: reentrant.
class VELTOR_UTILS_EXPORT TotalMem
{
public:
    /// Takes a snapshot.
    TotalMem() noexcept;

    /// Takes a new snapshot.
    void fill() noexcept;
    /// Takes a new snapshot. @return this object
    TotalMem& update() noexcept;

    /// The machine's physical memory in bytes: all of it, not what is available, which free() tells.
    [[nodiscard]] quint64 available() const noexcept { return m_total; }
    /// Bytes that programs can still get without swapping, as the operating system estimates it; caches
    /// that it would give up count.
    [[nodiscard]] quint64 free() const noexcept { return m_freeBytes; }
    /// Bytes in use.
    [[nodiscard]] quint64 used() const noexcept { return m_total - m_freeBytes; }
    /// free() in percent of available(); NaN when the system did not tell.
    [[nodiscard]] double percentFree() const noexcept;

    /// One line of statistics over all heaps of the process: eleven decimal numbers of 32 bits, sizes in
    /// bytes; what exceeds 4294967295 is shown as that.
    ///
    /// Windows: every block is counted. GNU C library: the heaps are its arenas, the regions the
    /// stretches of address space these consist of; allocations counts only blocks with a mapping of
    /// their own, the others being counted nowhere, but used bytes holds all; overhead is not told and 0;
    /// uncommitted is what an arena gave back while keeping the addresses, a range for each such arena.
    /// Other C libraries tell nothing, all is 0.
    [[nodiscard]] QString heap() const;

    /// Memory limit in bytes of the container (Linux control groups) that the process runs in; 0 when
    /// there is none below the machine's memory, and on Windows. The other figures here are the machine's
    /// and do not heed it. Reads a few files: not for hot loops.
    [[nodiscard]] static quint64 containerLimit();

private:
    quint64 m_total = 0;
    quint64 m_freeBytes = 0;
};

/// Tells whether free physical memory is running short, against two limits, cheaply enough to be asked
/// in a loop: between measurements state() costs one look at the clock.
///
///     veltor::utils::MemoryMonitor memory;
///     while (work.next()) {
///         if (memory.state() == veltor::utils::MemoryMonitor::Error) {
///             work.dropCaches();
///         }
///     }
///
/// Initially the error limit is the smaller of 5 % of physical memory and 512 MiB, the warning limit the
/// smaller of 10 % and 1 GiB; it is measured again after 500 ms in state Normal, after 100 ms in the
/// others. When the system tells nothing, limits that depend on the percentage are 0.
///
/// Threads: owner thread only; a copy is a monitor of its own.
class VELTOR_UTILS_EXPORT MemoryMonitor : public TotalMem
{
public:
    /// How much is left, by the two limits.
    enum State : unsigned
    {
        Normal = 0,  ///< free memory is at or above the warning limit
        Warning = 1, ///< below the warning limit, at or above the error limit
        Error = 2,   ///< below the error limit, whatever the warning limit is
    };

    /// Which limits a setter changes.
    enum LimitMask : unsigned
    {
        ErrorLimitMask = 1,   ///< the error limit
        WarningLimitMask = 2, ///< the warning limit
    };
    Q_DECLARE_FLAGS(LimitMasks, LimitMask)

    /// Unit of a size limit; the value 3 is treated as MiB.
    enum SizeUnit : unsigned
    {
        KiB = 0, ///< 2^10 bytes
        MiB = 1, ///< 2^20 bytes
        GiB = 2, ///< 2^30 bytes
    };

    /// How a limit follows from its percentage and its size.
    enum Function : unsigned
    {
        NoLimit = 0,     ///< 0 bytes
        PercentOnly = 1, ///< the percentage of the machine's memory
        SizeOnly = 2,    ///< the size
        Smaller = 3,     ///< the smaller of the two
        Larger = 4,      ///< the larger of the two
    };

    /// What the limits are made of at first.
    /// @{
    static constexpr double defaultErrorPercent = 5.0;
    static constexpr unsigned defaultErrorSize = 512;
    static constexpr SizeUnit defaultErrorUnit = MiB;
    static constexpr Function defaultErrorFunc = Smaller;
    static constexpr double defaultWarningPercent = 10.0;
    static constexpr unsigned defaultWarningSize = 1;
    static constexpr SizeUnit defaultWarningUnit = GiB;
    static constexpr Function defaultWarningFunc = Smaller;
    /// @}

    /// Measures once.
    MemoryMonitor();

    /// @name Setting up
    /// What is set takes effect with the next measurement.
    /// @{

    /// Sets the percentage of some @p limits.
    /// @param limits   which
    /// @param percent  of the machine's memory, kept to 1/32767 of it; below 0 and NaN count as 0, above
    ///     100 as 100
    void setPercentLimit(LimitMasks limits, double percent) noexcept;
    /// Sets the size of some @p limits.
    /// @param limits  which
    /// @param size  0 to 1023; of larger ones only the low ten bits are kept, so 1024 is 0
    /// @param unit  of the size
    void setSizeLimit(LimitMasks limits, unsigned size, SizeUnit unit) noexcept;
    /// Says how some @p limits follow from percentage and size.
    void setLimitFunc(LimitMasks limits, Function function) noexcept;
    /// Sets the time between measurements while in @p state, @p intervalMs milliseconds; no effect for any
    /// other value than the three states.
    void setCheck(State state, unsigned intervalMs) noexcept;
    /// @}

    /// The limit in bytes; takes a new snapshot first when it depends on the machine's memory.
    [[nodiscard]] quint64 errorLimit() noexcept;
    /// The limit in bytes; takes a new snapshot first when it depends on the machine's memory.
    [[nodiscard]] quint64 warningLimit() noexcept;

    /// Puts the next measurement off by the last state's interval from now.
    void updateDeadLine() noexcept;
    /// Measures now.
    void forceUpdate() noexcept;
    /// Measures if it is time to.
    void updateState() noexcept
    {
        if (m_deadline.hasExpired()) {
            forceUpdate();
        }
    }
    /// The state, measured if it is time to.
    [[nodiscard]] State state() noexcept
    {
        updateState();
        return m_lastState;
    }
    /// The state of the last measurement.
    [[nodiscard]] State lastState() const noexcept { return m_lastState; }

private:
    QDeadlineTimer m_deadline{Qt::CoarseTimer};
    State m_lastState = Normal;
    std::array<quint32, 3> m_checks{500, 100, 100}; // milliseconds, by State
    quint32 m_errorLimit;                           // packed, see MemoryMonitor.cpp
    quint32 m_warningLimit;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(MemoryMonitor::LimitMasks)

} // namespace veltor::utils
