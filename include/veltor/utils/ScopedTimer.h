#pragma once

#include <veltor/Export.h>
#include <veltor/utils/SummaryTime.h>

#include <QtCore/QtGlobal>

#include <atomic>

namespace veltor::utils {

/// Measures how long the scope takes that it stands in, for the sums of SummaryTime and for TimeTrace.
///
///     void load()
///     {
///         const ScopedTimer timer("load");
///         ...
///     }
///
/// Nothing is measured until somebody wants it: setSummed(true), TimeTrace::start(). Until then a timer costs
/// one relaxed load. What is wanted when a scope begins decides; a scope that began before is left out.
///
/// Owner thread only; timers of one thread end in the reverse order of their beginning, as scopes do.
class VELTOR_UTILS_EXPORT ScopedTimer
{
public:
    /// Begins to measure.
    explicit ScopedTimer(SummaryTime::OperationId operation) noexcept
        : m_operation(operation)
        , m_takers(s_takers.load(std::memory_order_relaxed))
    {
        if (m_takers != 0) {
            begin();
        }
    }
    /// Hands the time on.
    ~ScopedTimer()
    {
        if (m_takers != 0) {
            end();
        }
    }
    ScopedTimer(const ScopedTimer&) = delete;
    ScopedTimer& operator=(const ScopedTimer&) = delete;

    /// Whether scopes that begin from now on are added to SummaryTime. Thread-safe.
    static void setSummed(bool summed) noexcept;

private:
    friend class TimeTrace;
    enum Taker : unsigned
    {
        Summary = 1,
        Trace = 2,
    };
    static void setTaker(Taker taker, bool takes) noexcept;
    void begin() noexcept;
    void end() noexcept;

    static std::atomic<unsigned> s_takers;

    SummaryTime::OperationId m_operation;
    unsigned m_takers;
    qint64 m_beginNs = 0; // of the monotonic clock
};

} // namespace veltor::utils
