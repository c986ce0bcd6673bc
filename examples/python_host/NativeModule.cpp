#include <Python.h>

#include "NativeModule.h"

#include <veltor/python/PythonBridge.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>

#include <stdexcept>

namespace {

using namespace veltor;

/// Native code that knows nothing of Python: it throws.
QString digestOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error((path + QStringLiteral(": ") + file.errorString()).toStdString());
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&file)) {
        throw std::runtime_error((path + QStringLiteral(": cannot be read")).toStdString());
    }
    return QString::fromLatin1(hash.result().toHex());
}

//! [long]
/// A binding of a long procedure: what it throws is a pending Python error when Concurrent returns.
PyObject* digest(PyObject* /*module*/, PyObject* arguments)
{
    PyObject* path = nullptr;
    PyObject* progress = nullptr;
    if (!PyArg_ParseTuple(arguments, "UO", &path, &progress)) {
        return nullptr;
    }
    QString result;
    python::Concurrent([&result, name = python::PyStringToQString(path)] { result = digestOf(name); },
                       progress);
    return PyErr_Occurred() ? nullptr : python::QStringToPyString(result);
}
//! [long]

//! [short]
/// A binding of a short function, which runs with the interpreter lock: the class for what it throws is
/// found here.
PyObject* applicationClass(PyObject* /*module*/, PyObject* argument)
{
    try {
        const QStringList names = python::getHierarchy(QCoreApplication::instance());
        const int index = static_cast<int>(PyLong_AsLong(argument));
        if (PyErr_Occurred()) {
            return nullptr;
        }
        if (index < 0 || index >= names.size()) {
            throw std::out_of_range("no class of this number");
        }
        return python::QStringToPyString(names[index]);
    } catch (const std::exception& e) {
        PyErr_SetString(python::findExceptionType(std::current_exception()), e.what());
        return nullptr;
    }
}
//! [short]

//! [module]
PyMethodDef methods[] = {
    {"digest", digest, METH_VARARGS, "digest(path, progress) -> str"},
    {"application_class", applicationClass, METH_O, "application_class(index) -> str"},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "native", nullptr, -1, methods, nullptr, nullptr, nullptr, nullptr};

PyObject* makeModule()
{
    return PyModule_Create(&definition);
}

} // namespace

void addNativeModule()
{
    PyImport_AppendInittab("native", &makeModule);
}
//! [module]
