#pragma once

#include <veltor/Export.h>

#include <functional>

namespace veltor::err {

/// Walks the chain of nested exceptions that is being handled, from the outermost (level 0) inwards, and
/// calls @p handler once a level. The handler runs inside a catch block of that level's exception and may
/// `throw;` and catch it by type. Its result never ends the walk early.
///
///     catch (...) {
///         err::handleCurrentException([&](unsigned) {
///             try { throw; } catch (const std::exception& e) { lines << e.what(); } catch (...) {}
///             return true;
///         });
///     }
///
/// @return what the last call of the handler returned; false, without a call, when no exception is in
///         flight.
/// @throws whatever the handler throws; std::bad_function_call when it is empty.
VELTOR_UTILS_EXPORT bool handleCurrentException(const std::function<bool(unsigned)>& handler);

} // namespace veltor::err
