// Finds the interpreter of the host in the process: the library is linked to none.
#include "python/PythonApi.h"

#include <veltor/err/Exceptions.h>

#include "platform/LoadedLibrary.h"

#include <QtCore/QCoreApplication>

#include <atomic>
#include <memory>

namespace veltor::python {
namespace {

[[noreturn]] void refuse(const QString& reason)
{
    throw err::CouldNotInitializeObject(QStringLiteral("Python"), reason);
}

/// Of several interpreters, the one that runs.
bool isRunning(void* address)
{
    return reinterpret_cast<decltype(&::Py_IsInitialized)>(address)() != 0;
}

template <typename Entry>
void fill(Entry& entry, const platform::LoadedLibrary& library, const char* name)
{
    entry = reinterpret_cast<Entry>(library.symbol(name));
    if (!entry) {
        refuse(QCoreApplication::translate("QObject", "Интерпретатор не содержит %1")
                   .arg(QString::fromLatin1(name)));
    }
}

std::unique_ptr<const PythonApi> findApi()
{
    const auto library = platform::LoadedLibrary::defining("Py_IsInitialized", &isRunning);
    if (!library) {
        refuse(QCoreApplication::translate("QObject", "Интерпретатор не запущен"));
    }
    auto found = std::make_unique<PythonApi>();
#define VELTOR_ENTRY(name) fill(found->name, library, #name);
    VELTOR_PYTHON_FUNCTIONS(VELTOR_ENTRY)
    VELTOR_PYTHON_OBJECTS(VELTOR_ENTRY)
#undef VELTOR_ENTRY
    return found;
}

std::atomic<const PythonApi*> table{nullptr};

} // namespace

bool isInterpreterRunning() noexcept
{
    const PythonApi* const known = table.load(std::memory_order_acquire);
    return known ? known->Py_IsInitialized() != 0
                 : static_cast<bool>(platform::LoadedLibrary::defining("Py_IsInitialized", &isRunning));
}

const PythonApi& api()
{
    if (const PythonApi* const known = table.load(std::memory_order_acquire)) {
        return *known;
    }
    std::unique_ptr<const PythonApi> found = findApi();
    const PythonApi* published = nullptr;
    if (!table.compare_exchange_strong(published, found.get(), std::memory_order_acq_rel)) {
        return *published;
    }
    return *found.release(); // kept as long as the process, as the interpreter's library is
}

} // namespace veltor::python
