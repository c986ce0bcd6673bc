// A native procedure on a thread of its own, while Python is called on this one.

#include <veltor/python/PythonBridge.h>

#include "python/FetchedError.h"
#include "python/NativeException.h"
#include "python/PythonRef.h"

#include <atomic>
#include <future>
#include <thread>

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

/// Sets the pending error when the callback cannot be called without arguments.
bool isRefused(PyObject* callback)
{
    if (!callback || !api().PyCallable_Check(callback)) {
        api().PyErr_SetString(*api().PyExc_TypeError, "callback argument is not callable");
        return true;
    }
    const bool refused = callableArgsCount(callback) != 0;
    if (refused) {
        api().PyErr_SetString(*api().PyExc_TypeError, "callback must not have any parameters");
    }
    return refused;
}

/// Calls the callback once. Its error must not stay pending, because no call into Python may be made then.
void pump(PyObject* callback, FetchedError& kept)
{
    const PythonRef result(api().PyObject_CallObject(callback, nullptr));
    if (result) {
        return;
    }
    FetchedError error = FetchedError::take();
    if (!kept || (error.isInterrupt() && !kept.isInterrupt())) {
        kept = std::move(error);
    }
}

/// Both failed: one becomes the pending error, the other its context.
void setPendingBoth(const std::exception_ptr& native, FetchedError callbackError)
{
    const PythonRef exception = toPythonException(native);
    if (!exception) {
        return;
    }
    callbackError.normalize();
    if (callbackError.isInterrupt()) {
        api().PyException_SetContext(callbackError.value(), PythonRef::share(exception.get()).release());
        callbackError.restore();
    } else {
        setPending(exception);
        api().PyException_SetContext(exception.get(), PythonRef::share(callbackError.value()).release());
    }
}

/// Runs some work on a thread of its own: on a pool's, all taken by procedures that come back here through
/// Python, all would wait for ever; and a pool does not tell when it has no thread.
class Worker
{
public:
    /// @throws std::system_error when there is no thread to be had
    explicit Worker(std::packaged_task<void()>& work)
        : m_thread([this, &work] {
            const Ending ending{m_ended};
            work();
        })
    {}
    ~Worker() { m_thread.join(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    [[nodiscard]] bool isRunning() const noexcept { return !m_ended; }

private:
    /// Also when the work ends its thread.
    struct Ending
    {
        ~Ending() { ended = true; }
        std::atomic<bool>& ended;
    };

    std::atomic<bool> m_ended{false};
    std::thread m_thread;
};

void run(std::function<void()> procedure, PyObject* callback)
{
    std::packaged_task<void()> work(std::move(procedure));
    std::future<void> outcome = work.get_future();
    FetchedError callbackError;
    {
        const Worker worker(work);
        while (worker.isRunning()) {
            pump(callback, callbackError);
        }
    }
    work = {}; // a procedure that did not come to its end has broken its promise
    try {
        outcome.get();
        if (callbackError) {
            callbackError.restore();
        }
    } catch (...) {
        if (callbackError) {
            setPendingBoth(std::current_exception(), std::move(callbackError));
        } else {
            setPending(toPythonException(std::current_exception()));
        }
    }
}

} // namespace

void Concurrent(std::function<void()> procedure, PyObject* callback)
{
    PendingErrorKeeper keeper;
    try {
        if (!procedure) {
            api().PyErr_SetString(*api().PyExc_ValueError, "Undefined veltor procedure");
        } else if (!isRefused(callback)) {
            run(std::move(procedure), callback);
        }
    } catch (...) {
        setPending(toPythonException(std::current_exception()));
    }
    if (api().PyErr_Occurred()) {
        keeper.forget();
    }
}

} // namespace veltor::python
