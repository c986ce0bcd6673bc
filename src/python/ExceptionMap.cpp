// The Python classes that stand for native exceptions.

#include <veltor/python/PythonBridge.h>

#include <veltor/logging/Logger.h>

#include "python/FetchedError.h"
#include "python/PythonRef.h"

#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <typeindex>
#include <unordered_map>

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

constexpr char moduleName[] = "veltor.common";

/// Native type to Python class. The references are never given back: the classes live as long as their
/// interpreter.
using ExceptionMap = std::unordered_map<std::type_index, PyObject*>;

/// The map of the running interpreter, null until it is built. Written with the interpreter lock held.
std::atomic<const ExceptionMap*> currentMap{nullptr};

/// The interpreter is gone, its classes with it; the next one has its own.
void forgetMap()
{
    delete currentMap.exchange(nullptr);
}

bool isExceptionClass(PyObject* object)
{
    return api().isInstance(object, Py_TPFLAGS_TYPE_SUBCLASS) &&
           (api().PyType_GetFlags(reinterpret_cast<PyTypeObject*>(object)) & Py_TPFLAGS_BASE_EXC_SUBCLASS) !=
               0;
}

/// An exception class of the module; null, with an error pending, when there is none of that name.
PythonRef exceptionClass(PyObject* module, const char* name)
{
    PythonRef found(api().PyObject_GetAttrString(module, name));
    if (found && !isExceptionClass(found.get())) {
        api().PyErr_Format(*api().PyExc_TypeError, "%s.%s is no exception class", moduleName, name);
        return {};
    }
    return found;
}

/// Null, with an error pending, when the module does not hold what is needed.
std::unique_ptr<const ExceptionMap> buildMap()
{
    const std::array<std::pair<std::type_index, const char*>, 4> names{
        {{typeid(std::exception), "BasicException"},
         {typeid(std::runtime_error), "RuntimeException"},
         {typeid(std::logic_error), "LogicException"},
         {typeid(std::out_of_range), "OutOfRangeException"}}};
    const PythonRef module(api().PyImport_ImportModule(moduleName));
    std::array<PythonRef, names.size()> classes;
    for (std::size_t i = 0; i < names.size(); ++i) {
        classes[i] = module ? exceptionClass(module.get(), names[i].second) : PythonRef();
        if (!classes[i]) {
            return nullptr;
        }
    }
    auto map = std::make_unique<ExceptionMap>();
    for (std::size_t i = 0; i < names.size(); ++i) {
        map->emplace(names[i].first, classes[i].get());
    }
    for (PythonRef& owned : classes) {
        static_cast<void>(owned.release());
    }
    return map;
}

void logPendingError()
{
    static const logging::LoggerMessager log(
        logging::LogLevel::Error, "python/ExceptionMap.cpp", __LINE__,
        "PyObject* veltor::python::findExceptionType(const std::exception_ptr&)");
    FetchedError error = FetchedError::take();
    error.normalize();
    log.write(QStringLiteral("veltor.common does not give the exception classes: ") +
              PyObjectToRepr(error.value()));
}

/// Null, with the reason in the log, when the map cannot be built.
///
/// The import runs Python code, which may let another thread have the interpreter lock. Were the map built
/// inside the initialisation of a static variable, that thread would wait there with the lock in its hands,
/// and neither would go on. So whoever finds no map builds one, and the first to finish publishes it.
const ExceptionMap* exceptionMap()
{
    if (const ExceptionMap* const map = currentMap.load()) {
        return map;
    }
    std::unique_ptr<const ExceptionMap> built = buildMap();
    if (!built) {
        logPendingError();
        return nullptr;
    }
    const ExceptionMap* published = nullptr;
    if (!currentMap.compare_exchange_strong(published, built.get())) {
        return published; // the module's classes were found twice; one more reference to each does no harm
    }
    // Fails when a host has registered all the 32 functions there may be; the map then stays for good.
    static_cast<void>(api().Py_AtExit(&forgetMap));
    return built.release();
}

} // namespace

PyObject* findExceptionType(const std::exception_ptr& e)
{
    const PendingErrorKeeper keeper;
    const ExceptionMap* const map = exceptionMap();
    if (!map) {
        return *api().PyExc_RuntimeError;
    }
    try {
        if (e) {
            std::rethrow_exception(e);
        }
    } catch (const std::out_of_range&) {
        return map->at(typeid(std::out_of_range));
    } catch (const std::logic_error&) {
        return map->at(typeid(std::logic_error));
    } catch (const std::runtime_error&) {
        return map->at(typeid(std::runtime_error));
    } catch (...) {
        // As a null pointer: nothing more is known of it.
    }
    return map->at(typeid(std::exception));
}

} // namespace veltor::python
