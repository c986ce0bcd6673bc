#pragma once

#include <veltor/concurrent/TaskProgressHandler.h>

#include <memory>

namespace veltor::concurrent {

/// The share of a main handler's scale that a sub-operation fills, in units of that scale.
using ProgressSize = double;

/// Lets a sub-operation with a scale of its own fill a share of a main handler: every increment advances
/// the main handler by increment * size / width of the own range.
///
/// The inner handler is the task's handler at construction. Its progress counts, and so does what is
/// written into the decorator itself, as when it was installed with Task::setProgressHandler(). The signals
/// started(), canceled() and error() of both are forwarded to the main handler. So is finished(), once: when
/// all decorators of the main handler have ended; a task's handler, which emits it at the task's own end,
/// gets none of its parts'. The main handler's isFinished() stays what it is. Questions, cancellation, errors
/// and ranges go to the inner handler, which follows an installed decorator to the task's thread.
///
/// Threads: as ProgressHandler; the inner handler's news arrive through the decorator's event loop when
/// they come from another thread.
class VELTOR_UTILS_EXPORT ProgressSizeDecorator : public TaskProgressHandler
{
    Q_OBJECT

public:
    /// @param task  the sub-operation; null for one without a task, whose inner handler is a plain one
    /// @param main  the handler to advance
    /// @param size  a negative one moves the main handler backwards
    /// @throws err::NullArgument when @p main is null
    ProgressSizeDecorator(Task* task, std::shared_ptr<ProgressHandler> main, ProgressSize size);
    ~ProgressSizeDecorator() override;

    /// Sends the increments to @p main while that exists, instead of the former one. The constructor does it
    /// for its main handler.
    void connectToMainPh(ProgressHandler& main);

    void cancel() override;

protected:
    /// Handed on to the inner handler.
    /// @{
    bool isRunning_impl() const override;
    bool isFinished_impl() const override;
    bool isCanceled_impl() const override;
    void setProgressRange_impl(Range range) override;
    void setError_impl(const err::ConcurrentNestedException& error) override;
    CancellationToken cancellationToken_impl() const override;
    /// @}

private:
    struct Share;

    void forwardEnd();
    void rememberRange(Range range);

    const std::unique_ptr<Share> m_share;
};

} // namespace veltor::concurrent
