// A presenter's list of tasks.

#include <veltor/concurrent/TaskListModel.h>

#include "WatchedTask.h"

#include <veltor/concurrent/Task.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaEnum>
#include <QtCore/QTimer>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace veltor::concurrent {

class TaskListModel::Private
{
public:
    using Entries = std::vector<std::unique_ptr<WatchedTask>>;

    explicit Private(TaskListModel& model_)
        : model(model_)
    {
        elapsed.start();
    }

    [[nodiscard]] qint64 now() const { return clock ? clock() : elapsed.elapsed(); }
    [[nodiscard]] WatchedTask* at(int row) const
    {
        return row >= 0 && row < int(rows.size()) ? rows[std::size_t(row)].get() : nullptr;
    }
    [[nodiscard]] bool stays(const WatchedTask& task, qint64 nowMs) const
    {
        return !task.ended() || kept.count(task.state()) > 0 || nowMs - task.endedMs() < leastShownMs;
    }
    void sampleRows(qint64 nowMs);
    void tell(const std::vector<std::pair<int, int>>& ranges);
    void showWaiting(qint64 nowMs);
    template <typename Wanted>
    void moveRows(Wanted wanted, Entries* target);
    void count();

    TaskListModel& model;
    QTimer timer;
    QElapsedTimer elapsed;
    std::function<qint64()> clock;
    qint64 showDelayMs = 500;
    qint64 leastShownMs = 1000;
    std::set<State> kept{State::Failed};
    Entries rows;
    Entries waiting; // without a row
    int active = 0;
    unsigned changes = 0; // of the rows' number
};

TaskListModel::TaskListModel(QObject* parent)
    : QAbstractListModel(parent)
    , d(std::make_unique<Private>(*this))
{
    constexpr int samples = 10;
    setSamplesPerSecond(samples);
    connect(&d->timer, &QTimer::timeout, this, &TaskListModel::sample);
}

TaskListModel::~TaskListModel() = default;

void TaskListModel::add(const ProgressHandlerPtr& handler, const QString& title, Abilities abilities)
{
    if (!handler) {
        throw err::NullArgument(QStringLiteral("handler"));
    }
    const qint64 nowMs = d->now();
    d->waiting.push_back(std::make_unique<WatchedTask>(handler, title, abilities, nowMs));
    d->waiting.back()->sample(nowMs);
    if (!d->timer.isActive()) {
        d->timer.start();
    }
    if (d->showDelayMs <= 0) {
        d->showWaiting(nowMs);
    }
    Q_EMIT activeCountChanged(++d->active); // an ended one is noticed at the next look
}

void TaskListModel::add(const Task& task, const QString& title)
{
    Abilities abilities = Nothing;
    abilities.setFlag(Cancel, task.canCancel());
    abilities.setFlag(Pause, task.canPause());
    add(task.progressHandler(), title, abilities);
}

void TaskListModel::setSamplesPerSecond(int samples)
{
    d->timer.setInterval(1000 / std::clamp(samples, 1, 60));
}

void TaskListModel::setShowDelay(int ms)
{
    d->showDelayMs = ms;
}

void TaskListModel::setLeastShown(int ms)
{
    d->leastShownMs = ms;
}

void TaskListModel::setKept(State state, bool kept)
{
    if (kept) {
        d->kept.insert(state);
    } else {
        d->kept.erase(state);
        d->timer.start(); // there may be rows to take away
    }
}

int TaskListModel::activeCount() const
{
    return d->active;
}

void TaskListModel::cancel(int row)
{
    if (WatchedTask* task = d->at(row)) {
        task->cancel();
    }
}

void TaskListModel::pause(int row)
{
    if (WatchedTask* task = d->at(row)) {
        task->pause();
    }
}

void TaskListModel::continueWork(int row)
{
    if (WatchedTask* task = d->at(row)) {
        task->continueWork();
    }
}

void TaskListModel::dismiss(int row)
{
    const WatchedTask* wanted = d->at(row);
    d->moveRows([&](const WatchedTask& task) { return &task == wanted && task.ended(); }, nullptr);
}

void TaskListModel::dismissEnded()
{
    d->moveRows([](const WatchedTask& task) { return task.ended(); }, nullptr);
}

void TaskListModel::setClock(std::function<qint64()> clock)
{
    d->clock = std::move(clock);
}

