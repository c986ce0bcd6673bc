// Registers every type that signal and slot signatures spell, before main() runs: a queued connection
// that names an unknown type would silently deliver nothing.

#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/Task.h>

namespace veltor::concurrent {
namespace {

void registerMetaTypes()
{
    qRegisterMetaType<Range>();
    qRegisterMetaType<Range>("concurrent::Range");
    qRegisterMetaType<Range>("Range");
    qRegisterMetaType<progress::Add>();
    qRegisterMetaType<progress::Add>("progress::Add");
    qRegisterMetaType<CancelMethod>();
    qRegisterMetaType<CancelMethod>("concurrent::CancelMethod");
    qRegisterMetaType<Task*>();
}

Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

} // namespace
} // namespace veltor::concurrent
