// What a list of tasks knows of one: heard by signals, seen by looking.

#include "WatchedTask.h"

#include "Post.h"

#include <veltor/concurrent/TaskProgressHandler.h>
#include <veltor/err/HandleCurrentException.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <mutex>
#include <utility>

namespace veltor::concurrent {
namespace {

/// A rate forgets what is older than a few of these.
constexpr double smoothingMs = 3000;

/// All that a failure says, a line a level; what an outer level says already is left out.
QString textOf(const err::ConcurrentNestedException& error)
{
    QStringList lines;
    try {
        error.raise();
    } catch (...) {
        err::handleCurrentException([&](unsigned) {
            QString line;
            try {
                throw;
            } catch (const std::exception& reason) {
                line = QString::fromUtf8(reason.what());
            } catch (...) {
                line = QCoreApplication::translate("TaskListModel", "Неизвестная ошибка");
            }
            if (lines.isEmpty() || !lines.last().contains(line)) {
                lines << line;
            }
            return true;
        });
    }
    return lines.join(QLatin1Char('\n'));
}

QString stateText(TaskListModel::State state)
{
    switch (state) {
    case TaskListModel::State::Waiting:
        return QCoreApplication::translate("TaskListModel", "В очереди");
    case TaskListModel::State::Running:
        return QCoreApplication::translate("TaskListModel", "Выполняется");
    case TaskListModel::State::Paused:
        return QCoreApplication::translate("TaskListModel", "Приостановлено");
    case TaskListModel::State::Canceling:
        return QCoreApplication::translate("TaskListModel", "Отменяется");
    case TaskListModel::State::Done:
        return QCoreApplication::translate("TaskListModel", "Готово");
    case TaskListModel::State::Canceled:
        return QCoreApplication::translate("TaskListModel", "Отменено");
    case TaskListModel::State::Failed:
        return QCoreApplication::translate("TaskListModel", "Ошибка");
    }
    return {};
}

} // namespace

/// Written by whichever thread emits; the connections hold it, and not the row.
struct WatchedTask::News
{
    enum Flag : unsigned
    {
        Started = 0x1,
        Successful = 0x4,
        Canceled = 0x8,
        Failed = 0x10,
        Finished = 0x20,
        ShowNow = 0x40,
        Hidden = 0x80,
    };

    void set(unsigned flags) { heard.fetch_or(flags); }
    void clear(unsigned flags) { heard.fetch_and(~flags); }
    [[nodiscard]] bool has(Flag flag) const { return (heard.load() & flag) != 0; }
    template <typename T>
    void keep(T News::*member, T value)
    {
        const std::lock_guard lock(mutex);
        (this->*member).swap(value); // the former one goes without the lock
        fresh = true;
    }
    void keep(bool News::*member, bool value)
    {
        const std::lock_guard lock(mutex);
        this->*member = value;
        fresh = true;
    }

