// References that are dropped on any thread.

#include "python/PythonRef.h"

#include "python/PythonApi.h"

namespace veltor::python {

PythonRef PythonRef::share(PyObject* borrowed) noexcept
{
    api().Py_IncRef(borrowed);
    return PythonRef(borrowed);
}

// noexcept: an exception that escapes from the destruction of a Python object ends the process.
void PythonRef::drop(PyObject* object) noexcept
{
    if (!object || !isInterpreterRunning()) {
        return;
    }
    if (Py_REFCNT(object) != 1) {
        api().Py_DecRef(object);
        return;
    }
    const PyGILState_STATE state = api().PyGILState_Ensure();
    api().Py_DecRef(object);
    api().PyGILState_Release(state);
}

} // namespace veltor::python
