#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/CancellationToken.h>
#include <veltor/concurrent/NestedScope.h>
#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/TaskThreadPool.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace veltor::concurrent {

class ContextLink;
class FunctionQueue;
class ResultHandler;

/// What every TaskResult stands on, whatever its type: the state of one function on its way to its end, and
/// the results that follow from it. Callers use TaskResult; this class is theirs no more than the layout of
/// one.
///
/// A node ends once, as succeeded, failed or cancelled. A node with a predecessor waits for that one's end,
/// and then runs its own function, or takes the end over when that is none it wants.
///
/// Thread-safe. No lock is held while a function, a destructor of one, or a signal runs.
class VELTOR_UTILS_EXPORT ResultCore : public std::enable_shared_from_this<ResultCore>
{
public:
    /// Where a function stands.
    enum class State : quint8
    {
        Waiting,   ///< for a thread, or for the result before
        Running,   ///< under way
        Succeeded, ///< has a value
        Failed,    ///< has an exception
        Canceled,  ///< given up
    };
    /// Which end of the result before makes a function run.
    enum class Wants : quint8
    {
        Success,      ///< a value
        Failure,      ///< an exception
        Cancellation, ///< none of both
        Any,          ///< each
    };
    /// A share in a node.
    using Ptr = std::shared_ptr<ResultCore>;

    ResultCore(const ResultCore&) = delete;
    ResultCore& operator=(const ResultCore&) = delete;
    virtual ~ResultCore();

    /// Where it stands now.
    [[nodiscard]] State state() const noexcept { return m_state.load(std::memory_order_acquire); }
    /// The last three states.
    [[nodiscard]] bool ended() const noexcept { return state() > State::Running; }
    /// Cancellation was asked for; the function may be on its way out.
    [[nodiscard]] bool cancelRequested() const noexcept { return m_cancelRequested.load(); }

    /// Waits for the end; see TaskResult::wait().
    bool wait(unsigned long ms);
    /// Returns when the node succeeded; throws its exception, or the one of a cancellation, otherwise.
    void rethrow();
    /// The exception of a failed node, null otherwise.
    [[nodiscard]] std::exception_ptr error();
    /// See TaskResult::cancel().
    void cancel();
    /// See TaskResult::progressHandler().
    [[nodiscard]] ProgressHandlerPtr progressHandler();

    /// Runs the function on @p pool.
    void start(TaskThreadPool* pool, TaskThreadPool::Priority priority);
    /// Runs it after @p former, in the thread of @p context.
    void startAfter(Ptr former, Wants wants, QObject* context);
    /// Runs it after @p former, on @p pool.
    void startAfter(Ptr former, Wants wants, TaskThreadPool* pool);
    /// Calls @p observer when the node has ended, now when it has: in the thread that ends it.
    void whenEnded(std::function<void()> observer);

    /// Runs the function in the calling thread, unless the node has begun or ended; the end is set before it
    /// returns.
    void run();
    /// Ends a node that still waits, since nobody will run it.
    void abandon();
    /// A node that waited is running now: who got true brings it to its end.
    [[nodiscard]] bool claim();
    /// Ends the node; without effect when it has ended.
    void finish(State state, const std::exception_ptr& error);
    /// A value was asked for that somebody has taken.
    [[noreturn]] static void throwTaken();
    /// @throws err::NullArgument
    [[noreturn]] static void throwInvalid();
    /// Tells of a request to cancel this node.
    [[nodiscard]] CancellationToken token();
    /// Where a function reports its progress to, and learns of its cancellation.
    [[nodiscard]] std::unique_ptr<NestedScope> makeScope();
    /// Written by that scope.
    /// @{
    void reportProgress(double percent);
    void reportText(const QString& text);
    /// @}

protected:
    /// A node that waits.
    ResultCore();

    /// Runs the function and keeps its value. Succeeded, Canceled, or Running when follow() was called.
    /// What it throws becomes the failure.
    virtual State call() = 0;
    /// Destroys the function: it has run, or never will.
    virtual void forget() noexcept = 0;
    /// Shares the value of @p other, which is of the same type and has succeeded.
    virtual void adopt(const Ptr& other) = 0;

    /// This node ends as @p inner does, whose value it shares.
    void follow(const Ptr& inner);

private:
    friend class ResultHandler;

    void startAfter(Ptr former, Wants wants);
    void formerEnded();
    void followedEnded();
    void dispatch();
    [[nodiscard]] bool isWork() const noexcept;
    void requestCancel();
    [[nodiscard]] Ptr former();
    void waitHelping();
    [[nodiscard]] bool help(const Ptr& former);
    void tell(State state, const std::exception_ptr& error);
    [[nodiscard]] std::shared_ptr<ResultHandler> handler();
    void reportUnseen() noexcept;

    std::atomic<State> m_state{State::Waiting};
    std::atomic<bool> m_cancelRequested{false};
    std::atomic<bool> m_looked{false};  // somebody has seen, or will see, how it ended
    std::atomic<bool> m_watched{false}; // there is a handler
    Wants m_wants = Wants::Any;
    bool m_source = true; // no predecessor
    TaskThreadPool::Priority m_priority = TaskThreadPool::Normal;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    Ptr m_former; // the predecessor, then what is followed; null after the end
    std::exception_ptr m_error;
    std::vector<std::function<void()>> m_observers;
    std::shared_ptr<ContextLink> m_context; // where to run: there
    std::shared_ptr<FunctionQueue> m_queue; // or there
    std::weak_ptr<ResultHandler> m_handler;
    std::optional<CancellationSource> m_cancellation; // once there is a token
    std::atomic<double> m_progress{0};
};

} // namespace veltor::concurrent
