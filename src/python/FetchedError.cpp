// A Python error outside of the interpreter.

#include "python/FetchedError.h"

#include "python/PythonApi.h"

namespace veltor::python {

FetchedError FetchedError::take()
{
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* traceback = nullptr;
    api().PyErr_Fetch(&type, &value, &traceback);
    FetchedError error;
    error.m_type = PythonRef(type);
    error.m_value = PythonRef(value);
    error.m_traceback = PythonRef(traceback);
    return error;
}

void FetchedError::restore() noexcept
{
    api().PyErr_Restore(m_type.release(), m_value.release(), m_traceback.release());
}

void FetchedError::normalize() noexcept
{
    PyObject* type = m_type.release();
    PyObject* value = m_value.release();
    PyObject* traceback = m_traceback.release();
    api().PyErr_NormalizeException(&type, &value, &traceback);
    m_type = PythonRef(type);
    m_value = PythonRef(value);
    m_traceback = PythonRef(traceback);
    if (value && traceback) {
        api().PyException_SetTraceback(value, traceback);
    }
}

bool FetchedError::isInterrupt() const noexcept
{
    return m_type && !api().PyErr_GivenExceptionMatches(m_type.get(), *api().PyExc_Exception);
}

} // namespace veltor::python
