// Embeds Python and runs a script that uses native functions; an error that the script does not handle
// is shown as a traceback.
//
//     python_host SCRIPT [ARGUMENT...]
//
// The script's directory holds the application's module veltor/common.py.

#include <Python.h>

#include "NativeModule.h"

#include <veltor/python/PythonBridge.h>
#include <veltor/utils/PythonError.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <array>
#include <cstdio>
#include <memory>

namespace {

using namespace veltor;

/// A reference that is used and dropped with the interpreter lock held.
using Reference = std::unique_ptr<PyObject, decltype(&Py_DecRef)>;

/// Takes over a new reference. @throws utils::PythonError for null
Reference owned(PyObject* result)
{
    if (!result) {
        throw utils::pythonError();
    }
    return Reference(result, &Py_DecRef);
}

/// What a script wants by sys.exit(): takes the pending SystemExit.
int exitCode()
{
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* trace = nullptr;
    PyErr_Fetch(&type, &value, &trace);
    PyErr_NormalizeException(&type, &value, &trace);
    const std::array<Reference, 3> taken{Reference(type, &Py_DecRef), Reference(value, &Py_DecRef),
                                         Reference(trace, &Py_DecRef)};
    const Reference code = owned(PyObject_GetAttrString(value, "code"));
    if (code.get() == Py_None) {
        return 0;
    }
    if (PyLong_Check(code.get())) {
        return static_cast<int>(PyLong_AsLong(code.get()));
    }
    std::fprintf(stderr, "%s\n", qUtf8Printable(python::PyObjectToStr(code.get()))); // a last word
    return 1;
}

//! [run]
/// Runs the script as the interpreter runs a program. @return its exit code
/// @throws utils::PythonError for what it raised and did not handle
int runScript(const QStringList& words)
{
    const Reference arguments = owned(PyList_New(0));
    for (const QString& word : words) {
        PyList_Append(arguments.get(), owned(python::QStringToPyString(word)).get());
    }
    PySys_SetObject("argv", arguments.get());
    const Reference directory = owned(python::QStringToPyString(QFileInfo(words.first()).absolutePath()));
    PyList_Insert(PySys_GetObject("path"), 0, directory.get());

    const Reference runpy = owned(PyImport_ImportModule("runpy"));
    PyObject* const script = PyList_GetItem(arguments.get(), 0);
    PyObject* const names = PyObject_CallMethod(runpy.get(), "run_path", "OOs", script, Py_None, "__main__");
    if (!names && PyErr_ExceptionMatches(PyExc_SystemExit)) {
        return exitCode();
    }
    owned(names);
    return 0;
}
//! [run]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty()) {
        std::fputs("Usage: python_host SCRIPT [ARGUMENT...]\n", stderr);
        return 2;
    }
    //! [host]
    addNativeModule();
    Py_InitializeEx(0);
    int code = 0;
    try {
        code = runScript(words);
    } catch (const utils::PythonError& e) {
        std::fputs(e.what(), stderr);
        code = 1;
    }
    return Py_FinalizeEx() == 0 ? code : 3;
    //! [host]
}
