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

    template <typename F>
    Private(const F& given, bool cancels, bool pauses, std::function<void(FunctionTask&)> how)
        : canCancel(cancels)
        , canPause(pauses)
        , run(std::move(how))
    {
        if (!given) {
            throw err::NullArgument(QStringLiteral("work"));
        }
    }

    const bool canCancel;
    const bool canPause;
    const std::function<void(FunctionTask&)> run;
};

FunctionTask::FunctionTask(const Scoped& work)
    : d(std::make_unique<Private>(work, true, true, [work](FunctionTask& task) {
        Private::Scope scope(task);
        work(scope);
    }))
{}

FunctionTask::FunctionTask(const Cancelable& work)
    : d(std::make_unique<Private>(work, true, false, [work](FunctionTask& task) {
        work(task.progressHandler()->cancellationToken());
    }))
{}

FunctionTask::FunctionTask(const Plain& work)
    : d(std::make_unique<Private>(work, false, false, [work](FunctionTask&) { work(); }))
{}

FunctionTask::~FunctionTask() = default;

bool FunctionTask::canCancel() const
{
    return d->canCancel;
}

bool FunctionTask::canPause() const
{
    return d->canPause;
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
