#pragma once

// An interpreter for each test, started and finalised in one process, with the application's module.

#include <Python.h>

#include "python/FetchedError.h"
#include "python/PythonRef.h"
#include "support/Printers.h"

#include <veltor/python/PythonBridge.h>

#include <gtest/gtest.h>

namespace veltor::python {

class PythonTest : public testing::Test
{
protected:
    PythonTest() { Py_InitializeEx(0); }
    ~PythonTest() override { EXPECT_EQ(Py_FinalizeEx(), 0); }

    static PyObject* globals() { return PyModule_GetDict(PyImport_AddModule("__main__")); }

    static void run(const char* code)
    {
        const PythonRef result(PyRun_String(code, Py_file_input, globals(), globals()));
        EXPECT_TRUE(result) << currentError().toStdString();
    }

    static PythonRef eval(const char* expression)
    {
        PythonRef result(PyRun_String(expression, Py_eval_input, globals(), globals()));
        EXPECT_TRUE(result) << currentError().toStdString();
        return result;
    }

    /// Makes a Python error pending, with a traceback.
    static void raise(const char* statement)
    {
        EXPECT_EQ(PyRun_String(statement, Py_file_input, globals(), globals()), nullptr);
    }

    /// Takes the pending error and shows it, with its causes and contexts.
    static QString takeError()
    {
        FetchedError error = FetchedError::take();
        error.normalize();
        QString text = PyObjectToRepr(error.value());
        for (PyObject* value = error.value(); value;) {
            const PythonRef cause(PyException_GetCause(value));
            const PythonRef context(PyException_GetContext(value));
            value = cause ? cause.get() : context.get();
            if (value) {
                text += (cause ? QStringLiteral(" from ") : QStringLiteral(" in ")) + PyObjectToRepr(value);
            }
        }
        return text;
    }

    static void installCommonModule()
    {
        run("import sys, types\n"
            "common = types.ModuleType('veltor.common')\n"
            "exec('class BasicException(Exception): pass\\n'\n"
            "     'class RuntimeException(BasicException): pass\\n'\n"
            "     'class LogicException(BasicException): pass\\n'\n"
            "     'class OutOfRangeException(LogicException): pass\\n', common.__dict__)\n"
            "sys.modules['veltor'] = types.ModuleType('veltor')\n"
            "sys.modules['veltor.common'] = common\n");
    }
};

} // namespace veltor::python
