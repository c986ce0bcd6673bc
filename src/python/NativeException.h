#pragma once

#include "python/PythonRef.h"

#include <exception>

namespace veltor::python {

/// A Python exception that says what a native one says; see Concurrent(). Needs the interpreter lock, and no
/// pending error.
/// @return null, with a Python error pending, when the exception cannot be made
[[nodiscard]] PythonRef toPythonException(const std::exception_ptr& native) noexcept;

/// Makes an exception object the pending error; null leaves the error that is pending.
void setPending(const PythonRef& exception) noexcept;

} // namespace veltor::python
