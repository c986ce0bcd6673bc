#pragma once

#include <veltor/Export.h>

#include <QtCore/QException>
#include <QtCore/QMetaType>

#include <exception>

namespace veltor::err {

/// Carries the exception in flight from one thread to another: through a QFuture, or as the argument of
/// a queued signal, where it is spelled "err::ConcurrentNestedException" (registered with the meta-type
/// system when the library is loaded). Copies share the exception they hold, and may be used by several
/// threads at once as far as that exception may.
class VELTOR_UTILS_EXPORT ConcurrentNestedException : public QException, public std::nested_exception
{
public:
    /// Captures the exception that is being handled; made outside a catch handler it holds nothing.
    ConcurrentNestedException() noexcept = default;

    /// Throws the held exception itself, never this carrier: a consumer that waits on a QFuture gets the
    /// exception's own type. Ends the process with std::terminate() when nothing is held.
    [[noreturn]] void raise() const override;

    /// A new carrier of the same exception; the caller owns it.
    [[nodiscard]] ConcurrentNestedException* clone() const override;

    /// Called inside a catch handler: throws a carrier of the exception being handled.
    [[noreturn]] static void rethrow();
};

} // namespace veltor::err

Q_DECLARE_METATYPE(veltor::err::ConcurrentNestedException)
