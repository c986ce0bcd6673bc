// Scopes that split the progress of one handler among the steps of its work.

#include <veltor/concurrent/NestedScope.h>

#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>

namespace veltor::concurrent {
namespace {

/// The log call site of a scope's message.
const logging::LoggerMessager
    messageLog(logging::LogLevel::Info, "concurrent/NestedScope.cpp", 102,
               "virtual void veltor::concurrent::NestedScopeDummy::setMessage(int, const QString&)");

void logMessage(const QString& text)
{
    if (!text.isEmpty()) {
        messageLog.write(text);
    }
}

double widthOr(double width, double substitute)
{
    return width == 0.0 ? substitute : width;
}

} // namespace

NestedScope::~NestedScope() = default;

bool NestedScope::canWork() const
{
    return true;
}

bool NestedScope::taskReady() const
{
    return false;
}

bool NestedScope::goesThrough(long long index) const noexcept
{
    if (m_period == 0) {
        return true;
    }
    // The least number has no remainder by -1 on a two's complement machine.
    const long long remainder = m_period == -1 ? 0 : index % m_period;
    return (remainder < 0 ? -remainder : remainder) == m_phase;
}

void NestedScope::setOptionalProgress(long long index, double value)
{
    if (goesThrough(index)) {
        setProgress(value);
    }
}

void NestedScope::setOptionalOperation(long long index, const QString& text)
{
    if (goesThrough(index)) {
        setOperation(text);
    }
}

bool NestedScope::isFinished() const
{
    return taskReady() || !canWork();
}

NestedScopeImpl::NestedScopeImpl(double from, double to)
    : m_value(from)
{
    m_ranges.reserve(8);
    m_ranges.push_back({from, to - from, 0.0, 1.0});
}

NestedScopeImpl::~NestedScopeImpl() = default;

double NestedScopeImpl::progress() const
{
    double value = m_value;
    for (auto range = m_ranges.rbegin(); range != m_ranges.rend(); ++range) {
        value = (value - range->innerStart) * range->outerWidth / range->innerWidth + range->outerStart;
    }
    return value;
}

void NestedScopeImpl::setProgress(double value)
{
    m_value = value;
}

void NestedScopeImpl::addProgress(double delta)
{
    setProgress(m_value + delta);
}

void NestedScopeImpl::setRange(double from, double to)
{
    RangeEntry& innermost = m_ranges.back();
    innermost.innerStart = from;
    // Not 1, as for an inner range: callers rely on the scale that results.
    innermost.innerWidth = widthOr(to - from, from + 1.0);
    setProgress(from);
}

void NestedScopeImpl::setInnerRange(double step, double from, double to)
{
    setInnerRangeImpl(m_value, step, from, to - from);
}

void NestedScopeImpl::setInnerRangeImpl(double outerStart, double outerWidth, double innerStart,
                                        double innerWidth)
{
    m_ranges.push_back({outerStart, outerWidth, innerStart, widthOr(innerWidth, 1.0)});
}

void NestedScopeImpl::removeInnerRange()
{
    if (m_ranges.size() <= 1) {
        return;
    }
    const RangeEntry left = m_ranges.back();
    m_ranges.pop_back();
    setProgress(left.outerStart + left.outerWidth);
}

void NestedScopeImpl::setOperation(const QString& /*text*/) {}

void NestedScopeImpl::setMessage(int /*kind*/, const QString& text)
{
    logMessage(text);
}

NestedScopeDummy::~NestedScopeDummy() = default;

void NestedScopeDummy::setRange(double /*from*/, double /*to*/) {}

void NestedScopeDummy::setInnerRange(double /*step*/, double /*from*/, double /*to*/) {}

void NestedScopeDummy::removeInnerRange() {}

void NestedScopeDummy::setProgress(double /*value*/) {}

void NestedScopeDummy::addProgress(double /*delta*/) {}

void NestedScopeDummy::setOperation(const QString& /*text*/) {}

void NestedScopeDummy::setMessage(int /*kind*/, const QString& text)
{
    logMessage(text);
}

NestedScopeEvents::~NestedScopeEvents() = default;

void NestedScopeEvents::setProgress(double /*value*/)
{
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

NestedScopeSaveSetup::NestedScopeSaveSetup(NestedScope& scope)
    : m_scope(scope)
    , m_period(scope.period())
    , m_phase(scope.phase())
{}

NestedScopeSaveSetup::~NestedScopeSaveSetup()
{
    m_scope.setPeriod(m_period);
    m_scope.setPhase(m_phase);
}

} // namespace veltor::concurrent
