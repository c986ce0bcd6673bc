// The progress handler that a result makes for itself when somebody watches it.

#include "ResultHandler.h"

#include "Post.h"

#include <utility>

namespace veltor::concurrent {

ResultHandler::ResultHandler(ResultCore::Ptr node, double value)
    : m_node(std::move(node))
    , m_latest(value)
{
    storeProgress(value);
}

void ResultHandler::show(double value)
{
    m_latest.store(value);
    if (!m_underWay.exchange(true)) {
        post(this, [this] {
            m_underWay.store(false); // before the value is read: a later one is on its way again
            setProgress_impl(m_latest.load());
        });
    }
}

void ResultHandler::cancel()
{
    ProgressHandler::cancel();
    m_node->cancel();
}

bool ResultHandler::isRunning_impl() const
{
    return m_node->state() == ResultCore::State::Running;
}

bool ResultHandler::isFinished_impl() const
{
    return m_node->ended();
}

bool ResultHandler::isCanceled_impl() const
{
    return m_node->cancelRequested() || m_node->state() == ResultCore::State::Canceled ||
           ProgressHandler::isCanceled_impl();
}

} // namespace veltor::concurrent
