#include <veltor/python/PythonBridge.h>

#include "python/FetchedError.h"
#include "python/NativeException.h"
#include "python/PythonRef.h"

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QThreadPool>

#include <future>

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

void run(std::function<void()> procedure, PyObject* callback)
{
    std::packaged_task<void()> work(std::move(procedure));
    std::future<void> outcome = work.get_future();
    FetchedError callbackError;
    {
        // On the global pool, full of procedures that come back here through Python, all would wait for ever.
        QThreadPool pool;
        const QFuture<void> running = QtConcurrent::run(&pool, [&work] { work(); });
        while (running.isRunning()) {
            pump(callback, callbackError);
        }
    }
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
