#include <veltor/python/PythonBridge.h>
#include <veltor/utils/PythonError.h>

#include "python/FetchedError.h"
#include "python/PythonRef.h"

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

/// The whole text; null, with an error pending, when the module fails.
PythonRef format(const FetchedError& error, PyObject* tracebackModule)
{
    PyObject* const value = error.value() ? error.value() : Py_None;
    const PythonRef lines(PyObject_CallMethod(tracebackModule, "format_exception", "OOO", error.type(), value,
                                              error.traceback()));
    const PythonRef nothing(lines ? PyUnicode_FromString("") : nullptr);
    return PythonRef(nothing ? PyUnicode_Join(nothing.get(), lines.get()) : nullptr);
}

} // namespace

QString currentError()
{
    FetchedError error = FetchedError::take();
    error.normalize();
    if (!error.traceback()) {
        return QStringLiteral("pythonError: traceback is null");
    }
    const PendingErrorKeeper keeper; // nothing is pending here: drops what the calls below may raise
    const PythonRef module(PyImport_ImportModule("traceback"));
    if (!module) {
        return QStringLiteral("pythonError: tracebackModule equals null");
    }
    const PythonRef text = format(error, module.get());
    if (!text) {
        PyErr_Clear();
        return PyObjectToRepr(error.value());
    }
    return PyStringToQString(text.get());
}

} // namespace veltor::python

namespace veltor::utils {

PythonError pythonError()
{
    return PythonError(python::currentError());
}

} // namespace veltor::utils
