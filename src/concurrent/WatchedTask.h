#pragma once

#include <veltor/concurrent/TaskListModel.h>

#include <QtCore/QObject>

#include <memory>

namespace veltor::concurrent {

class TaskProgressHandler;

/// One row of a TaskListModel: a handler, what was heard of it, and what is shown of it.
///
/// The model's thread only. What its handler emits is noted in News, in the emitting thread.
class WatchedTask
{
public:
    using State = TaskListModel::State;

    WatchedTask(ProgressHandlerPtr handler, QString title, TaskListModel::Abilities abilities, qint64 nowMs);
    WatchedTask(const WatchedTask&) = delete;
    WatchedTask& operator=(const WatchedTask&) = delete;
    ~WatchedTask();

    /// Looks at the handler; true when there is something new to show.
    bool sample(qint64 nowMs);
    [[nodiscard]] QVariant data(int role) const;

    [[nodiscard]] State state() const noexcept { return m_state; }
    [[nodiscard]] bool ended() const noexcept { return m_state >= State::Done; }
    /// It should have a row by now.
    [[nodiscard]] bool wantsRow(qint64 nowMs, qint64 delayMs) const;
    [[nodiscard]] bool isHidden() const;

    void cancel();
    void pause();
    void continueWork();

    /// When its end was seen.
    [[nodiscard]] qint64 endedMs() const noexcept { return m_endedMs; }

private:
    struct News;

    [[nodiscard]] bool can(TaskListModel::Ability ability) const;
    [[nodiscard]] State look();
    void measure(qint64 nowMs);
    [[nodiscard]] QVariant remainingMs() const;
    [[nodiscard]] QString remainingText() const;

    const ProgressHandlerPtr m_handler;
    TaskProgressHandler* const m_task; // the same as a task's, null when it is none
    const std::shared_ptr<News> m_news;
    const QObject m_context; // of the connections, which go with it
    const TaskListModel::Abilities m_abilities;
    const qint64 m_addedMs;
    QString m_title;
    QString m_text;
    QString m_error;
    State m_state = State::Waiting;
    bool m_cancelable;
    bool m_endSeen = false; // without its signal
    double m_value = 0;
    double m_fraction = -1;  // below 0: unknown
    double m_before = -1;    // the last fraction but the whole
    double m_perSecond = -1; // of the fraction; below 0: unknown
    double m_width = 0;      // of the scale
    qint64 m_measuredMs = -1;
    qint64 m_endedMs = 0;
};

} // namespace veltor::concurrent
