// Python exceptions made of native ones.

#include "python/NativeException.h"

#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/HandleCurrentException.h>

#include "python/FetchedError.h"

#include <cstring>
#include <new>
#include <vector>

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

/// The exception and those nested in it, outermost first, without mere carriers.
std::vector<std::exception_ptr> levelsOf(const std::exception_ptr& native)
{
    std::vector<std::exception_ptr> levels;
    const auto collect = [&levels](unsigned) {
        try {
            throw;
        } catch (const err::ConcurrentNestedException& carrier) {
            if (carrier.nested_ptr()) {
                return true;
            }
        } catch (...) {
            // Whatever else is thrown is a level.
        }
        levels.push_back(std::current_exception());
        return true;
    };
    try {
        std::rethrow_exception(native);
    } catch (...) {
        err::handleCurrentException(collect);
    }
    return levels;
}

PythonRef textOf(const std::exception_ptr& native)
{
    try {
        std::rethrow_exception(native);
    } catch (const std::exception& exception) {
        const char* const text = exception.what();
        return PythonRef(
            api().PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(std::strlen(text)), "backslashreplace"));
    } catch (...) {
        return PythonRef(api().PyUnicode_FromString("Unknown native exception"));
    }
}

PythonRef instanceFor(const std::exception_ptr& native)
{
    PyObject* const type = findExceptionType(native);
    const PythonRef text = textOf(native);
    PythonRef instance(text ? api().PyObject_CallFunctionObjArgs(type, text.get(), nullptr) : nullptr);
    if (instance && !api().isInstance(instance.get(), Py_TPFLAGS_BASE_EXC_SUBCLASS)) {
        api().PyErr_SetObject(type, text.get()); // raises the error that Python has for such a class
        return {};
    }
    return instance;
}

} // namespace

PythonRef toPythonException(const std::exception_ptr& native) noexcept
try {
    const std::vector<std::exception_ptr> levels = levelsOf(native);
    PythonRef inner;
    for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
        PythonRef outer = instanceFor(*level);
        if (!outer) {
            return {};
        }
        if (inner) {
            api().PyException_SetCause(outer.get(), inner.release());
        }
        inner = std::move(outer);
    }
    return inner;
} catch (const std::bad_alloc&) {
    api().PyErr_NoMemory();
    return {};
}

void setPending(const PythonRef& exception) noexcept
{
    if (exception) {
        api().PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.get())), exception.get());
    }
}

} // namespace veltor::python
