// The life of one handler.

#include "HandlerNode.h"

namespace veltor::utils {
namespace {

constexpr unsigned closed = 1;
constexpr unsigned oneCall = 2;

/// How many calls this thread is within.
int& depth()
{
    static thread_local int instance = 0;
    return instance;
}

} // namespace

/// Holds the function while it may be called.
class HandlerNode::Call
{
public:
    explicit Call(HandlerNode& node)
        : m_node(node)
        , m_isOpen((node.m_state.fetch_add(oneCall) & closed) == 0)
    {
        ++depth();
    }
    ~Call()
    {
        m_node.leave(); // what the function captured may let others leave: still within the call
        --depth();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    [[nodiscard]] bool isOpen() const { return m_isOpen; }

private:
    HandlerNode& m_node;
    const bool m_isOpen;
};

bool HandlerNode::call(const void* value)
{
    const Call call(*this);
    return call.isOpen() && m_function(value);
}

void HandlerNode::close() noexcept
{
    if (m_state.fetch_or(closed) == 0) {
        finish();
    }
}

void HandlerNode::leave() noexcept
{
    if (m_state.fetch_sub(oneCall) == (oneCall | closed)) {
        finish();
    }
}

void HandlerNode::finish() noexcept
{
    // Who looked in after the end comes here again.
    if (m_isFinishing.exchange(true)) {
        return;
    }
    m_function = nullptr;
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
    m_finished.notify_all();
}

void HandlerNode::waitForCalls() noexcept
{
    if (depth() == 0) {
        std::unique_lock lock(m_mutex);
        m_finished.wait(lock, [this] { return m_isFinished; });
    }
}

} // namespace veltor::utils
