#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <stdexcept>

class QObject;

/// The exceptions that the library throws for programming and run-time faults.
///
/// Each is a thin subclass of one standard exception: its constructor composes a translated message
/// (context "QObject") and hands it to the standard base as UTF-8, so `what()` returns that message.
/// The bases differ on purpose; a caller that catches by standard type relies on them.
/// All are immutable after construction and may be thrown from any thread.
namespace veltor::err {

/// A called function returned an error code.
class VELTOR_UTILS_EXPORT FunctionReturnsErrorCode : public std::logic_error
{
public:
    /// The message always ends in ". " and @p details, even when the details are empty.
    FunctionReturnsErrorCode(const QString& function, const QString& code, const QString& details);
    /// The same with a @p code that is printed in decimal.
    FunctionReturnsErrorCode(const QString& function, int code, const QString& details);
};

/// An object could not be brought into a usable state.
class VELTOR_UTILS_EXPORT CouldNotInitializeObject : public std::runtime_error
{
public:
    /// @param object  what the user knows it by: a name, a path
    /// @param reason  the end of the message
    CouldNotInitializeObject(const QString& object, const QString& reason);
};

/// A value is of another type than the code can work with.
class VELTOR_UTILS_EXPORT UnexpectedType : public std::logic_error
{
public:
    /// @param actual    name of the type that was found
    /// @param expected  names of the accepted types; an empty list is printed as "anything else"
    /// @{
    UnexpectedType(const QString& actual, const QStringList& expected);
    UnexpectedType(const QString& actual, const QString& expected);
    /// @}
    /// The actual type is the class name of @p object, "NULL" for a null one; @p expected as above.
    /// @{
    UnexpectedType(const QObject* object, const QStringList& expected);
    UnexpectedType(const QObject* object, const QString& expected);
    /// @}
};

/// A value of the right type that is not allowed here.
class VELTOR_UTILS_EXPORT UnexpectedValue : public std::out_of_range
{
public:
    /// @param name   of the argument, field or setting that holds the value
    /// @param value  printed through QVariant::toString()
    UnexpectedValue(const QString& name, const QVariant& value);
};

/// The operation is not available for this object or in this state.
class VELTOR_UTILS_EXPORT UnsupportedOperation : public std::logic_error
{
public:
    /// @param details  which operation, and of what; the end of the message
    explicit UnsupportedOperation(const QString& details);
};

/// The operation has not been written.
class VELTOR_UTILS_EXPORT NotImplementedOperation : public std::logic_error
{
public:
    /// @param what  which operation; the end of the message
    explicit NotImplementedOperation(const QString& what);
};

/// The operation was broken off.
class VELTOR_UTILS_EXPORT OperationAborted : public std::logic_error
{
public:
    /// @param details  by whom or by what; the end of the message
    explicit OperationAborted(const QString& details);
};

/// Data ended before it was complete.
class VELTOR_UTILS_EXPORT EofException : public std::runtime_error
{
public:
    /// @param message  taken as it stands, not translated
    explicit EofException(const QString& message);
};

/// An index lies outside its container.
class VELTOR_UTILS_EXPORT OutOfRange : public std::out_of_range
{
public:
    /// @param index  the index that was asked for
    explicit OutOfRange(int index);
};

/// A null pointer, or an empty handle, was passed where an object is required.
class VELTOR_UTILS_EXPORT NullArgument : public std::invalid_argument
{
public:
    /// @param name  the argument's name
    explicit NullArgument(const QString& name);
};

} // namespace veltor::err
