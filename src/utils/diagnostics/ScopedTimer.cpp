// What a timer does once somebody wants its time.

#include <veltor/utils/ScopedTimer.h>

#include "SpanRecorder.h"

#include <exception>

namespace veltor::utils {

std::atomic<unsigned> ScopedTimer::s_takers{0};

void ScopedTimer::setSummed(bool summed) noexcept
{
    setTaker(Summary, summed);
}

void ScopedTimer::setTaker(Taker taker, bool takes) noexcept
{
    if (takes) {
        s_takers |= taker;
    } else {
        s_takers &= ~unsigned{taker};
    }
}

void ScopedTimer::begin() noexcept
{
    if ((m_takers & Trace) != 0) {
        SpanRecorder::instance().enter();
    }
    m_beginNs = nowNs();
}

void ScopedTimer::end() noexcept
try {
    const qint64 endNs = nowNs();
    if ((m_takers & Trace) != 0) {
        SpanRecorder::instance().leave(m_operation, m_beginNs, endNs);
    }
    if ((m_takers & Summary) != 0) {
        SummaryTime::instance().addTime(m_operation, static_cast<quint64>(endNs - m_beginNs));
    }
} catch (const std::exception&) {
    // No memory for a new sum; what is measured must not fail for that.
}

} // namespace veltor::utils
