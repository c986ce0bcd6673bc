#pragma once

#include <veltor/python/PythonBridge.h>

#include <utility>

namespace veltor::python {

/// Owns one reference to a Python object, or nothing.
///
/// It may be dropped on any thread: only the destruction of the object can run Python code, so only the
/// last reference takes the interpreter lock. Where other threads may use the same object, the lock must be
/// held all the same, because Python's counts are not atomic.
///
/// Once the interpreter has been finalised the object is left alone: what it is made of is gone. A reference
/// must not be carried over into an interpreter that is started later.
class PythonRef
{
public:
    PythonRef() noexcept = default;
    /// Takes over a new reference; null is allowed.
    explicit PythonRef(PyObject* owned) noexcept
        : m_object(owned)
    {}
    PythonRef(PythonRef&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {}
    PythonRef& operator=(PythonRef&& other) noexcept
    {
        PythonRef(std::move(other)).swap(*this);
        return *this;
    }
    PythonRef(const PythonRef&) = delete;
    PythonRef& operator=(const PythonRef&) = delete;
    ~PythonRef() { drop(m_object); }

    /// A further reference to a borrowed object. Needs the interpreter lock.
    [[nodiscard]] static PythonRef share(PyObject* borrowed) noexcept;

    [[nodiscard]] PyObject* get() const noexcept { return m_object; }
    /// Hands the reference to the caller.
    [[nodiscard]] PyObject* release() noexcept { return std::exchange(m_object, nullptr); }
    explicit operator bool() const noexcept { return m_object != nullptr; }

private:
    void swap(PythonRef& other) noexcept { std::swap(m_object, other.m_object); }
    static void drop(PyObject* object) noexcept;

    PyObject* m_object = nullptr;
};

} // namespace veltor::python
