#pragma once

#include <veltor/Export.h>

#include <chrono>
#include <memory>
#include <stdexcept>

namespace veltor::concurrent {

class CancellationState;

/// What CancellationToken::throwIfCanceled() throws: "Операция была прервана". When it leaves a task's
/// onStart(), the task ends as cancelled, and without an error.
class VELTOR_UTILS_EXPORT Canceled : public std::runtime_error
{
public:
    /// With that text, in the language of the messages.
    Canceled();
};

/// Tells code that knows no progress handler whether it is to stop: a share in the answer of a
/// CancellationSource or a ProgressHandler, which may be gone by then.
///
/// A cheap value to copy; all functions are thread-safe.
class VELTOR_UTILS_EXPORT CancellationToken
{
public:
    /// A token that nobody cancels.
    CancellationToken() noexcept = default;

    /// False for a token that nobody can cancel.
    [[nodiscard]] bool canBeCanceled() const noexcept { return m_state != nullptr; }
    /// Cancellation was asked for. This stays so.
    [[nodiscard]] bool isCanceled() const noexcept;
    /// Called by the work between its steps.
    /// @throws Canceled when cancellation was asked for
    void throwIfCanceled() const;
    /// Sleeps until cancellation is asked for, at most for @p limit; any limit, a negative one is 0.
    /// @return isCanceled()
    bool waitFor(std::chrono::milliseconds limit) const;

private:
    friend class CancellationSource;
    explicit CancellationToken(std::shared_ptr<CancellationState> state) noexcept;

    std::shared_ptr<CancellationState> m_state;
};

/// What its owner cancels and its tokens tell. Copies share one answer. All functions are thread-safe.
class VELTOR_UTILS_EXPORT CancellationSource
{
public:
    /// Not cancelled.
    CancellationSource();

    /// A token of this source.
    [[nodiscard]] CancellationToken token() const noexcept;
    /// Asks for cancellation, and wakes who waits; again, it does nothing.
    void cancel() const noexcept;
    /// Cancellation was asked for.
    [[nodiscard]] bool isCanceled() const noexcept;

private:
    std::shared_ptr<CancellationState> m_state;
};

} // namespace veltor::concurrent
