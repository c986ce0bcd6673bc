#pragma once

#include <veltor/concurrent/CancellationToken.h>
#include <veltor/concurrent/NestedScope.h>
#include <veltor/concurrent/Task.h>

#include <functional>
#include <memory>

namespace veltor::concurrent {

/// A task whose work is a function: what run() is too little for, since it should be paused, belong to a
/// group, or run in a thread of its own. A function that returns a value is better served by run().
///
/// A cancellation is quiet: once it was asked for, the task ends as cancelled, whatever the function returns
/// or throws. One that was asked for before the start keeps the function from being called. Threads and
/// ownership: as Task. The function is destroyed with the task, in the task's thread.
class VELTOR_UTILS_EXPORT FunctionTask : public Task
{
    Q_OBJECT

public:
    /// Work that reports its progress, 0 to 100 at first, into a scope, which also becomes its message; the
    /// scope's canWork() waits while the task is paused, and is false once it was cancelled.
    using Scoped = std::function<void(NestedScope&)>;
    /// Work that only asks whether it is to stop.
    using Cancelable = std::function<void(const CancellationToken&)>;
    /// Work that runs to its end.
    using Plain = std::function<void()>;

    /// @throws err::NullArgument when @p work is empty
    /// @{
    explicit FunctionTask(const Scoped& work);
    explicit FunctionTask(const Cancelable& work);
    explicit FunctionTask(const Plain& work);
    /// @}
    ~FunctionTask() override;

    /// Yes, unless the work is plain.
    [[nodiscard]] bool canCancel() const override;
    /// Yes when the work has a scope.
    [[nodiscard]] bool canPause() const override;

protected:
    void onStart() override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace veltor::concurrent
