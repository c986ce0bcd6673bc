// Carries an exception through Qt's futures and queued signals.

#include <veltor/err/ConcurrentNestedException.h>

namespace veltor::err {
namespace {

void registerMetaType() // as in TaskError.cpp
{
    qRegisterMetaType<ConcurrentNestedException>("err::ConcurrentNestedException");
}

Q_CONSTRUCTOR_FUNCTION(registerMetaType)

} // namespace

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
