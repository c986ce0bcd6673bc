// How many parameters a callable has.

#include <veltor/python/PythonBridge.h>

#include <veltor/err/Exceptions.h>

#include "python/FetchedError.h"
#include "python/PythonRef.h"

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

[[noreturn]] void throwPending()
{
    throw err::FunctionReturnsErrorCode(currentError(), QStringLiteral("NULL"), QString());
}

} // namespace

int callableArgsCount(PyObject* callable)
{
    PendingErrorKeeper keeper;
    const PythonRef inspect(api().PyImport_ImportModule("inspect"));
    if (!inspect) {
        throwPending();
    }
    const PythonRef name(api().PyUnicode_FromString("signature"));
    const PythonRef signature(
        name ? api().PyObject_CallMethodObjArgs(inspect.get(), name.get(), callable, nullptr) : nullptr);
    if (!signature) {
        throwPending();
    }
    const PythonRef parameters(api().PyObject_GetAttrString(signature.get(), "parameters"));
    const Py_ssize_t count = parameters ? api().PyObject_Size(parameters.get()) : -1;
    if (count < 0) {
        keeper.forget();
    }
    return static_cast<int>(count);
}

} // namespace veltor::python
