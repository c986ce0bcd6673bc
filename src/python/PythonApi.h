#pragma once

// The one place that includes Python.h, and the table by which all calls into the interpreter go. The limited
// API keeps these sources independent of the interpreter's version: everything beyond it does not compile.
// The table keeps the library independent of the interpreter's presence: nothing here may refer to a function
// or object of it by name, macros that do included, or the library does not link.

#define Py_LIMITED_API 0x03080000
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#define VELTOR_PYTHON_FUNCTIONS(ENTRY)                                                                       \
    ENTRY(PyBytes_AsString)                                                                                  \
    ENTRY(PyBytes_Size)                                                                                      \
    ENTRY(PyCallable_Check)                                                                                  \
    ENTRY(PyErr_Clear)                                                                                       \
    ENTRY(PyErr_Fetch)                                                                                       \
    ENTRY(PyErr_Format)                                                                                      \
    ENTRY(PyErr_GivenExceptionMatches)                                                                       \
    ENTRY(PyErr_NoMemory)                                                                                    \
    ENTRY(PyErr_NormalizeException)                                                                          \
    ENTRY(PyErr_Occurred)                                                                                    \
    ENTRY(PyErr_Restore)                                                                                     \
    ENTRY(PyErr_SetObject)                                                                                   \
    ENTRY(PyErr_SetString)                                                                                   \
    ENTRY(PyException_SetCause)                                                                              \
    ENTRY(PyException_SetContext)                                                                            \
    ENTRY(PyException_SetTraceback)                                                                          \
    ENTRY(PyGILState_Ensure)                                                                                 \
    ENTRY(PyGILState_Release)                                                                                \
    ENTRY(PyImport_ImportModule)                                                                             \
    ENTRY(PyObject_CallFunctionObjArgs)                                                                      \
    ENTRY(PyObject_CallMethodObjArgs)                                                                        \
    ENTRY(PyObject_CallObject)                                                                               \
    ENTRY(PyObject_GetAttrString)                                                                            \
    ENTRY(PyObject_Repr)                                                                                     \
    ENTRY(PyObject_Size)                                                                                     \
    ENTRY(PyObject_Str)                                                                                      \
    ENTRY(PyType_GetFlags)                                                                                   \
    ENTRY(PyUnicode_AsEncodedString)                                                                         \
    ENTRY(PyUnicode_AsUTF8String)                                                                            \
    ENTRY(PyUnicode_DecodeUTF8)                                                                              \
    ENTRY(PyUnicode_FromString)                                                                              \
    ENTRY(PyUnicode_FromWideChar)                                                                            \
    ENTRY(PyUnicode_Join)                                                                                    \
    ENTRY(Py_AtExit)                                                                                         \
    ENTRY(Py_DecRef)                                                                                         \
    ENTRY(Py_IncRef)                                                                                         \
    ENTRY(Py_IsInitialized)

#define VELTOR_PYTHON_OBJECTS(ENTRY)                                                                         \
    ENTRY(PyExc_Exception)                                                                                   \
    ENTRY(PyExc_RuntimeError)                                                                                \
    ENTRY(PyExc_TypeError)                                                                                   \
    ENTRY(PyExc_ValueError)                                                                                  \
    ENTRY(_Py_NoneStruct)

namespace veltor::python {

/// The functions and objects of the interpreter that the host has started, under their own names; objects as
/// pointers to the interpreter's variables.
struct PythonApi
{
#define VELTOR_ENTRY(name) decltype(&::name) name; // NOLINT(bugprone-macro-parentheses): it declares
    VELTOR_PYTHON_FUNCTIONS(VELTOR_ENTRY)
    VELTOR_PYTHON_OBJECTS(VELTOR_ENTRY)
#undef VELTOR_ENTRY

    /// As the macros Py…_Check do it.
    [[nodiscard]] bool isInstance(PyObject* object, unsigned long subclassFlag) const
    {
        return (PyType_GetFlags(Py_TYPE(object)) & subclassFlag) != 0;
    }
};

/// The table, looked up in the process at the first call that finds an interpreter. Thread-safe.
/// @throws err::CouldNotInitializeObject while the process holds no interpreter of 3.8 or later that runs
const PythonApi& api();

/// False also while the process holds no interpreter. Thread-safe.
bool isInterpreterRunning() noexcept;

} // namespace veltor::python