void TaskListModel::sample()
{
    const qint64 nowMs = d->now();
    d->sampleRows(nowMs);
    d->moveRows([](const WatchedTask& task) { return task.isHidden() && !task.ended(); }, &d->waiting);
    d->moveRows([&](const WatchedTask& task) { return !d->stays(task, nowMs); }, nullptr);
    for (const auto& task : d->waiting) {
        task->sample(nowMs);
    }
    d->showWaiting(nowMs);
    d->count();
    const bool idle =
        d->waiting.empty() && std::all_of(d->rows.begin(), d->rows.end(), [&](const auto& task) {
            return task->ended() && d->kept.count(task->state()) > 0;
        });
    if (idle) {
        d->timer.stop();
    }
}

/// Looks at all first and tells then, neighbours together: whoever is told may change the list.
void TaskListModel::Private::sampleRows(qint64 nowMs)
{
    std::vector<std::pair<int, int>> ranges;
    for (int row = 0; row < int(rows.size()); ++row) {
        WatchedTask& task = *rows[std::size_t(row)];
        if (task.ended() || !task.sample(nowMs)) {
            continue;
        }
        if (!ranges.empty() && ranges.back().second == row - 1) {
            ranges.back().second = row;
        } else {
            ranges.emplace_back(row, row);
        }
    }
    tell(ranges);
}

void TaskListModel::Private::tell(const std::vector<std::pair<int, int>>& ranges)
{
    const unsigned before = changes;
    for (const auto& [first, last] : ranges) {
        if (changes != before) { // the rows are others now
            if (!rows.empty()) {
                Q_EMIT model.dataChanged(model.index(0), model.index(int(rows.size()) - 1));
            }
            return;
        }
        Q_EMIT model.dataChanged(model.index(first), model.index(last));
    }
}

/// Gives those a row whose time has come, and forgets those that ended before.
void TaskListModel::Private::showWaiting(qint64 nowMs)
{
    Entries shown;
    Entries still;
    for (auto& task : waiting) {
        const bool keep = kept.count(task->state()) > 0;
        if (task->ended() ? keep : task->wantsRow(nowMs, showDelayMs)) {
            shown.push_back(std::move(task));
        } else if (!task->ended()) {
            still.push_back(std::move(task));
        }
    }
    waiting.swap(still);
    if (!shown.empty()) {
        const int first = int(rows.size());
        model.beginInsertRows({}, first, first + int(shown.size()) - 1);
        std::move(shown.begin(), shown.end(), std::back_inserter(rows));
        ++changes;
        model.endInsertRows();
    }
}

/// Takes the wanted rows away, the last first, neighbours together; to @p target or for good.
template <typename Wanted>
void TaskListModel::Private::moveRows(Wanted wanted, Entries* target)
{
    auto last = int(rows.size()) - 1;
    while (last >= 0) {
        if (!wanted(*rows[std::size_t(last)])) {
            --last;
            continue;
        }
        int first = last;
        while (first > 0 && wanted(*rows[std::size_t(first) - 1])) {
            --first;
        }
        Entries moved;
        model.beginRemoveRows({}, first, last);
        std::move(rows.begin() + first, rows.begin() + last + 1, std::back_inserter(moved));
        rows.erase(rows.begin() + first, rows.begin() + last + 1);
        ++changes;
        model.endRemoveRows();
        if (target) {
            std::move(moved.begin(), moved.end(), std::back_inserter(*target));
        }
        last = std::min(first, int(rows.size())) - 1;
    }
}

void TaskListModel::Private::count()
{
    int now = 0;
    for (const Entries* entries : {&rows, &waiting}) {
        now +=
            int(std::count_if(entries->begin(), entries->end(), [](const auto& t) { return !t->ended(); }));
    }
    if (std::exchange(active, now) != now) {
        Q_EMIT model.activeCountChanged(now);
    }
}

int TaskListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->rows.size());
}

QVariant TaskListModel::data(const QModelIndex& index, int role) const
{
    const bool ours = index.isValid() && index.model() == this;
    const WatchedTask* task = ours ? d->at(index.row()) : nullptr;
    return task ? task->data(role) : QVariant();
}

QHash<int, QByteArray> TaskListModel::roleNames() const
{
    // "TitleRole" is "title" in a QML view.
    QHash<int, QByteArray> names = QAbstractListModel::roleNames();
    const QMetaEnum roles = QMetaEnum::fromType<Role>();
    for (int i = 0; i < roles.keyCount(); ++i) {
        QByteArray name = roles.key(i);
        name.chop(4); // Role
        name[0] = char(QChar::toLower(uint(name.at(0))));
        names.insert(roles.value(i), name);
    }
    return names;
}

} // namespace veltor::concurrent
