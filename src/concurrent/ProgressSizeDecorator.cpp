#include <veltor/concurrent/ProgressSizeDecorator.h>

#include <veltor/concurrent/Task.h>
#include <veltor/err/Exceptions.h>

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

ProgressSizeDecorator::ProgressSizeDecorator(Task* task, std::shared_ptr<ProgressHandler> main,
                                             ProgressSize size)
    : TaskProgressHandler(task)
    , m_main(std::move(main))
    , m_inner(handlerOf(task))
    , m_size(size)
    , m_width(widthOf(m_inner->range()))
{
    if (!m_main) {
        throw err::NullArgument(QStringLiteral("main"));
    }
    storeRange(m_inner->range());
    connect(m_inner.get(), &ProgressHandler::progressRangeChanged, this, [this](const Range& range) {
        rememberRange(range);
        Q_EMIT progressRangeChanged(range);
    });
    connect(m_inner.get(), &ProgressHandler::progressValueIncreased, this,
            &ProgressHandler::progressValueIncreased);
    forwardEvents(*m_inner);
    forwardEvents(*this);
    connectToMainPh(*m_main);
}

ProgressSizeDecorator::~ProgressSizeDecorator() = default;

void ProgressSizeDecorator::forwardEvents(const ProgressHandler& from)
{
    ProgressHandler* main = m_main.get();
    connect(&from, &ProgressHandler::started, main, &ProgressHandler::started);
    connect(&from, &ProgressHandler::finished, main, &ProgressHandler::finished);
    connect(&from, &ProgressHandler::canceled, main, &ProgressHandler::canceled);
    connect(&from, &ProgressHandler::error, main, &ProgressHandler::error);
}

void ProgressSizeDecorator::connectToMainPh(ProgressHandler& main)
{
    disconnect(m_toMain);
    m_toMain = connect(
        this, &ProgressHandler::progressValueIncreased, this,
        [this, &main](progress::Add increment) {
            const double width = m_width.load();
            if (increment.value > 0 && width > 0) {
                main.setProgress(progress::Add{increment.value * m_size / width});
            }
        },
        Qt::DirectConnection);
}

void ProgressSizeDecorator::rememberRange(Range range)
{
    storeRange(range);
    m_width.store(widthOf(range));
}

void ProgressSizeDecorator::cancel()
{
    m_inner->cancel();
}

bool ProgressSizeDecorator::isRunning_impl() const
{
    return m_inner->isRunning();
}

bool ProgressSizeDecorator::isFinished_impl() const
{
    return m_inner->isFinished();
}

bool ProgressSizeDecorator::isCanceled_impl() const
{
    return m_inner->isCanceled();
}

void ProgressSizeDecorator::setProgressRange_impl(Range range)
{
    rememberRange(range); // at once: own increments may follow before the inner handler's signal returns
    m_inner->setProgressRange(range);
}

void ProgressSizeDecorator::setError_impl(const err::ConcurrentNestedException& error)
{
    m_inner->setError(error);
}

} // namespace veltor::concurrent
