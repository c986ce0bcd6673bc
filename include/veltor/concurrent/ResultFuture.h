#pragma once

#include <veltor/concurrent/TaskResult.h>
#include <veltor/err/ConcurrentNestedException.h>

#include <QtCore/QFuture>
#include <QtCore/QFutureInterface>
#include <QtCore/QFutureWatcher>

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

namespace veltor::concurrent {
namespace result {

/// A node that somebody else brings to its end.
template <typename T>
class Promise final : public Node<T>
{
protected:
    ResultCore::State call() override { return ResultCore::State::Canceled; }
    void forget() noexcept override {}
};

/// The end of a future that has finished.
template <typename T>
void settle(Promise<T>& promise, QFuture<T> future)
{
    using State = ResultCore::State;
    if (!promise.claim()) {
        return;
    }
    State end = State::Succeeded;
    std::exception_ptr thrown;
    try {
        future.waitForFinished(); // throws what the future carries
        if (future.isCanceled()) {
            end = State::Canceled;
        } else if constexpr (!std::is_void_v<T>) {
            if (future.resultCount() > 0) {
                promise.keep(future.result());
            } else {
                end = State::Canceled;
            }
        }
    } catch (...) {
        end = State::Failed;
        thrown = std::current_exception();
    }
    promise.finish(end, thrown);
}

} // namespace result

/// The future that ends as @p result does, for code that waits on those: its value, its own exception, or
/// cancelled.
/// @param result   its state is shared, not copied
/// @param context  lives in the calling thread; while it exists, and events are delivered there, a
///                 cancellation of the future cancels the result. Null for a future that only looks.
template <typename T>
QFuture<T> toFuture(const TaskResult<T>& result, QObject* context = nullptr)
{
    QFutureInterface<T> promise;
    promise.reportStarted();
    QFuture<T> future = promise.future();
    if (context) {
        auto* const watcher = new QFutureWatcher<T>(context);
        QObject::connect(watcher, &QFutureWatcherBase::canceled, context, [result] { result.cancel(); });
        QObject::connect(watcher, &QFutureWatcherBase::finished, watcher, &QObject::deleteLater);
        watcher->setFuture(future);
    }
    result.share()->whenEnded([promise, node = result.share()]() mutable {
        try {
            if constexpr (std::is_void_v<T>) {
                node->get();
            } else {
                promise.reportResult(node->get());
            }
        } catch (const Canceled&) {
            promise.reportCanceled();
        } catch (...) {
            promise.reportException(err::ConcurrentNestedException());
        }
        promise.reportFinished();
    });
    return future;
}

/// The result that ends as @p future does; with its first value, when it has several, and as cancelled when
/// it has none. Cancelling the result cancels the future.
/// @param future   is kept until it ends
/// @param context  lives in the calling thread, whose events bring the end; when it goes before, the result
///                 is cancelled
/// @throws err::NullArgument when @p context is null
template <typename T>
TaskResult<T> fromFuture(const QFuture<T>& future, QObject* context)
{
    if (!context) {
        ResultCore::throwInvalid();
    }
    const auto promise = std::make_shared<result::Promise<T>>();
    auto* const watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, watcher, [promise, watcher] {
        result::settle(*promise, watcher->future());
        watcher->deleteLater();
    });
    QObject::connect(watcher, &QObject::destroyed, [promise] { promise->abandon(); });
    promise->whenEnded([weak = std::weak_ptr<ResultCore>(promise), handle = future]() mutable {
        const ResultCore::Ptr node = weak.lock();
        if (node && node->state() == ResultCore::State::Canceled) {
            handle.cancel();
        }
    });
    watcher->setFuture(future);
    return TaskResult<T>(promise);
}

} // namespace veltor::concurrent
