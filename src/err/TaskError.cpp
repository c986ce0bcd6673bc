// An exception as a value.

#include <veltor/err/TaskError.h>

#include <utility>

namespace veltor::err {

TaskError::TaskError() noexcept = default;

TaskError::TaskError(std::exception_ptr exception) noexcept
    : m_exception(std::move(exception))
{}

std::exception_ptr TaskError::exception() const noexcept
{
    return m_exception;
}

} // namespace veltor::err
