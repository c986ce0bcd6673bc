// The recorded spans for whoever looks at them: as values, as trace events, as text.

#include <veltor/utils/TimeTrace.h>

#include <veltor/json/JsonFormatter.h>
#include <veltor/logging/Logger.h>
#include <veltor/utils/ScopedTimer.h>

#include "SpanRecorder.h"

#include <QtCore/QBuffer>
#include <QtCore/QCoreApplication>
#include <QtCore/QFileDevice>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <memory>

namespace veltor::utils {
namespace {

/// One place in the tree of a thread's scopes.
struct Place
{
    SummaryTime::OperationId operation{0, 0};
    qint64 totalNs = 0;
    quint64 count = 0;
    std::vector<std::unique_ptr<Place>> inside;

    Place& of(SummaryTime::OperationId which)
    {
        const auto found = std::find_if(inside.begin(), inside.end(),
                                        [which](const auto& place) { return place->operation == which; });
        if (found != inside.end()) {
            return **found;
        }
        inside.push_back(std::make_unique<Place>());
        inside.back()->operation = which;
        return *inside.back();
    }
};

using SpanIterator = std::vector<TimeTrace::Span>::const_iterator;

/// The tree of spans of one thread, sorted by beginning. A scope is inside the last one that is less deep and
/// ends no sooner; what was around it and has not ended is not there.
Place treeOf(SpanIterator begin, SpanIterator end)
{
    constexpr int deepest = 200; // of a recursion that is measured
    Place root;
    std::vector<std::pair<const TimeTrace::Span*, Place*>> around;
    for (; begin != end; ++begin) {
        if (begin->depth > deepest) {
            continue;
        }
        const qint64 endNs = begin->beginNs + begin->durationNs;
        while (!around.empty() && (around.back().first->depth >= begin->depth ||
                                   around.back().first->beginNs + around.back().first->durationNs < endNs)) {
            around.pop_back();
        }
        Place& place = (around.empty() ? root : *around.back().second).of(begin->operation);
        place.totalNs += begin->durationNs;
        ++place.count;
        root.totalNs += around.empty() ? begin->durationNs : 0;
        around.emplace_back(&*begin, &place);
    }
    return root;
}

void addLines(QString& text, const Place& place, int indent, qint64 wholeNs)
{
    constexpr int nameWidth = 40;
    constexpr int barWidth = 40;
    for (const auto& inner : place.inside) {
        const double share =
            wholeNs > 0 ? static_cast<double>(inner->totalNs) / static_cast<double>(wholeNs) : 0;
        const QString name = QString(indent, QLatin1Char(' ')) + inner->operation.name();
        text += QStringLiteral("%1 %2 ms %3 x  %4\n")
                    .arg(name, -nameWidth)
                    .arg(static_cast<double>(inner->totalNs) / 1e6, 12, 'f', 3)
                    .arg(inner->count, 8)
                    .arg(QString(qRound(share * barWidth), QLatin1Char('#')));
        addLines(text, *inner, indent + 2, wholeNs);
    }
}

QJsonObject eventOf(const TimeTrace::Span& span, qint64 process)
{
    const auto microseconds = [](qint64 ns) { return static_cast<double>(ns) / 1e3; };
    return {{QStringLiteral("name"), span.operation.name()},
            {QStringLiteral("ph"), QStringLiteral("X")}, // a complete event: with its duration
            {QStringLiteral("pid"), process},
            {QStringLiteral("tid"), span.thread},
            {QStringLiteral("ts"), microseconds(span.beginNs)},
            {QStringLiteral("dur"), microseconds(span.durationNs)}};
}

} // namespace

void TimeTrace::start(std::size_t limit)
{
    SpanRecorder::instance().start(limit);
    ScopedTimer::setTaker(ScopedTimer::Trace, true);
}

void TimeTrace::stop()
{
    ScopedTimer::setTaker(ScopedTimer::Trace, false);
    SpanRecorder::instance().stop();
}

std::vector<TimeTrace::Span> TimeTrace::spans()
{
    return SpanRecorder::instance().spans();
}

quint64 TimeTrace::dropped()
{
    return SpanRecorder::instance().dropped();
}

bool TimeTrace::writeEvents(QIODevice& device)
{
    QBuffer event;
    event.open(QIODevice::WriteOnly);
    const json::JsonFormatter formatter(IOPtr(&event, [](QIODevice*) {}), json::JsonFormatter::formatCompact);
    const auto writeAll = [&device](const QByteArray& bytes) { return device.write(bytes) == bytes.size(); };
    const qint64 process = QCoreApplication::applicationPid();
    const char* separator = "{\"displayTimeUnit\":\"ns\",\"traceEvents\":[\n";
    for (const Span& span : spans()) {
        event.buffer() = separator;
        event.seek(event.size());
        formatter.write(eventOf(span, process));
        if (!writeAll(event.data())) {
            return false;
        }
        separator = ",\n";
    }
    auto* const file = qobject_cast<QFileDevice*>(&device);
    const bool isEmpty = *separator == '{';
    return writeAll(isEmpty ? QByteArray(separator) + "]}\n" : QByteArray("\n]}\n")) &&
           (!file || file->flush());
}

QString TimeTrace::flameText()
{
    const std::vector<Span> all = spans();
    QString text;
    for (auto begin = all.begin(); begin != all.end();) {
        const auto end = std::find_if(begin, all.end(),
                                      [begin](const Span& span) { return span.thread != begin->thread; });
        const Place root = treeOf(begin, end);
        text += QStringLiteral("thread %1\n").arg(begin->thread);
        addLines(text, root, 2, root.totalNs);
        begin = end;
    }
    return text;
}

void TimeTrace::logFlame()
{
    if (const QString text = flameText(); !text.isEmpty()) {
        logging::LoggerFacade::write(logging::LogLevel::Info, QLatin1String("Trace:\n") + text);
    }
}

} // namespace veltor::utils
