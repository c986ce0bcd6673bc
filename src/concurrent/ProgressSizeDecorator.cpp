// A sub-operation that fills a share of a main handler.

#include <veltor/concurrent/ProgressSizeDecorator.h>

#include "Post.h"
#include "ProgressHandlerPrivate.h"

#include <veltor/concurrent/Task.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QThread>

#include <atomic>
#include <cmath>
#include <utility>

namespace veltor::concurrent {
namespace {

std::shared_ptr<ProgressHandler> handlerOf(Task* task)
{
    if (task) {
        return task->progressHandler();
    }
    return {new ProgressHandler, &releaseHandler};
}

double widthOf(Range range)
{
    return std::abs(range.end - range.start);
}

} // namespace

struct ProgressSizeDecorator::Share
{
    const std::shared_ptr<ProgressHandler> main;
    const std::shared_ptr<ProgressHandler> inner;
    const ProgressSize size;
    std::atomic<double> width;
    std::atomic<bool> open{true}; // has not told the main handler of its end
    QMetaObject::Connection toMain{};
};

ProgressSizeDecorator::ProgressSizeDecorator(Task* task, std::shared_ptr<ProgressHandler> main,
                                             ProgressSize size)
    : TaskProgressHandler(task)
    , m_share([&] {
        if (!main) {
            throw err::NullArgument(QStringLiteral("main"));
        }
        std::shared_ptr<ProgressHandler> inner = handlerOf(task);
        const double width = widthOf(inner->range());
        return new Share{std::move(main), std::move(inner), size, {width}};
    }())
{
    ProgressHandler* inner = m_share->inner.get();
    storeRange(inner->range());
    m_p->followers.push_back(m_share->inner);
    connect(inner, &ProgressHandler::progressRangeChanged, this, [this](const Range& range) {
        rememberRange(range);
        Q_EMIT progressRangeChanged(range);
    });
    connect(inner, &ProgressHandler::progressValueIncreased, this, &ProgressHandler::progressValueIncreased);
    connect(inner, &ProgressHandler::started, this, &ProgressHandler::started);
    connect(inner, &ProgressHandler::finished, this, &ProgressHandler::finished);
    connect(inner, &ProgressHandler::canceled, this, &ProgressHandler::canceled);
    connect(inner, &ProgressHandler::error, this, &ProgressHandler::error);
    ProgressHandler* whole = m_share->main.get();
    connect(this, &ProgressHandler::started, whole, &ProgressHandler::started);
    connect(this, &ProgressHandler::canceled, whole, &ProgressHandler::canceled);
    connect(this, &ProgressHandler::error, whole, &ProgressHandler::error);
    connect(this, &ProgressHandler::finished, this, [this] { forwardEnd(); });
    {
        const std::lock_guard lock(whole->m_p->mutex);
        ++whole->m_p->openParts;
    }
    connectToMainPh(*whole);
}

ProgressSizeDecorator::~ProgressSizeDecorator()
{
    if (m_share->open.exchange(false)) {
        const std::lock_guard lock(m_share->main->m_p->mutex);
        --m_share->main->m_p->openParts;
    }
}

/// A main handler whose task, or inner handler, ends by itself emits finished() then, and only then. Any
/// other does when its parts have ended, once.
void ProgressSizeDecorator::forwardEnd()
{
    Private& whole = *m_share->main->m_p;
    if (!m_share->open.exchange(false)) {
        return;
    }
    {
        const std::lock_guard lock(whole.mutex);
        if (--whole.openParts > 0 || whole.task || std::exchange(whole.partsEnded, true)) {
            return;
        }
    }
    ProgressHandler* main = m_share->main.get();
    if (main->thread() == QThread::currentThread()) {
        Q_EMIT main->finished();
    } else {
        post(main, [main] { Q_EMIT main->finished(); });
    }
}

void ProgressSizeDecorator::connectToMainPh(ProgressHandler& main)
{
    disconnect(m_share->toMain);
    m_share->toMain = connect(
        this, &ProgressHandler::progressValueIncreased, &main, // of the two, either may go first
        [this, &main](progress::Add increment) {
            const double width = m_share->width.load();
            if (increment.value > 0 && width > 0) {
                main.setProgress(progress::Add{increment.value * m_share->size / width});
            }
        },
        Qt::DirectConnection);
}

void ProgressSizeDecorator::rememberRange(Range range)
{
    storeRange(range);
    m_share->width.store(widthOf(range));
}

void ProgressSizeDecorator::cancel()
{
    ProgressHandler::cancel(); // the own sub-handlers
    m_share->inner->cancel();
}

bool ProgressSizeDecorator::isRunning_impl() const
{
    return m_share->inner->isRunning();
}

bool ProgressSizeDecorator::isFinished_impl() const
{
    return m_share->inner->isFinished();
}

bool ProgressSizeDecorator::isCanceled_impl() const
{
    return m_share->inner->isCanceled();
}

void ProgressSizeDecorator::setProgressRange_impl(Range range)
{
    rememberRange(range); // at once: own increments may follow before the inner handler's signal returns
    m_share->inner->setProgressRange(range);
}

CancellationToken ProgressSizeDecorator::cancellationToken_impl() const
{
    return m_share->inner->cancellationToken();
}

void ProgressSizeDecorator::setError_impl(const err::ConcurrentNestedException& error)
{
    m_share->inner->setError(error);
}

} // namespace veltor::concurrent
