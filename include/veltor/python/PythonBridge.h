#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <exception>
#include <functional>

struct _object; // NOLINT(bugprone-reserved-identifier): the interpreter's own name
/// As Python.h declares it; the two headers may be included in either order.
using PyObject = _object;

class QObject;

/// Where native code and the application's embedded Python interpreter (3.8 or later) meet: strings,
/// errors and callbacks.
///
/// Threads: unless a function says otherwise, the caller holds the interpreter lock, and Python code that a
/// function runs may give it to other threads meanwhile. The interpreter must be running. References that
/// are passed in are borrowed and stay the caller's.
///
/// A Python error that is pending when a function is called stays pending and untouched, and an error
/// that arises inside is dropped, except where a function says otherwise.
///
/// The library is linked to no interpreter: the host's is found in the process at the first call, also where
/// a plugin loaded it for itself; of several, the one that runs. While there is none, every function that
/// needs one throws err::CouldNotInitializeObject with the reason, Concurrent() included.
///
/// A library built without the Python bridge holds makePythonStringLiteral() and getHierarchy() only.
namespace veltor::python {

/// The text of a Python string.
///
/// Nothing but an embedded zero shortens the text: a lone surrogate and a leading byte-order mark are kept.
/// @param o  a `str`, or a `bytes` that is read as Latin-1; subclasses too; null and any other type
///     give an empty string
/// @return the text up to, not including, its first zero character; empty also when it cannot be
///     converted, which only lack of memory and texts of 2 GiB bring about
[[nodiscard]] VELTOR_UTILS_EXPORT QString PyStringToQString(PyObject* o);

/// What Python's `repr` gives for an object. "<NULL>" for null, empty when `repr` raises.
[[nodiscard]] VELTOR_UTILS_EXPORT QString PyObjectToRepr(PyObject* o);

/// What Python's `str` gives for an object. "<NULL>" for null, empty when `str` raises.
[[nodiscard]] VELTOR_UTILS_EXPORT QString PyObjectToStr(PyObject* o);

/// A Python `str` of the same text: zeros and lone surrogates are kept, and where the platform's wide
/// character has 32 bits, each surrogate pair becomes the one character that it stands for.
/// @return a new reference; null, with a Python error pending, when memory is short
[[nodiscard]] VELTOR_UTILS_EXPORT PyObject* QStringToPyString(const QString& s);

/// @p s between r""" and """, for pasting into Python source. Nothing is escaped: a text that contains
/// three double quotes in a row, a zero or a carriage return, or ends in a double quote or a backslash,
/// gives a literal that Python does not read back. Needs no interpreter; reentrant.
[[nodiscard]] VELTOR_UTILS_EXPORT QString makePythonStringLiteral(const QString& s);

/// The pending Python error as the text of its traceback, as the interpreter would print it. Reading the
/// error consumes it: none is pending afterwards.
///
/// @return "pythonError: traceback is null" when the error has no traceback, which is so until it has passed
///     through Python code, or when none is pending; "pythonError: tracebackModule equals null" when Python's
///     module "traceback" cannot be imported; the `repr` of the error when that module fails
VELTOR_UTILS_EXPORT QString currentError();

/// How many parameters `inspect.signature` finds, those with defaults and `*args` included; a bound
/// method's `self` does not count.
///
/// @return the number; -1 with a Python error pending when the signature cannot be counted
/// @throws err::FunctionReturnsErrorCode, with the traceback in its message, when there is no signature:
///     @p callable is null, not callable, or built in without one
VELTOR_UTILS_EXPORT int callableArgsCount(PyObject* callable);

/// The class names of an object's meta-object chain without their namespaces, most derived first, "QObject"
/// last; empty for null. Needs no interpreter; reentrant, but not while @p obj is built or destroyed.
[[nodiscard]] VELTOR_UTILS_EXPORT QStringList getHierarchy(const QObject* obj);

/// The class of the application's module "veltor.common" to raise for a native exception:
///
/// | native exception | class |
/// |---|---|
/// | `std::out_of_range` | OutOfRangeException |
/// | other `std::logic_error` | LogicException |
/// | `std::runtime_error` | RuntimeException |
/// | anything else, of any type, or none | BasicException |
///
/// The first call imports the module and keeps the four classes as long as the interpreter runs; an
/// interpreter that is started later is asked again. When the module cannot be imported, or an attribute is
/// missing or no exception class, the reason is logged at level Error, Python's own RuntimeError stands in
/// for all four, and the next call tries again.
///
/// @return a borrowed reference, never null
[[nodiscard]] VELTOR_UTILS_EXPORT PyObject* findExceptionType(const std::exception_ptr& e);

/// Runs a native procedure on a thread of its own and calls a Python callback on this thread,
/// again and again without a pause, until the procedure has finished. Meant to be the body of a Python
/// binding: failures are pending Python errors when it returns, and no native exception leaves it.
///
/// This function keeps the interpreter lock. It is the callback that gives other Python threads their turn,
/// as any Python function does: it may sleep, process events, show progress. A procedure that needs the
/// lock therefore waits for ever beside a callback that is a built-in function which never lets go of it.
///
/// @param procedure  must not touch Python without taking the interpreter lock. It is destroyed on the
///     calling thread before this function returns, whether it ran or not.
/// @param callback  a callable without parameters; its results are discarded
///
/// The procedure does not run, and the error is pending, when @p procedure is empty (ValueError), when no
/// thread can be started (the class for std::system_error), or when
/// @p callback is null, not callable or has parameters (TypeError) or has no signature to be found (the
/// class for the exception of callableArgsCount()). An error that was pending at the call hinders nothing;
/// it is pending again afterwards, unless a newer one is.
///
/// What the procedure throws becomes an instance of findExceptionType() with what() as its text, and the
/// exceptions nested in it become its `__cause__`, one by one; bytes that are no UTF-8 are shown as `\xNN`,
/// an err::ConcurrentNestedException stands for what it carries.
///
/// A callback that raises is called again all the same. Its first error is pending at the end; an
/// interrupt (KeyboardInterrupt, SystemExit, whatever is no `Exception`) takes precedence over an
/// ordinary error. When the procedure throws too, its exception is pending, unless the callback was
/// interrupted; the other one is found in `__context__`.
VELTOR_UTILS_EXPORT void Concurrent(std::function<void()> procedure, PyObject* callback);

} // namespace veltor::python
