// Registers the carriers under every name that signal signatures spell, before main() runs: a queued
// connection that names an unknown type would silently deliver nothing.

#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/TaskError.h>

namespace veltor::err {
namespace {

void registerMetaTypes()
{
    qRegisterMetaType<ConcurrentNestedException>();
    qRegisterMetaType<ConcurrentNestedException>("err::ConcurrentNestedException");
    qRegisterMetaType<TaskError>();
    qRegisterMetaType<TaskError>("TaskError");
}

Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

} // namespace
} // namespace veltor::err
