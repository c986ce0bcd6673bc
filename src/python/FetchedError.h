#pragma once

#include "python/PythonRef.h"

namespace veltor::python {

/// A Python error that was taken out of the interpreter. Everything here needs the interpreter lock.
class FetchedError
{
public:
    FetchedError() noexcept = default;

    /// Takes the pending error; holds nothing when there is none.
    [[nodiscard]] static FetchedError take();

    /// Makes it the pending error again, in place of any other; holding nothing, clears that one.
    void restore() noexcept;

    /// Makes value() an instance of type(), with its traceback attached.
    void normalize() noexcept;

    explicit operator bool() const noexcept { return static_cast<bool>(m_type); }
    /// An error that ordinary handlers let pass, such as KeyboardInterrupt.
    [[nodiscard]] bool isInterrupt() const noexcept;

    [[nodiscard]] PyObject* type() const noexcept { return m_type.get(); }
    [[nodiscard]] PyObject* value() const noexcept { return m_value.get(); }
    [[nodiscard]] PyObject* traceback() const noexcept { return m_traceback.get(); }

private:
    PythonRef m_type;
    PythonRef m_value;
    PythonRef m_traceback;
};

/// Keeps the pending error out of the way of calls into Python, which must not be made while one is
/// pending, and puts it back in the end in place of whatever these calls left behind.
class PendingErrorKeeper
{
public:
    PendingErrorKeeper()
        : m_error(FetchedError::take())
    {}
    ~PendingErrorKeeper()
    {
        if (m_puttingBack) {
            m_error.restore();
        }
    }
    PendingErrorKeeper(const PendingErrorKeeper&) = delete;
    PendingErrorKeeper& operator=(const PendingErrorKeeper&) = delete;

    /// Leaves what is pending now instead.
    void forget() noexcept { m_puttingBack = false; }

private:
    FetchedError m_error;
    bool m_puttingBack = true;
};

} // namespace veltor::python
