// The walk from an exception to those nested in it.

#include <veltor/err/HandleCurrentException.h>

#include <exception>

namespace veltor::err {
namespace {

/// The exception nested in the one being handled, null if there is none.
std::exception_ptr nestedOfCurrent() noexcept
{
    try {
        throw;
    } catch (const std::nested_exception& nested) {
        return nested.nested_ptr();
    } catch (...) {
        return nullptr;
    }
}

} // namespace

bool handleCurrentException(const std::function<bool(unsigned)>& handler)
{
    bool result = false;
    std::exception_ptr current = std::current_exception();
    for (unsigned level = 0; current; ++level) {
        try {
            std::rethrow_exception(current);
        } catch (...) {
            current = nestedOfCurrent();
            result = handler(level);
        }
    }
    return result;
}

} // namespace veltor::err