    std::atomic<unsigned> heard{0};
    std::mutex mutex; // guards what follows
    bool fresh = false;
    QString text;
    QString title;
    QString error;
    bool cancelable = true;
    CancelMethod cancelMethod;
};

WatchedTask::WatchedTask(ProgressHandlerPtr handler, QString title, TaskListModel::Abilities abilities,
                         qint64 nowMs)
    : m_handler(std::move(handler))
    , m_task(qobject_cast<TaskProgressHandler*>(m_handler.get()))
    , m_news(std::make_shared<News>())
    , m_abilities(abilities)
    , m_addedMs(nowMs)
    , m_title(std::move(title))
    , m_cancelable(abilities.testFlag(TaskListModel::Cancel))
{
    // Direct: noted in the emitting thread, in what the connection itself keeps alive.
    using H = ProgressHandler;
    const auto hear = [this](auto signal, auto function) {
        QObject::connect(m_handler.get(), signal, &m_context, posted(function), Qt::DirectConnection);
    };
    const auto note = [&](auto signal, unsigned flags) {
        hear(signal, [news = m_news, flags] { news->set(flags); });
    };
    const auto keep = [&](auto signal, auto member) {
        hear(signal, [news = m_news, member](const auto& value) { news->keep(member, value); });
    };
    note(&H::started, News::Started);
    note(&H::successful, News::Successful);
    note(&H::canceled, News::Canceled);
    note(&H::finished, News::Finished);
    note(&H::showProgressByRequest, News::ShowNow);
    keep(&H::messageChanged, &News::text);
    keep(&H::windowTitleChanged, &News::title);
    keep(&H::cancelableFlagChanged, &News::cancelable);
    keep(&H::cancelMethodChanged, &News::cancelMethod);
    hear(&H::hideProgress,
         [news = m_news](bool hide) { hide ? news->set(News::Hidden) : news->clear(News::Hidden); });
    hear(&H::error, [news = m_news](const err::ConcurrentNestedException& error) {
        news->keep(&News::error, textOf(error));
        news->set(News::Failed);
    });
}

WatchedTask::~WatchedTask() = default;

WatchedTask::State WatchedTask::look()
{
    // The signals of an end come one after another, the last one after the state. Who has none, or ended
    // before it was added, is believed at the second look.
    const TaskState::States states = m_task ? m_task->states() : TaskState::States();
    if (m_handler->isFinished() && (m_news->has(News::Finished) || std::exchange(m_endSeen, true))) {
        if (m_news->has(News::Failed) || states.testFlag(TaskState::Error)) {
            return State::Failed;
        }
        const bool canceled = m_task ? states.testFlag(TaskState::Cancelled)
                                     : m_news->has(News::Canceled) || m_handler->isCanceled();
        return canceled && !m_news->has(News::Successful) ? State::Canceled : State::Done;
    }
    if (m_handler->isCanceled()) {
        return State::Canceling;
    }
    if (m_task) {
        return states.testFlag(TaskState::Paused)    ? State::Paused
               : states.testFlag(TaskState::Created) ? State::Waiting
                                                     : State::Running;
    }
    return m_news->has(News::Started) || m_handler->isRunning() ? State::Running : State::Waiting;
}

bool WatchedTask::sample(qint64 nowMs)
{
    const State former = std::exchange(m_state, look());
    bool fresh = former != m_state;
    if (fresh && ended()) {
        m_endedMs = nowMs;
    }
    {
        const std::lock_guard lock(m_news->mutex);
        if (std::exchange(m_news->fresh, false)) {
            fresh = true;
            m_text = m_news->text;
            m_title = m_news->title.isEmpty() ? m_title : m_news->title;
            m_error = m_news->error;
            m_cancelable = m_abilities.testFlag(TaskListModel::Cancel) && m_news->cancelable;
        }
    }
    const double value = m_value;
    const double fraction = m_fraction;
    const QVariant remaining = remainingText();
    measure(nowMs);
    return fresh || value != m_value || fraction != m_fraction || remaining != remainingText();
}

/// What is reached, and how fast. Cancelled and failed work is not done, though its handler stands at its
/// end.
void WatchedTask::measure(qint64 nowMs)
{
    if (m_state == State::Canceled || m_state == State::Failed) {
        m_perSecond = -1;
        // A look may have come between a task's last value and its verdict.
        m_fraction = m_fraction >= 1 && m_before >= 0 ? m_before : m_fraction;
        return;
    }
    const Range range = m_handler->range();
    const double value = m_handler->progress();
    const double reached = (value - range.start) / (range.end - range.start);
    const double fraction = std::isfinite(reached) ? std::clamp(reached, 0.0, 1.0) : -1;
    if (m_handler->isFinished() && m_state != State::Done) { // the verdict is on its way
        return;
    }
    const double passedMs = double(nowMs - m_measuredMs);
    const bool measurable = m_state == State::Running && m_measuredMs >= 0 && m_fraction >= 0;
    if (!measurable || fraction < m_fraction) {
        m_perSecond = -1;
        m_measuredMs = m_state == State::Running ? nowMs : -1;
    } else if (passedMs > 0) {
        const double now = (fraction - m_fraction) * 1000 / passedMs;
        const double weight = 1 - std::exp(-passedMs / smoothingMs);
        m_perSecond = m_perSecond < 0 ? (now > 0 ? now : -1) : m_perSecond + (now - m_perSecond) * weight;
        m_measuredMs = nowMs;
    }
    if (m_fraction < 1) {
        m_before = m_fraction;
    }
    m_width = range.end - range.start;
    m_fraction = fraction;
    m_value = value;
}

bool WatchedTask::isHidden() const
{
    return m_news->has(News::Hidden);
}

bool WatchedTask::wantsRow(qint64 nowMs, qint64 delayMs) const
{
    return !isHidden() && (m_news->has(News::ShowNow) || nowMs - m_addedMs >= delayMs);
}

bool WatchedTask::can(TaskListModel::Ability ability) const
{
    return m_abilities.testFlag(ability) && !ended() && m_state != State::Canceling;
}

void WatchedTask::cancel()
{
    if (!m_cancelable || !can(TaskListModel::Cancel)) {
        return;
    }
    CancelMethod method;
    {
        const std::lock_guard lock(m_news->mutex);
        method = m_news->cancelMethod;
    }
    if (method) {
        method();
    } else {
        m_handler->cancel();
    }
}

void WatchedTask::pause()
{
    if (m_task && can(TaskListModel::Pause)) {
        m_task->pause();
    }
}

void WatchedTask::continueWork()
{
    if (m_task && can(TaskListModel::Pause)) {
        m_task->continueWork();
    }
}

QVariant WatchedTask::remainingMs() const
{
    if (m_state != State::Running || !(m_perSecond > 0)) {
        return {};
    }
    constexpr double longestMs = 1e12; // beyond, it is as good as unknown
    const double ms = (1 - m_fraction) / m_perSecond * 1000;
    return ms < longestMs ? QVariant(qint64(ms)) : QVariant();
}

QString WatchedTask::remainingText() const
{
    const QVariant ms = remainingMs();
    if (!ms.isValid()) {
        return {};
    }
    const qint64 seconds = (ms.toLongLong() + 999) / 1000;
    if (seconds < 60) {
        return QCoreApplication::translate("TaskListModel", "осталось %1 с").arg(seconds);
    }
    const qint64 minutes = (seconds + 59) / 60;
    return minutes < 60 ? QCoreApplication::translate("TaskListModel", "осталось %1 мин").arg(minutes)
                        : QCoreApplication::translate("TaskListModel", "осталось %1 ч %2 мин")
                              .arg(minutes / 60)
                              .arg(minutes % 60);
}

QVariant WatchedTask::data(int role) const
{
    switch (role) {
    case Qt::DisplayRole:
        return m_text.isEmpty() ? m_title : m_title + QLatin1String(": ") + m_text;
    case Qt::ToolTipRole:
        return m_error.isEmpty() ? m_text : m_error;
    case TaskListModel::TitleRole:
        return m_title;
    case TaskListModel::TextRole:
        return m_text;
    case TaskListModel::StateRole:
        return QVariant::fromValue(m_state);
    case TaskListModel::StateTextRole:
        return stateText(m_state);
    case TaskListModel::FractionRole:
        return m_fraction < 0 ? QVariant() : QVariant(m_fraction);
    case TaskListModel::ValueRole:
        return m_value;
    case TaskListModel::RateRole:
        return m_perSecond < 0 ? QVariant() : QVariant(m_perSecond * m_width);
    case TaskListModel::RemainingMsRole:
        return remainingMs();
    case TaskListModel::RemainingTextRole:
        return remainingText();
    case TaskListModel::ErrorRole:
        return m_error;
    case TaskListModel::CancelableRole:
        return m_cancelable && can(TaskListModel::Cancel);
    case TaskListModel::PausableRole:
        return m_task && can(TaskListModel::Pause) && m_state != State::Paused;
    case TaskListModel::ResumableRole:
        return m_task && can(TaskListModel::Pause) && m_state == State::Paused;
    case TaskListModel::IdRole:
        return m_handler->id();
    default:
        return {};
    }
}

} // namespace veltor::concurrent
