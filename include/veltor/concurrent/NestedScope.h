#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

#include <vector>

namespace veltor::concurrent {

/// What long-running code reports its progress into without knowing who listens: a range, sub-steps that
/// are ranges again, a value, the current operation, messages.
///
/// Scopes are plain objects, owned by the code that reports into them and used by one thread at a time.
class VELTOR_UTILS_EXPORT NestedScope
{
public:
    /// period() is 100, phase() 0.
    NestedScope() = default;
    NestedScope(const NestedScope&) = delete;
    NestedScope& operator=(const NestedScope&) = delete;
    virtual ~NestedScope();

    /// The current step counts from @p from to @p to; sets the value to @p from.
    virtual void setRange(double from, double to) = 0;
    /// The next @p step units of the current scale are counted from @p from to @p to until
    /// removeInnerRange(). The value is left as it is: set it in the new scale.
    virtual void setInnerRange(double step, double from, double to) = 0;
    /// Back to the scale around, with the sub-step complete.
    virtual void removeInnerRange() = 0;
    /// Sets the value, in the current scale.
    virtual void setProgress(double value) = 0;
    /// Moves the value by @p delta units of the current scale.
    virtual void addProgress(double delta) = 0;
    /// Names what is being done.
    virtual void setOperation(const QString& text) = 0;
    /// Hands a text on to whoever watches. @p kind is of the caller's choosing.
    virtual void setMessage(int kind, const QString& text) = 0;
    /// False when the work is to stop.
    [[nodiscard]] virtual bool canWork() const;
    /// True when somebody else has brought the work to its end.
    [[nodiscard]] virtual bool taskReady() const;

    /// For loops over many items: calls setProgress() for every period()-th index only, those whose
    /// remainder is phase(); of a negative index the remainder's magnitude counts.
    void setOptionalProgress(long long index, double value);
    /// The same for setOperation().
    void setOptionalOperation(long long index, const QString& text);
    /// taskReady(), or else not canWork().
    [[nodiscard]] bool isFinished() const;

    /// Every how many items an optional operation goes through, 100 at first; 0 lets all through.
    [[nodiscard]] long long period() const noexcept { return m_period; }
    /// Sets period(); a negative one counts by its magnitude.
    void setPeriod(long long period) noexcept { m_period = period; }
    /// The remainder at which it goes through, 0 at first.
    [[nodiscard]] long long phase() const noexcept { return m_phase; }
    /// Sets phase(); with one outside [0, period) nothing goes through.
    void setPhase(long long phase) noexcept { m_phase = phase; }

private:
    [[nodiscard]] bool goesThrough(long long index) const noexcept;

    long long m_period = 100;
    long long m_phase = 0;
};

/// Keeps the stack of nested ranges and computes the overall value. Threads: as NestedScope.
class VELTOR_UTILS_EXPORT NestedScopeImpl : public NestedScope
{
public:
    /// @param from, to  the scale of progress(); any finite numbers
    NestedScopeImpl(double from, double to);
    ~NestedScopeImpl() override;

    /// An empty range, @p from equal to @p to, gets the width from + 1.
    void setRange(double from, double to) override;
    /// An empty range gets the width 1.
    void setInnerRange(double step, double from, double to) override;
    /// The outermost range stays.
    void removeInnerRange() override;
    void setProgress(double value) override;
    void addProgress(double delta) override;
    void setOperation(const QString& text) override;
    /// Logs a text that is not empty.
    void setMessage(int kind, const QString& text) override;

    /// As setInnerRange(), for any part of the scale around: pushes the range that maps innerStart,
    /// innerStart + innerWidth to outerStart, outerStart + outerWidth; an inner width of 0 becomes 1.
    void setInnerRangeImpl(double outerStart, double outerWidth, double innerStart, double innerWidth);

    /// The value in the scale of the constructor.
    [[nodiscard]] double progress() const;

private:
    struct RangeEntry
    {
        double outerStart;
        double outerWidth;
        double innerStart;
        double innerWidth;
    };

    std::vector<RangeEntry> m_ranges; // outermost first
    double m_value;                   // in the scale of the innermost range
};

/// Accepts everything and does nothing, but logs messages. Threads: as NestedScope.
class VELTOR_UTILS_EXPORT NestedScopeDummy : public NestedScope
{
public:
    ~NestedScopeDummy() override;

    void setRange(double from, double to) override;
    void setInnerRange(double step, double from, double to) override;
    void removeInnerRange() override;
    void setProgress(double value) override;
    void addProgress(double delta) override;
    void setOperation(const QString& text) override;
    /// Logs a text that is not empty.
    void setMessage(int kind, const QString& text) override;
};

/// For work in the user interface's thread: keeps the windows painted, without the user's input, whenever
/// the work reports a value.
class VELTOR_UTILS_EXPORT NestedScopeEvents : public NestedScopeDummy
{
public:
    ~NestedScopeEvents() override;

    void setProgress(double value) override;
};

/// Restores the period and phase of a scope at the end of a stretch of work that changes them.
class VELTOR_UTILS_EXPORT NestedScopeSaveSetup
{
public:
    /// @param scope  outlives this object
    explicit NestedScopeSaveSetup(NestedScope& scope);
    NestedScopeSaveSetup(const NestedScopeSaveSetup&) = delete;
    NestedScopeSaveSetup& operator=(const NestedScopeSaveSetup&) = delete;
    ~NestedScopeSaveSetup();

private:
    NestedScope& m_scope;
    const long long m_period;
    const long long m_phase;
};

} // namespace veltor::concurrent
