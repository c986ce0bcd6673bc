#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace veltor::concurrent {

/// Waits on @p changed until @p condition holds, at most for @p limit, and returns whether it holds. In
/// steps: a clock's last moment is nearer than the longest limit.
template <typename Condition>
bool waitAtMost(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                std::chrono::milliseconds limit, Condition condition)
{
    constexpr std::chrono::milliseconds step = std::chrono::hours(24);
    while (!condition() && limit.count() > 0) {
        const auto now = std::min(limit, step);
        if (changed.wait_for(lock, now, condition)) {
            return true;
        }
        limit -= now;
    }
    return condition();
}

} // namespace veltor::concurrent
