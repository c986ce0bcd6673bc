#pragma once

#include <veltor/concurrent/ProgressHandler.h>
#include <veltor/concurrent/ResultCore.h>

#include <atomic>

namespace veltor::concurrent {

/// A result as presenters see it. Values that come faster than its thread delivers them are merged.
class ResultHandler : public ProgressHandler
{
public:
    ResultHandler(ResultCore::Ptr node, double value);

    /// The value; any thread.
    void show(double value);

    void cancel() override;

protected:
    bool isRunning_impl() const override;
    bool isFinished_impl() const override;
    bool isCanceled_impl() const override;

private:
    const ResultCore::Ptr m_node;
    std::atomic<double> m_latest;
    std::atomic<bool> m_underWay{false};
};

} // namespace veltor::concurrent
