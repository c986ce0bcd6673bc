// A task whose work is a function.

#include <veltor/concurrent/FunctionTask.h>

#include <veltor/concurrent/SignalingTaskNestedScope.h>
#include <veltor/err/Exceptions.h>

#include <utility>

namespace veltor::concurrent {

class FunctionTask::Private
{
public:
    /// Lets the work pause wherever it asks whether it may go on.
    class Scope : public SignalingTaskNestedScope
    {
    public:
        explicit Scope(FunctionTask& task)
            : SignalingTaskNestedScope(task)
            , m_task(task)
        {}
        [[nodiscard]] bool canWork() const override { return m_task.waitWhilePaused(); }

    private:
        FunctionTask& m_task;
    };

    void run(FunctionTask& task) const
    {
        if (plain) {
            plain();
        } else {
            Scope scope(task);
            scoped(scope);
        }
    }

    Scoped scoped;
    Plain plain;
};

FunctionTask::FunctionTask(Scoped work)
    : d(new Private{std::move(work), {}})
{
    if (!d->scoped) {
        throw err::NullArgument(QStringLiteral("work"));
    }
}

FunctionTask::FunctionTask(Plain work)
    : d(new Private{{}, std::move(work)})
{
    if (!d->plain) {
        throw err::NullArgument(QStringLiteral("work"));
    }
}

FunctionTask::~FunctionTask() = default;

bool FunctionTask::canCancel() const
{
    return !d->plain;
}

bool FunctionTask::canPause() const
{
    return !d->plain;
}

void FunctionTask::onStart()
{
    try {
        if (waitWhilePaused()) {
            d->run(*this);
        }
    } catch (...) {
        if (!cancelRequested()) {
            throw;
        }
    }
    if (cancelRequested()) {
        enterCancelledState();
    }
}

} // namespace veltor::concurrent
