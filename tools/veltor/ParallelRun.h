#pragma once

#include <functional>

namespace veltor::tool {

/// Calls @p work with 0 to @p count - 1, each once and in any order, on all processors, and @p progress
/// with the number of finished calls from time to time, on the calling thread. It is the one place that
/// knows how the tool spreads work.
/// @return false when interrupted from the keyboard; calls that have begun are finished, the others left.
/// @throws what the first failing call of @p work threw, after the others have stopped.
[[nodiscard]] bool runParallel(int count, const std::function<void(int)>& work,
                               const std::function<void(int)>& progress);

} // namespace veltor::tool
