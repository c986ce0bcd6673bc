#pragma once

#include <veltor/Export.h>

#include <QtCore/QMetaType>

#include <exception>

namespace veltor::err {

/// Value that owns an exception and travels through queued signals. Registered with the meta-type system
/// as "veltor::err::TaskError" and "TaskError" when the library is loaded. Reentrant.
class VELTOR_UTILS_EXPORT TaskError
{
public:
    /// Holds nothing.
    TaskError() noexcept;
    /// Holds @p exception; a null one is nothing.
    explicit TaskError(std::exception_ptr exception) noexcept;

    /// The held exception, null when there is none. Copies share it.
    [[nodiscard]] std::exception_ptr exception() const noexcept;

private:
    std::exception_ptr m_exception;
};

} // namespace veltor::err

Q_DECLARE_METATYPE(veltor::err::TaskError)
