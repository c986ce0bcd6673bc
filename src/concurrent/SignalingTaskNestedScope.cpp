// A scope that tells its task of pauses and cancellation.

#include <veltor/concurrent/SignalingTaskNestedScope.h>

#include <veltor/concurrent/Task.h>

namespace veltor::concurrent {

SignalingTaskBase::SignalingTaskBase(const Task& task)
    : m_handler(task.progressHandler())
{}

SignalingTaskBase::~SignalingTaskBase() = default;

SignalingTaskNestedScope::SignalingTaskNestedScope(const Task& task)
    : NestedScopeImpl(task.progressHandler()->range().start, task.progressHandler()->range().end)
    , SignalingTaskBase(task)
{}

SignalingTaskNestedScope::SignalingTaskNestedScope(const Task& task, double from, double to)
    : NestedScopeImpl(from, to)
    , SignalingTaskBase(task)
{
    handler().setProgressRange({from, to});
}

SignalingTaskNestedScope::~SignalingTaskNestedScope() = default;

void SignalingTaskNestedScope::setProgress(double value)
{
    NestedScopeImpl::setProgress(value);
    handler().setProgress(progress());
}

void SignalingTaskNestedScope::setOperation(const QString& text)
{
    handler().setMessage(text);
}

void SignalingTaskNestedScope::setMessage(int kind, const QString& text)
{
    NestedScopeImpl::setMessage(kind, text);
    if (!text.isEmpty()) {
        handler().setMessage(text);
    }
}

bool SignalingTaskNestedScope::canWork() const
{
    return !handler().isCanceled() && !handler().isFinished();
}

bool SignalingTaskNestedScope::taskReady() const
{
    return handler().isFinished();
}

} // namespace veltor::concurrent
