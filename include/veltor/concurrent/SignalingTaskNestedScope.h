#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/NestedScope.h>

#include <memory>

namespace veltor::concurrent {

class Task;
class TaskProgressHandler;

/// What a scope knows of the task that it reports to: the task's handler, which it keeps alive. Immutable.
class VELTOR_UTILS_EXPORT SignalingTaskBase
{
public:
    /// Takes a share in the handler that @p task has now.
    explicit SignalingTaskBase(const Task& task);
    SignalingTaskBase(const SignalingTaskBase&) = delete;
    SignalingTaskBase& operator=(const SignalingTaskBase&) = delete;

    /// The task's handler, valid as long as this object.
    [[nodiscard]] TaskProgressHandler& handler() const noexcept { return *m_handler; }

protected:
    ~SignalingTaskBase();

private:
    const std::shared_ptr<TaskProgressHandler> m_handler;
};

/// Lets code that reports into a NestedScope run inside a task: the overall value becomes the handler's
/// progress, operations and messages its messageChanged(); messages are logged besides.
///
/// Made and used by the task's work, in its thread. canWork() does not pause: the work calls
/// Task::waitWhilePaused().
class VELTOR_UTILS_EXPORT SignalingTaskNestedScope : public NestedScopeImpl, public SignalingTaskBase
{
public:
    /// Counts in the present range of the task's handler, and leaves its progress as it is.
    explicit SignalingTaskNestedScope(const Task& task);
    /// Gives the handler the range @p from to @p to first.
    SignalingTaskNestedScope(const Task& task, double from, double to);
    ~SignalingTaskNestedScope() override;

    void setProgress(double value) override;
    void setOperation(const QString& text) override;
    void setMessage(int kind, const QString& text) override;
    /// False once cancellation was asked for or the task has ended.
    [[nodiscard]] bool canWork() const override;
    /// True once the task has ended.
    [[nodiscard]] bool taskReady() const override;
};

} // namespace veltor::concurrent
