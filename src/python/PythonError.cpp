// A Python traceback as a native exception.

#include <veltor/utils/PythonError.h>

namespace veltor::utils {

PythonError::PythonError(const QString& message)
    : m_message(message.toStdString())
{}

PythonError::~PythonError() = default;

const char* PythonError::what() const noexcept
{
    return m_message.c_str();
}

} // namespace veltor::utils
