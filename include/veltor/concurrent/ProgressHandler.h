#pragma once

#include <veltor/Export.h>
#include <veltor/concurrent/CancellationToken.h>
#include <veltor/err/ConcurrentNestedException.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QFlags>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QUuid>

#include <functional>
#include <memory>

namespace veltor::progress {

/// An increment of progress.
struct Add
{
    double value = 0.0; ///< in units of the handler's range; negative for a step back
};

} // namespace veltor::progress

namespace veltor::concurrent {

/// A progress scale. A plain value, reentrant.
struct Range
{
    double start = 0.0; ///< value before the first step
    double end = 100.0; ///< value when all is done; any number, below start too
};

/// What a presenter calls instead of its usual way to cancel.
using CancelMethod = std::function<void()>;

class ProgressHandler;
/// A share in a handler.
using ProgressHandlerPtr = std::shared_ptr<ProgressHandler>;

/// Deleter for handlers that any thread may release last: destroys the handler at once when no event of
/// another thread can be under way to it, and in its own thread otherwise.
VELTOR_UTILS_EXPORT void releaseHandler(ProgressHandler* handler);

/// The observable face of a running operation: work writes values, messages and errors into it, and
/// observers connect to its signals.
///
/// Threads: every member function may be called from any thread, except those that say otherwise. A value
/// write is a closure of its own that runs in the handler's thread (see setInvokeType()), with its own two
/// signals; nothing is merged. A loop over many items therefore reports through a nested scope, which
/// throttles (see NestedScope::setOptionalProgress()). The other signals are emitted in the caller's
/// thread. No signal is emitted under a lock.
///
/// Lifetime: held by shared pointers. A handler that may be released last in another thread than its own
/// is made with releaseHandler() as deleter; Task does so. A handler whose thread is gone, or whose task
/// is gone, belongs to no thread: writes then take effect at once in the caller's thread.
class VELTOR_UTILS_EXPORT ProgressHandler : public QObject
{
    Q_OBJECT

public:
    /// Free flags for the presenting side; only the default is known here.
    enum ExtraData : int
    {
        DefaultExtraData = 0x1, ///< what a handler has at first
    };
    Q_DECLARE_FLAGS(ExtraDataFlags, ExtraData)

    /// The range is 0 to 100, the value 0.
    explicit ProgressHandler(QObject* parent = nullptr);
    ~ProgressHandler() override;

    /// Sets the value. It is not clamped; NaN and infinities pass through. Emits progressValueChanged(value)
    /// and progressValueIncreased() with the absolute difference: a step back counts as an increment too.
    void setProgress(double value);
    /// Adds to the value, then as above.
    void setProgress(progress::Add increment);
    /// Replaces the scale, emits progressRangeChanged(), and sets the value to the scale's start with an
    /// increment of 0.
    void setProgressRange(Range range);
    /// Sets the value to the end of range(), unless setIgnoreFinal(true); of these, what holds when it takes
    /// effect counts.
    void setFinalProgress();
    /// As setProgress(), at once and in the caller's thread.
    void setProgress_impl(double value);

    /// The value, in the scale of range(). Writes that are still on their way do not count.
    [[nodiscard]] double progress() const noexcept;
    /// The scale, 0 to 100 at first.
    [[nodiscard]] Range range() const;
    /// The handler's own number, for presenters that keep handlers in a table.
    [[nodiscard]] const QUuid& id() const noexcept;
    /// The operation is under way. Of a task: started, neither paused nor ended; else: not finished.
    [[nodiscard]] bool isRunning() const;
    /// The operation has ended, in whatever way.
    [[nodiscard]] bool isFinished() const;
    /// Cancellation was asked for; the work may still be on its way out.
    [[nodiscard]] bool isCanceled() const;
    /// True while the destructor runs.
    [[nodiscard]] bool isDeleted() const noexcept;

    /// @name Requests to the presenter
    /// Each emits one signal and keeps nothing.
    /// @{

    /// messageChanged(): what is being done, for the user.
    void setMessage(const QString& text);
    /// windowTitleChanged().
    void setWindowTitle(const QString& title);
    /// showProgressByRequest(): now, without the delay that presenters have for short work.
    void showProgress();
    /// hideProgress(true).
    void hide();
    /// hideProgress(false).
    void show();
    /// cancelableFlagChanged(true).
    void enableCancelable();
    /// cancelableFlagChanged(false).
    void disableCancelable();
    /// cancelMethodChanged(): @p method replaces the presenter's call of cancel(); an empty one restores
    /// it. It runs in the presenter's thread.
    void setCancelMethod(std::function<void()> method);
    /// @}

    /// The presenting side's flags.
    [[nodiscard]] QFlags<ExtraData> extraData() const noexcept;
    /// Replaces them; emits nothing.
    void setExtraData(const QFlags<ExtraData>& flags) noexcept;
    /// When true, setFinalProgress() does nothing.
    void setIgnoreFinal(bool ignore) noexcept;
    /// How value writes reach the handler's thread; Qt::AutoConnection at first. A blocking type waits for
    /// that thread's event loop; a write from that thread itself takes effect at once.
    void setInvokeType(Qt::ConnectionType type) noexcept;
    /// Marks a handler without a task as finished; emits nothing.
    void finish() noexcept;
    /// Reports a failure: error() here, the error state in a task's handler.
    void setError(const err::ConcurrentNestedException& error);

