// An exception as a value.

#include <veltor/err/TaskError.h>

#include <utility>

namespace veltor::err {
namespace {

// Under every name that signal signatures spell, before main() runs: a queued connection that names an
// unknown type would silently deliver nothing. Here, so that a program that takes the class from a static
// library gets it too.
void registerMetaType()
{
    qRegisterMetaType<TaskError>("TaskError");
}

Q_CONSTRUCTOR_FUNCTION(registerMetaType)

} // namespace

TaskError::TaskError() noexcept = default;

TaskError::TaskError(std::exception_ptr exception) noexcept
    : m_exception(std::move(exception))
{}

std::exception_ptr TaskError::exception() const noexcept
{
    return m_exception;
}

} // namespace veltor::err
