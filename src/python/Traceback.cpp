// The pending error as the text of its traceback.

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
    PyObject* const value = error.value() ? error.value() : api()._Py_NoneStruct;
    const PythonRef function(api().PyUnicode_FromString("format_exception"));
    const PythonRef lines(function ? api().PyObject_CallMethodObjArgs(tracebackModule, function.get(),
                                                                      error.type(), value, error.traceback(),
                                                                      nullptr)
                                   : nullptr);
    const PythonRef nothing(lines ? api().PyUnicode_FromString("") : nullptr);
    return PythonRef(nothing ? api().PyUnicode_Join(nothing.get(), lines.get()) : nullptr);
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
    const PythonRef module(api().PyImport_ImportModule("traceback"));
    if (!module) {
        return QStringLiteral("pythonError: tracebackModule equals null");
    }
    const PythonRef text = format(error, module.get());
    if (!text) {
        api().PyErr_Clear();
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
