// A native procedure on a thread of its own, while Python is called on this one.

#include <veltor/python/PythonBridge.h>

#include "platform/HandlerStack.h"
#include "python/FetchedError.h"
#include "python/NativeException.h"
#include "python/PythonRef.h"

#include <atomic>
#include <exception>
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

/// Runs a procedure on a thread of its own: on a pool's, all taken by procedures that come back here through
/// Python, all would wait for ever; and a pool does not tell when it has no thread.
class Worker
{
public:
    /// @throws std::system_error when there is no thread to be had
    explicit Worker(const std::function<void()>& procedure)
        : m_thread([this, &procedure] { work(procedure); })
    {}
    ~Worker() { wait(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    [[nodiscard]] bool isRunning() const noexcept { return !m_ended; }

    /// Waits for the thread's end. @return what the procedure threw, null when it came to its end
    const std::exception_ptr& wait()
    {
        if (m_thread.joinable()) {
            m_thread.join();
        }
        return m_fault;
    }

private:
    void work(const std::function<void()>& procedure)
    {
        const platform::HandlerStack handlerStack;
        struct Ending // also when the procedure ends its thread
        {
            ~Ending() { ended = true; }
            std::atomic<bool>& ended;
        };
        const Ending ending{m_ended};
        try {
            procedure();
            m_fault = nullptr;
        } catch (...) {
            if (!std::current_exception()) {
                throw; // it is none: the thread is being cancelled, which nobody may stop
            }
            m_fault = std::current_exception();
        }
    }

    std::atomic<bool> m_ended{false};
    std::exception_ptr m_fault = std::make_exception_ptr(
        std::future_error(std::future_errc::broken_promise)); // unless it comes to its end
    std::thread m_thread;                                     // last: it uses the others
};

void run(std::function<void()> procedure, PyObject* callback)
{
    FetchedError callbackError;
    std::exception_ptr fault;
    {
        Worker worker(procedure);
        while (worker.isRunning()) {
            pump(callback, callbackError);
        }
        fault = worker.wait();
    }
    procedure = nullptr; // before an error is pending
    if (fault && callbackError) {
        setPendingBoth(fault, std::move(callbackError));
    } else if (fault) {
        setPending(toPythonException(fault));
    } else if (callbackError) {
        callbackError.restore();
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