    /// A later cancel() cancels @p handler too. A null one is ignored.
    void registerSubHandler(std::shared_ptr<ProgressHandler> handler);
    /// Tells code that knows no handler whether cancel() was called; of a task's handler, whether the task's
    /// cancellation was asked for. It may outlive the handler.
    [[nodiscard]] CancellationToken cancellationToken() const;

    /// Returns when the operation has ended, at once when it had: a task when its state says so, whatever
    /// finished() of its parts is passed on here; anything else at finished(). Runs a local event loop with
    /// @p flags, so the calling thread's events are delivered meanwhile.
    void waitForFinished(QFlags<QEventLoop::ProcessEventsFlag> flags = QEventLoop::AllEvents);
    /// The same until @p deadline at most.
    /// @return isFinished()
    bool waitForFinished(QDeadlineTimer deadline,
                         QFlags<QEventLoop::ProcessEventsFlag> flags = QEventLoop::AllEvents);
    /// Called by the work between its steps.
    /// @throws std::runtime_error when cancellation was asked for
    void throwIfCanceled() const;

    /// Qt's; the handler's own queued calls arrive here. An override calls this one.
    bool event(QEvent* event) override;

Q_SIGNALS:
    /// The operation ended by a cancellation or an error, or sendCancel() was called.
    void canceled();
    /// Cancellation was asked for.
    void cancelRequest();
    /// The work begins.
    void started();
    /// The operation has ended, in whatever way; the last of its signals, and emitted once.
    void finished();
    /// The work was done; finished() follows.
    void successful();
    /// The work has stopped until continueWork().
    void paused();
    /// What is being done, for the user.
    void messageChanged(const QString& progressText);
    /// The scale was replaced.
    void progressRangeChanged(const concurrent::Range& range);
    /// The value, in the scale of range().
    void progressValueChanged(double progressValue);
    /// By how much the value moved: never negative, 0 with a new range.
    void progressValueIncreased(progress::Add addToProgress);
    /// The title that the presenter's window should have.
    void windowTitleChanged(const QString& title);
    /// The operation failed; ConcurrentNestedException::raise() throws what the work threw. Of a task,
    /// canceled() and finished() follow.
    void error(const err::ConcurrentNestedException& error);
    /// The presenter should show the operation at once.
    void showProgressByRequest();
    /// The presenter should hide the operation, or show it again.
    void hideProgress(bool hide);
    /// Whether the presenter should let the user cancel.
    void cancelableFlagChanged(bool state);
    /// What the presenter should call to cancel; empty for its usual way.
    void cancelMethodChanged(concurrent::CancelMethod cancelMethod);

public Q_SLOTS:
    /// cancel(), then canceled() and cancelRequest().
    void sendCancel();
    /// sendCancel(), then waits for the end with an event loop that leaves the user's input alone. A task
    /// that waits in a pool's queue leaves it and ends at once; one that was not handed over is not waited
    /// for.
    void stopTaskWithEvents();
    /// The same without any event of the calling thread: the work must not need that thread, and must not run
    /// in it.
    void stopTaskWithoutEvents();
    /// Asks for cancellation: sets the flag and cancels the sub-handlers in the order of registration.
    virtual void cancel();

protected:
    /// What the public function of this name answers or does. A subclass that stands for something else
    /// overrides it; any thread calls it. Here it speaks of the handler itself: cancel() and finish()
    /// decide, and running is not finished.
    /// @{
    virtual bool isRunning_impl() const;
    virtual bool isFinished_impl() const;
    virtual bool isCanceled_impl() const;
    virtual Range range_impl() const;
    virtual void setProgressRange_impl(Range range);
    virtual void setError_impl(const err::ConcurrentNestedException& error);
    virtual CancellationToken cancellationToken_impl() const;
    /// A stop was asked for: ends work that has not begun, where it waits for its turn. False when the work
    /// was not handed over to anybody, so that no end is to be waited for; true here.
    virtual bool withdraw_impl();
    /// @}

    /// Stores the scale without a signal.
    void storeRange(Range range);
    /// Stores the value without a signal.
    void storeProgress(double value) noexcept;
    /// Answers isCanceled() and the tokens from now on, without a signal.
    void storeCanceled();

private:
    friend class ProgressSizeDecorator;
    friend class ResultReceiver;
    friend class Task;
    friend class TaskCore;
    friend class TaskProgressHandler;
    friend struct HandlerAccess; // no friend function: GCC forgets that it is imported on Windows

    template <typename F>
    void write(F effect);
    void emitProgress(double former, double value);

    struct Private;
    const std::unique_ptr<Private> m_p;
};

} // namespace veltor::concurrent

Q_DECLARE_METATYPE(veltor::progress::Add)
Q_DECLARE_METATYPE(veltor::concurrent::Range)
Q_DECLARE_METATYPE(veltor::concurrent::CancelMethod)
