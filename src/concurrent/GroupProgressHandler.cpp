// The progress of several parts as one.

#include <veltor/concurrent/GroupProgressHandler.h>

#include "Post.h"

#include <veltor/err/Exceptions.h>

#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>
#include <vector>

namespace veltor::concurrent {

/// Held by the connections to the parts too, which other threads may be following while the handler goes.
class GroupProgressHandler::Private : public std::enable_shared_from_this<Private>
{
public:
    explicit Private(GroupProgressHandler* handler)
        : m_handler(handler)
    {}

    void detach()
    {
        const std::lock_guard lock(m_mutex);
        m_handler = nullptr;
    }
    std::size_t add(double weight, const QString& text)
    {
        const std::lock_guard lock(m_mutex);
        m_parts.push_back({weight, 0, text});
        m_weights += weight;
        return m_parts.size() - 1;
    }
    void watch(const ProgressHandler* part, std::size_t index);
    void reached(std::size_t index, double value, Range range);
    void ended(std::size_t index);
    void said(std::size_t index, const QString& message);

private:
    struct Part
    {
        double weight;
        double reached; // 0 to 1
        QString text;
    };

    void advance(Part& part, double share);
    void changed();
    void publish(GroupProgressHandler& handler);
    [[nodiscard]] double total() const;

    std::mutex m_mutex; // guards all but m_shown, and the handler's life while an event is posted to it
    GroupProgressHandler* m_handler;
    std::vector<Part> m_parts;
    double m_weights = 0;
    double m_weighted = 0; // what is reached, by weight
    double m_reached = 0;  // and without
    QString m_message;
    bool m_underWay = false;
    double m_shown = 0; // of the handler's thread
};

void GroupProgressHandler::Private::watch(const ProgressHandler* part, std::size_t index)
{
    const auto self = shared_from_this();
    const auto on = [part](auto signal, auto slot) { connect(part, signal, posted(std::move(slot))); };
    on(&ProgressHandler::started, [self, index] { self->said(index, {}); });
    on(&ProgressHandler::progressValueChanged,
       [self, part, index](double value) { self->reached(index, value, part->range()); });
    on(&ProgressHandler::messageChanged,
       [self, index](const QString& message) { self->said(index, message); });
    on(&ProgressHandler::finished, [self, part, index] {
        if (part->isFinished()) {
            self->ended(index);
        }
    });
}

void GroupProgressHandler::Private::reached(std::size_t index, double value, Range range)
{
    const double share = (value - range.start) / (range.end - range.start);
    {
        const std::lock_guard lock(m_mutex);
        if (!(share > m_parts[index].reached)) { // NaN neither
            return;
        }
        advance(m_parts[index], std::min(share, 1.0));
    }
    changed();
}

void GroupProgressHandler::Private::ended(std::size_t index)
{
    {
        const std::lock_guard lock(m_mutex);
        advance(m_parts[index], 1);
    }
    changed();
}

/// Under the mutex.
void GroupProgressHandler::Private::advance(Part& part, double share)
{
    const double step = share - std::exchange(part.reached, share);
    m_reached += step;
    m_weighted += step * part.weight;
}

void GroupProgressHandler::Private::said(std::size_t index, const QString& message)
{
    {
        const std::lock_guard lock(m_mutex);
        const QString& text = m_parts[index].text;
        m_message =
            text.isEmpty() || message.isEmpty() ? text + message : text + QLatin1String(": ") + message;
    }
    changed();
}

/// At once from the handler's own thread, which no event would reach while a part works in it.
void GroupProgressHandler::Private::changed()
{
    GroupProgressHandler* here = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (m_handler && m_handler->thread() == QThread::currentThread()) {
            here = m_handler;
        } else if (m_handler && !m_underWay) {
            m_underWay = true;
            post(m_handler, [self = shared_from_this(), handler = m_handler] { self->publish(*handler); });
        }
    }
    if (here) {
        publish(*here);
    }
}

/// Under the mutex.
double GroupProgressHandler::Private::total() const
{
    return m_weights > 0 ? m_weighted / m_weights : m_reached / double(m_parts.size());
}

/// In the thread of @p handler, which an observer may destroy.
void GroupProgressHandler::Private::publish(GroupProgressHandler& handler)
{
    QString message;
    double share = 0;
    {
        const std::lock_guard lock(m_mutex);
        m_underWay = false;
        message = std::exchange(m_message, {});
        share = std::min(total(), 1.0);
    }
    if (handler.isFinished()) { // nothing is told behind the end
        return;
    }
    const QPointer<GroupProgressHandler> alive(&handler);
    if (share > m_shown) {
        m_shown = share;
        const Range range = handler.range();
        handler.setProgress_impl(range.start + share * (range.end - range.start));
    }
    if (alive && !message.isEmpty()) {
        handler.setMessage(message);
    }
}

GroupProgressHandler::GroupProgressHandler(Task* task)
    : TaskProgressHandler(task)
    , d(std::make_shared<Private>(this))
{}

GroupProgressHandler::~GroupProgressHandler()
{
    d->detach();
}

void GroupProgressHandler::addPart(const ProgressHandlerPtr& part, double weight, const QString& text)
{
    if (!part) {
        throw err::NullArgument(QStringLiteral("part"));
    }
    if (!(weight >= 0) || std::isinf(weight)) {
        throw err::UnexpectedValue(QStringLiteral("weight"), weight);
    }
    const std::size_t index = d->add(weight, text);
    registerSubHandler(part);
    d->watch(part.get(), index);
    if (part->isFinished()) {
        d->ended(index);
    } else {
        d->reached(index, part->progress(), part->range());
    }
}

} // namespace veltor::concurrent
