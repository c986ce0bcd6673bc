// Carries an exception through Qt's futures and queued signals.

#include <veltor/err/ConcurrentNestedException.h>

namespace veltor::err {

void ConcurrentNestedException::raise() const
{
    if (!nested_ptr()) {
        std::terminate();
    }
    std::rethrow_exception(nested_ptr());
}

ConcurrentNestedException* ConcurrentNestedException::clone() const
{
    return new ConcurrentNestedException(*this);
}

void ConcurrentNestedException::rethrow()
{
    throw ConcurrentNestedException();
}

} // namespace veltor::err
