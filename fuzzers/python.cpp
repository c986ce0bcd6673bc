// Texts over the border to Python and back: as UTF-16 of any kind, as bytes, as a literal in Python's source,
// and as the message of an error.

#include <Python.h>

#include "Fuzz.h"

#include "python/PythonRef.h"

#include <veltor/python/PythonBridge.h>

using namespace veltor::python;
using veltor::fuzz::demand;

/// What the interpreter keeps is no leak of ours.
extern "C" const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0";
}

namespace {

QString upToZero(const QString& text)
{
    return text.left(text.indexOf(QChar(0)) < 0 ? text.size() : text.indexOf(QChar(0)));
}

void checkText(const QString& text)
{
    const PythonRef object(QStringToPyString(text));
    demand(bool(object) && PyUnicode_GetLength(object.get()) <= text.size(), "any text is a Python text",
           text);
    demand(PyStringToQString(object.get()) == upToZero(text), "a text comes back", text);
    demand(!PyErr_Occurred() && !PyObjectToRepr(object.get()).isEmpty(), "a text can be shown", text);
}

PyObject* globals()
{
    return PyModule_GetDict(PyImport_AddModule("__main__"));
}

void checkLiteral(const QString& text)
{
    const QString quotes = QStringLiteral("\"\"\"");
    const bool isExcepted = text.contains(quotes) || text.endsWith(QLatin1Char('"')) ||
                            text.endsWith(QLatin1Char('\\')) || text.contains(QChar(0)) ||
                            text.contains(QLatin1Char('\r'));
    if (isExcepted || !text.isValidUtf16()) {
        return;
    }
    const QByteArray source = makePythonStringLiteral(text).toUtf8();
    const PythonRef read(PyRun_String(source.constData(), Py_eval_input, globals(), globals()));
    demand(bool(read), "a literal is one", text);
    demand(PyStringToQString(read.get()) == text, "a literal is read as its text", text);
}

void checkError(const QString& text)
{
    PyDict_SetItemString(globals(), "message", PythonRef(QStringToPyString(text)).get());
    const PythonRef none(PyRun_String("raise ValueError(message)", Py_file_input, globals(), globals()));
    demand(!none && PyErr_Occurred(), "an error is pending");
    const QString shown = currentError();
    demand(shown.startsWith(QLatin1String("Traceback (most recent call last):\n")) && !PyErr_Occurred(),
           "an error is shown and taken", shown);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const bool isRunning = (Py_InitializeEx(0), true);
    static_cast<void>(isRunning);
    const std::string_view raw = veltor::fuzz::textOf(bytes, size);
    const QByteArray aligned(raw.data(), static_cast<int>(raw.size()));
    const QString units(reinterpret_cast<const QChar*>(aligned.constData()), aligned.size() / 2);
    const QString text = veltor::fuzz::decoded(raw);
    checkText(units);
    checkText(text);
    checkLiteral(text);
    checkError(units);
    const PythonRef object(PyBytes_FromStringAndSize(raw.data(), static_cast<Py_ssize_t>(raw.size())));
    demand(PyStringToQString(object.get()) ==
               upToZero(QString::fromLatin1(aligned.constData(), aligned.size())),
           "bytes are Latin-1");
    return 0;
}
