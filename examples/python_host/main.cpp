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

/// Runs the script as the interpreter runs a program. @throws utils::PythonError when it raises
void runScript(const QStringList& words)
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
    owned(PyObject_CallMethod(runpy.get(), "run_path", "OOs", script, Py_None, "__main__"));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty()) {
        std::fputs("Usage: python_host SCRIPT [ARGUMENT...]\n", stderr);
        return 2;
    }
    addNativeModule();
    Py_InitializeEx(0);
    int code = 0;
    try {
        runScript(words);
    } catch (const utils::PythonError& e) {
        std::fputs(e.what(), stderr);
        code = 1;
    }
    return Py_FinalizeEx() == 0 ? code : 3;
}
