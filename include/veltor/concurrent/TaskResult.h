#pragma once

#include <veltor/concurrent/ResultCore.h>
#include <veltor/concurrent/ResultNode.h>

#include <climits>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace veltor::concurrent {

/// The outcome of a function that runs in the background: its value, its exception, or that it was
/// cancelled.
///
///     run(pool, [path] { return readHeights(path); })
///         .then(this, [this](const Heights& heights) { show(heights); })
///         .onFailed(this, [this](const std::exception& reason) { complain(reason); });
///
/// A handle: copies speak of the same outcome. Nothing happens when the last one goes; the function runs on,
/// its followers too. A failure that nobody has asked for, by get(), error() or a follower, is logged then.
///
/// @tparam T  of the value: void, or any type that can be moved; it need not be copied
///
/// A callable given to run() or to a follower may take, after its other arguments, a NestedScope& : then
/// its progress and operation are shown by progressHandler(), and canWork() tells of a cancellation; or a
/// CancellationToken, which tells of that alone. Quiet cancellation: once it was asked for, the callable may
/// return anything, or throw; it counts as cancelled. So does a callable that throws Canceled. A callable
/// that returns a `TaskResult<U>` makes a `TaskResult<U>`, which ends as that one does.
///
/// Threads: every function may be called from any thread. A follower with a context runs in the thread in
/// which the context lives, from its event loop; never in the call that makes it, and never once the context
/// was destroyed: its own result is cancelled then. Followers of one result begin in the order in which they
/// were made. No lock is held while a callable runs or is destroyed.
template <typename T>
class TaskResult
{
public:
    /// See ResultCore::State.
    using State = ResultCore::State;

    /// Of no function. Every other member throws err::NullArgument.
    TaskResult() = default;

    /// There is a function.
    [[nodiscard]] bool isValid() const noexcept { return m_node != nullptr; }
    /// Waiting, Running, Succeeded, Failed or Canceled.
    [[nodiscard]] State state() const { return node().state(); }
    /// Ended, in whatever way.
    [[nodiscard]] bool isFinished() const { return node().ended(); }
    /// There is a value.
    [[nodiscard]] bool isSuccessful() const { return state() == State::Succeeded; }
    /// There is an exception.
    [[nodiscard]] bool isFailed() const { return state() == State::Failed; }
    /// It was given up.
    [[nodiscard]] bool isCanceled() const { return state() == State::Canceled; }

    /// Waits for the end, for at most @p ms milliseconds; ULONG_MAX is for ever. No events are delivered.
    ///
    /// A wait for ever helps where it would block itself: in a function that runs on the same pool it runs
    /// the function waited for, when that is still queued, and it runs followers whose context lives in the
    /// calling thread.
    /// @return whether it has ended
    bool wait(unsigned long ms = ULONG_MAX) const { return node().wait(ms); }

    /// The value, waited for as by wait(). It lives as long as a handle of this result does, and not beyond
    /// take().
    /// @throws what the function threw; Canceled when it was cancelled;
    ///         err::UnsupportedOperation when the value was taken
    decltype(auto) get() const { return node().get(); }
    /// The value itself, for one caller only; that of all results that share it by onFailed() or
    /// onCanceled(). Otherwise as get().
    T take() const { return node().take(); }
    /// What the function threw; null when it did not, or has not ended. The exception is the thrown one.
    [[nodiscard]] std::exception_ptr error() const { return node().error(); }

    /// Asks for cancellation, of the results before this one too and so of all that follow from those. What
    /// has not begun ends now; what runs ends when it returns. A follower that was made to look at an end is
    /// not kept from it. Without effect after the end.
    void cancel() const { node().cancel(); }

    /// The face of this function for presenters: range 0 to 100, cancel(), and the signals of a task's
    /// handler. Made when first asked for, in the calling thread, where it lives; signals from before are not
    /// repeated. Of followers, each has its own.
    [[nodiscard]] ProgressHandlerPtr progressHandler() const { return node().progressHandler(); }

    /// @name Followers
    /// Each makes a new result, that of @p callable. Where the end is not what it wants, the new result ends
    /// as this one did: a value, a failure and a cancellation pass on along a chain.
    ///
    /// The first argument says where the callable runs: the context's thread, or a worker of the pool.
    /// @throws err::NullArgument when @p context is null
    /// @{

