#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

#include <exception>
#include <string>

namespace veltor::utils {

/// Carries a Python error across native code, as the text of its traceback. Immutable after construction;
/// may be thrown and copied on any thread, with or without the interpreter lock.
class VELTOR_UTILS_EXPORT PythonError : public std::exception
{
public:
    /// @param message  stored as UTF-8; what() ends at the first zero character
    explicit PythonError(const QString& message);
    /// Copies share nothing; what was moved from may be assigned to, no more.
    /// @{
    PythonError(const PythonError&) = default;
    PythonError(PythonError&&) = default;
    PythonError& operator=(const PythonError&) = default;
    PythonError& operator=(PythonError&&) = default;
    /// @}
    ~PythonError() override;

    /// The message as UTF-8; valid as long as this object lives and is not assigned to.
    [[nodiscard]] const char* what() const noexcept override;

private:
    std::string m_message;
};

/// Takes the pending Python error out of the interpreter, for the caller to throw:
///
///     if (!result) {
///         throw utils::pythonError();
///     }
///
/// The message is that of python::currentError(), on whose conditions this function stands. In the library
/// only when it is built with the Python bridge.
[[nodiscard]] VELTOR_UTILS_EXPORT PythonError pythonError();

} // namespace veltor::utils
