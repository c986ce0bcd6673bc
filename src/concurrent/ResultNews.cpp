// What a result tells those who watch it: progress, texts, and the signals of its end.

#include "ResultHandler.h"

#include <veltor/concurrent/ResultCore.h>
#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>

#include <exception>
#include <utility>

namespace veltor::concurrent {
namespace {

const logging::LoggerMessager observerLog(logging::LogLevel::Error, "concurrent/ResultNews.cpp", __LINE__,
                                          "veltor::concurrent::ResultCore::tell()");

class ResultScope : public NestedScopeImpl
{
public:
    explicit ResultScope(ResultCore::Ptr node)
        : NestedScopeImpl(0, 100)
        , m_node(std::move(node))
    {}

    void setProgress(double value) override
    {
        NestedScopeImpl::setProgress(value);
        m_node->reportProgress(progress());
    }
    void setOperation(const QString& text) override { m_node->reportText(text); }
    void setMessage(int kind, const QString& text) override
    {
        NestedScopeImpl::setMessage(kind, text);
        if (!text.isEmpty()) {
            m_node->reportText(text);
        }
    }
    [[nodiscard]] bool canWork() const override { return !m_node->cancelRequested(); }

private:
    const ResultCore::Ptr m_node;
};

err::ConcurrentNestedException carrierOf(const std::exception_ptr& thrown)
{
    try {
        std::rethrow_exception(thrown);
    } catch (...) {
        return {};
    }
}

/// What an observer throws keeps nobody from hearing of the end.
template <typename F>
void guarded(F emitSignal)
{
    try {
        emitSignal();
    } catch (const std::exception& reason) {
        observerLog.write(QCoreApplication::translate("TaskResult", "Наблюдатель задачи прерван: %1")
                              .arg(QString::fromUtf8(reason.what())));
    } catch (...) {
        observerLog.write(QCoreApplication::translate("TaskResult", "Наблюдатель задачи прерван: %1")
                              .arg(QLatin1Char('?')));
    }
}

} // namespace

ProgressHandlerPtr ResultCore::progressHandler()
{
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<ResultHandler> handler = m_handler.lock();
    if (!handler) {
        const double value = state() == State::Succeeded ? 100 : m_progress.load();
        handler = {new ResultHandler(shared_from_this(), value), &releaseHandler};
        m_handler = handler;
        m_watched.store(true);
    }
    return handler;
}

std::shared_ptr<ResultHandler> ResultCore::handler()
{
    if (!m_watched.load()) {
        return nullptr;
    }
    const std::lock_guard lock(m_mutex);
    return m_handler.lock();
}

/// The signals of a task's handler, in their order.
void ResultCore::tell(State state, const std::exception_ptr& thrown)
{
    const std::shared_ptr<ResultHandler> watcher = handler();
    if (!watcher) {
        return;
    }
    if (state == State::Running) {
        guarded([&] { Q_EMIT watcher->started(); });
        return;
    }
    if (state == State::Succeeded) {
        watcher->show(100);
        guarded([&] { Q_EMIT watcher->successful(); });
    } else {
        if (state == State::Failed) {
            m_looked.store(true);
            guarded([&] { watcher->setError(carrierOf(thrown)); });
        }
        guarded([&] { Q_EMIT watcher->canceled(); });
    }
    guarded([&] { Q_EMIT watcher->finished(); });
}

std::unique_ptr<NestedScope> ResultCore::makeScope()
{
    return std::make_unique<ResultScope>(shared_from_this());
}

void ResultCore::reportProgress(double percent)
{
    m_progress.store(percent);
    if (const std::shared_ptr<ResultHandler> watcher = handler()) {
        watcher->show(percent);
    }
}

void ResultCore::reportText(const QString& text)
{
    if (const std::shared_ptr<ResultHandler> watcher = handler()) {
        watcher->setMessage(text);
    }
}

} // namespace veltor::concurrent