    /// callable(value) after a success; callable() when T is void. A value that the callable cannot take as
    /// const T& is moved into it, as by take().
    /// @{
    template <typename F>
    auto then(QObject* context, F callable) const
    {
        return follow(context, ResultCore::Wants::Success, withValue(std::move(callable)));
    }
    template <typename F>
    auto then(TaskThreadPool& pool, F callable) const
    {
        return follow(&pool, ResultCore::Wants::Success, withValue(std::move(callable)));
    }
    /// @}

    /// callable(const std::exception&) or callable(std::exception_ptr) after a failure; the first is not
    /// called for what is no std::exception. When it returns a T, that is the new result's value; when it
    /// returns nothing, it has only looked, and the failure passes on. Where T is void it may return a bool:
    /// whether the failure is settled.
    template <typename F>
    TaskResult onFailed(QObject* context, F callable) const
    {
        return follow<T>(context, ResultCore::Wants::Failure,
                         [callable = std::move(callable), former = share()](result::Node<T>& self) mutable {
                             return result::recover(self, former->error(), callable);
                         });
    }

    /// callable() after a cancellation. What it returns is used as by onFailed().
    template <typename F>
    TaskResult onCanceled(QObject* context, F callable) const
    {
        return follow<T>(context, ResultCore::Wants::Cancellation,
                         [callable = std::move(callable)](result::Node<T>& self) mutable {
                             return result::Ended{result::replace(self, std::ref(callable))
                                                      ? State::Succeeded
                                                      : State::Canceled};
                         });
    }

    /// callable(TaskResult<T>) after any end, with this result.
    template <typename F>
    auto onFinished(QObject* context, F callable) const
    {
        return follow(
            context, ResultCore::Wants::Any,
            [callable = std::move(callable), self = *this](ResultCore& core) mutable -> decltype(auto) {
                return result::call(core, callable, self);
            });
    }
    /// @}

    /// For those who extend this family.
    /// @{
    explicit TaskResult(std::shared_ptr<result::Node<T>> node) noexcept
        : m_node(std::move(node))
    {}
    [[nodiscard]] std::shared_ptr<result::Node<T>> share() const
    {
        static_cast<void>(node());
        return m_node;
    }
    /// @}

private:
    [[nodiscard]] result::Node<T>& node() const
    {
        if (!m_node) {
            ResultCore::throwInvalid();
        }
        return *m_node;
    }
    template <typename F>
    auto withValue(F callable) const
    {
        return
            [callable = std::move(callable), former = share()](ResultCore& core) mutable -> decltype(auto) {
                if constexpr (std::is_void_v<T>) {
                    return result::call(core, callable);
                } else if constexpr (result::isCallable<F, const T&>) {
                    return result::call(core, callable, former->get());
                } else {
                    return result::call(core, callable, former->take());
                }
            };
    }
    template <typename U = result::Ended, typename Where, typename F>
    auto follow(Where* where, ResultCore::Wants wants, F function) const
    {
        auto follower = result::makeNode<U>(std::move(function));
        follower->startAfter(share(), wants, where);
        return result::handleOf(std::move(follower));
    }

    std::shared_ptr<result::Node<T>> m_node;
};

/// Runs @p callable on a worker of @p pool, now or when its turn comes; functions of one priority begin in
/// their order. It is no object with a thread and an event queue, as a Task is, and so costs a small part of
/// one; take a FunctionTask where it should pause or emit signals of its own.
///
/// When the pool goes, functions that have not begun are cancelled, and those that run are asked to cancel
/// and waited for. TaskThreadPool::waitForAllTasks() counts functions too.
///
/// Thread-safe.
/// @throws err::NullArgument when @p pool is null
/// @{
template <typename F>
auto run(TaskThreadPool* pool, F callable, TaskThreadPool::Priority priority = TaskThreadPool::Normal)
{
    auto node =
        result::makeNode([callable = std::move(callable)](ResultCore& core) mutable -> decltype(auto) {
            return result::call(core, callable);
        });
    node->start(pool, priority);
    return result::handleOf(std::move(node));
}
template <typename F>
auto run(TaskThreadPool& pool, F callable, TaskThreadPool::Priority priority = TaskThreadPool::Normal)
{
    return run(&pool, std::move(callable), priority);
}
/// @}

} // namespace veltor::concurrent
