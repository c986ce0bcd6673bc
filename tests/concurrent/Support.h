#pragma once

#include <veltor/concurrent/Task.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtTest/QTest>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace veltor::test {

/// A task that runs a function, and is counted while it lives.
class LambdaTask : public concurrent::Task
{
public:
    using Work = std::function<void(LambdaTask&)>;

    explicit LambdaTask(Work work = {})
        : m_work(std::move(work))
    {
        ++alive;
    }
    ~LambdaTask() override { --alive; }

    using Task::waitWhilePaused;

    static inline std::atomic<int> alive{0};
    std::atomic<int> runs{0};
    std::function<void(LambdaTask&)> continued;
    std::function<void(LambdaTask&)> cancelAsked; // instead of the default, as the next
    std::function<void(LambdaTask&)> pauseAsked;
    std::function<void(LambdaTask&)> moves; // before it moves

    void moveTaskToThread(QThread* thread) override
    {
        if (moves) {
            moves(*this);
        }
        Task::moveTaskToThread(thread);
    }

protected:
    void onStart() override
    {
        ++runs;
        if (m_work) {
            m_work(*this);
        }
    }
    void onContinue() override
    {
        if (continued) {
            continued(*this);
        }
    }
    void onCancelRequested() override
    {
        if (cancelAsked) {
            cancelAsked(*this);
        } else {
            Task::onCancelRequested();
        }
    }
    void onPauseRequested() override
    {
        if (pauseAsked) {
            pauseAsked(*this);
        } else {
            Task::onPauseRequested();
        }
    }

private:
    Work m_work;
};

/// The signals of a handler, in the order in which they were emitted or, when queued, delivered.
class EventLog : public QObject
{
public:
    explicit EventLog(concurrent::ProgressHandler& handler, Qt::ConnectionType type = Qt::DirectConnection)
    {
        using H = concurrent::ProgressHandler;
        const auto note = [&, this](auto signal, const char* name) {
            connect(
                &handler, signal, this, [this, name] { add(QLatin1String(name)); }, type);
        };
        note(&H::canceled, "canceled");
        note(&H::cancelRequest, "cancelRequest");
        note(&H::started, "started");
        note(&H::finished, "finished");
        note(&H::successful, "successful");
        note(&H::paused, "paused");
        connect(
            &handler, &H::error, this, [this] { add(QStringLiteral("error")); }, type);
        connect(
            &handler, &H::progressValueChanged, this,
            [this](double value) { add(QStringLiteral("=%1").arg(value)); }, type);
        connect(
            &handler, &H::progressValueIncreased, this,
            [this](progress::Add add_) { add(QStringLiteral("+%1").arg(add_.value)); }, type);
        connect(
            &handler, &H::progressRangeChanged, this,
            [this](const concurrent::Range& range) {
                add(QStringLiteral("%1..%2").arg(range.start).arg(range.end));
            },
            type);
    }

    void add(const QString& event)
    {
        const std::lock_guard lock(m_mutex);
        m_events << event;
    }

    /// All events so far, joined by blanks; they are forgotten here.
    QString take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_events, {}).join(QLatin1Char(' '));
    }

private:
    std::mutex m_mutex; // guards m_events
    QStringList m_events;
};

/// A thread with an event loop; its end is waited for in a way that ThreadSanitizer sees.
class EventLoopThread : public QThread
{
public:
    EventLoopThread() = default;
    ~EventLoopThread() override { stop(); }

    void stop()
    {
        quit();
        wait();
        m_ended.load();
    }

protected:
    void run() override
    {
        exec();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_ended = true;
    }

private:
    std::atomic<bool> m_ended{false};
};

/// Delivers events until @p condition holds; false when it did not within a time that no test needs.
template <typename Condition>
bool eventually(Condition condition)
{
    return QTest::qWaitFor(condition, 30000);
}

} // namespace veltor::test
