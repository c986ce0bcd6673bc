#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace veltor::utils {

/// A handler that may leave while it is called: closed, it is not called again, and its last call, or who
/// closes it, destroys the function. Thread-safe.
class HandlerNode
{
public:
    using Function = std::function<bool(const void*)>;

    explicit HandlerNode(Function function)
        : m_function(std::move(function))
    {}

    /// @return what the function returned; false, without a call, when it is closed
    bool call(const void* value);
    /// No call begins any more.
    void close() noexcept;
    /// After close(): waits for the calls on other threads, unless this thread is within a call of any node.
    void waitForCalls() noexcept;

private:
    class Call;

    void leave() noexcept;
    void finish() noexcept;

    // The lowest bit says closed, the others count the calls that may look at the function.
    std::atomic<unsigned> m_state{0};
    std::atomic<bool> m_isFinishing{false};
    Function m_function;
    std::mutex m_mutex; // guards m_isFinished
    std::condition_variable m_finished;
    bool m_isFinished = false; // the function is destroyed
};

} // namespace veltor::utils
