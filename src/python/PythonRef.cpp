#include "python/PythonRef.h"

#include "python/PythonApi.h"

namespace veltor::python {

PythonRef PythonRef::share(PyObject* borrowed) noexcept
{
    Py_IncRef(borrowed);
    return PythonRef(borrowed);
}

// noexcept: an exception that escapes from the destruction of a Python object ends the process.
void PythonRef::drop(PyObject* object) noexcept
{
    if (!object || !Py_IsInitialized()) {
        return;
    }
    if (Py_REFCNT(object) != 1) {
        Py_DecRef(object);
        return;
    }
    const PyGILState_STATE state = PyGILState_Ensure();
    Py_DecRef(object);
    PyGILState_Release(state);
}

} // namespace veltor::python
